# SPDX-License-Identifier: Apache-2.0
# Finishes the files of each package before cpack makes it: search paths of libraries that are not needed in a package
# are removed, manual pages are compressed, completions of zsh are moved, and the symbols of libraries, copyright,
# changelogs, the registration of documents and overrides of lintian are added.
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
            if(IS_SYMLINK ${file})
                # To the compressed page.
                file(READ_SYMLINK ${file} target)
                file(REMOVE ${file})
                file(CREATE_LINK ${target}.gz ${file}.gz SYMBOLIC)
            else()
                compress(${file})
            endif()
        endif()
    endforeach()

    # Where zsh of Debian looks for completions of packages.
    if(EXISTS ${usr}/share/zsh/site-functions)
        file(RENAME ${usr}/share/zsh/site-functions ${usr}/share/zsh/vendor-completions)
    endif()

    if(CPACK_DEBIAN_${upper}_SYMBOLS)
        file(GLOB libraries ${usr}/lib/lib*.so*)
        list(FILTER libraries EXCLUDE REGEX "\\.so\\.[0-9]+$")
        get_filename_component(directory ${CPACK_DEBIAN_${upper}_SYMBOLS} DIRECTORY)
        file(MAKE_DIRECTORY ${directory})
        # Fails when a function of the list is no longer there.
        execute_process(COMMAND dpkg-gensymbols -c4 -q -p${package} -v${CPACK_PACKAGE_VERSION} -e${libraries}
            -I${source}/cmake/debian/${package}.symbols -O${CPACK_DEBIAN_${upper}_SYMBOLS} COMMAND_ERROR_IS_FATAL ANY)
    endif()

    set(documentation ${usr}/share/doc/${package})
    configure_file(${source}/cmake/debian/copyright ${documentation}/copyright COPYONLY)
    configure_file(${source}/CHANGELOG.md ${documentation}/changelog COPYONLY)
    configure_file(${source}/cmake/debian/changelog.in ${documentation}/changelog.Debian @ONLY)
    if(EXISTS ${usr}/share/doc/qvs/html)
        configure_file(${source}/cmake/debian/${package}.doc-base ${usr}/share/doc-base/${package}.${package} COPYONLY)
        # What the site takes from other projects keeps their terms.
        foreach(other IN ITEMS mkdocs sphinx-rtd-theme-common libjs-jquery libjs-modernizr libjs-lunr fonts-font-awesome)
            if(EXISTS /usr/share/doc/${other}/copyright)
                configure_file(/usr/share/doc/${other}/copyright ${documentation}/html/${other} COPYONLY)
            endif()
        endforeach()
    endif()
    compress(${documentation}/changelog)
    compress(${documentation}/changelog.Debian)
    if(EXISTS ${source}/cmake/debian/${package}.lintian-overrides)
        configure_file(${source}/cmake/debian/${package}.lintian-overrides
            ${usr}/share/lintian/overrides/${package} COPYONLY)
    endif()
    file(GLOB_RECURSE files LIST_DIRECTORIES false ${usr}/share/doc/* ${usr}/share/doc-base/* ${usr}/share/lintian/*)
    file(CHMOD ${files} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()
