# SPDX-License-Identifier: Apache-2.0
# Finishes the files of each package before cpack makes it: search paths of libraries that are not needed in a package
# are removed, manual pages are compressed, and copyright, changelogs and overrides of lintian are added.
file(GLOB roots ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*)
set(source ${CMAKE_CURRENT_LIST_DIR}/..)

function(compress file)
    execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(root IN LISTS roots)
    get_filename_component(component ${root} NAME)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(usr ${root}${CPACK_PACKAGING_INSTALL_PREFIX})

    file(GLOB_RECURSE files LIST_DIRECTORIES false ${usr}/*)
    foreach(file IN LISTS files)
        if(NOT IS_SYMLINK ${file} AND file MATCHES "/(bin|libexec|lib)/")
            file(READ ${file} magic LIMIT 4 HEX)
            if(magic STREQUAL 7f454c46)
                file(RPATH_REMOVE FILE ${file})
            endif()
        elseif(file MATCHES "/share/man/.*[0-9]$")
            compress(${file})
        endif()
    endforeach()

    set(documentation ${usr}/share/doc/${package})
    configure_file(${source}/cmake/debian/copyright ${documentation}/copyright COPYONLY)
    configure_file(${source}/CHANGELOG.md ${documentation}/changelog COPYONLY)
    configure_file(${source}/cmake/debian/changelog.in ${documentation}/changelog.Debian @ONLY)
    compress(${documentation}/changelog)
    compress(${documentation}/changelog.Debian)
    if(EXISTS ${source}/cmake/debian/${package}.lintian-overrides)
        configure_file(${source}/cmake/debian/${package}.lintian-overrides
            ${usr}/share/lintian/overrides/${package} COPYONLY)
    endif()
    file(GLOB_RECURSE files LIST_DIRECTORIES false ${usr}/share/doc/* ${usr}/share/lintian/*)
    file(CHMOD ${files} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()
