# SPDX-License-Identifier: Apache-2.0
# Corrects the installed size in each package that cpack has made: cpack counts a link with the size of what it leads
# to, so that a manual page with a hundred names counts a hundred times.
set(directory ${CPACK_PACKAGE_DIRECTORY}/_CPack_Packages/sizes)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    file(REMOVE_RECURSE ${directory})
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${directory} COMMAND_ERROR_IS_FATAL ANY)
    # As dpkg-gencontrol counts: files in full kibibytes, one kibibyte for a link or a directory.
    set(total 0)
    file(GLOB_RECURSE entries LIST_DIRECTORIES true ${directory}/usr/* ${directory}/lib/*)
    foreach(entry IN LISTS entries)
        set(size 1)
        if(NOT IS_SYMLINK ${entry} AND NOT IS_DIRECTORY ${entry})
            file(SIZE ${entry} size)
            math(EXPR size "(${size} + 1023) / 1024")
        endif()
        math(EXPR total "${total} + ${size}")
    endforeach()
    file(READ ${directory}/DEBIAN/control control)
    string(REGEX REPLACE "Installed-Size: [0-9]+" "Installed-Size: ${total}" control "${control}")
    file(WRITE ${directory}/DEBIAN/control "${control}")
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${directory} ${package}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(REMOVE_RECURSE ${directory})
