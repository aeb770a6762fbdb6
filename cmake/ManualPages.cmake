# SPDX-License-Identifier: Apache-2.0
# Manual pages that no program prints: of the headers, of files, and those of docs/man. They stand beside those of the
# programs, so that `man` finds all of them when the programs of the build tree are in the PATH. Without Python, only
# those of docs/man are made.
find_program(QVS_PYTHON python3)
set(manuals ${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_DATADIR}/man)
set(script ${PROJECT_SOURCE_DIR}/scripts/manual-pages)
set(modules ${PROJECT_SOURCE_DIR}/scripts/headers.py ${PROJECT_SOURCE_DIR}/scripts/roff.py)
set(pages)

# qvs_manual_pages(OUTPUT WORDS SOURCE...): a page, and others, that the script writes when it is run with these words.
function(qvs_manual_pages output words)
    if(QVS_PYTHON)
        add_custom_command(
            OUTPUT ${manuals}/${output}
            COMMAND python3 ${script} ${PROJECT_VERSION} ${QVS_DATE} ${words} ${manuals}
            DEPENDS ${script} ${modules} ${ARGN}
            COMMENT "Writing ${output}"
            VERBATIM)
        set(pages ${pages} ${manuals}/${output} PARENT_SCOPE)
    endif()
endfunction()

file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/qvs/*.h ${PROJECT_SOURCE_DIR}/include/qvs/*.hpp)
set(documents ${PROJECT_SOURCE_DIR}/docs)
qvs_manual_pages(man3/qvs_qvs.h.3 headers ${headers})
qvs_manual_pages(man5/qvs-lab.5 formats ${documents}/lab.md ${documents}/layouts.md)

foreach(page IN ITEMS libqvs.7 libqvs-config.3 treesh.1)
    string(REGEX MATCH "[0-9]$" section ${page})
    configure_file(${documents}/man/${page} ${manuals}/man${section}/${page} @ONLY)
endforeach()
add_custom_target(manual-pages ALL DEPENDS ${pages})

# This page alone waits for the tool.
set(pages)
set(schema ${CMAKE_BINARY_DIR}/${CMAKE_INSTALL_DATADIR}/qvs/schema.json)
qvs_manual_pages(man5/qvs-document.5 "document;${schema}" ${documents}/configuration.md ${schema})
add_custom_target(qvs-document-page ALL DEPENDS ${pages})
add_dependencies(qvs-document-page qvs-tool-schema)
add_dependencies(programs manual-pages qvs-document-page)

function(qvs_install_pages section component)
    install(DIRECTORY ${manuals}/man${section}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section}
        COMPONENT ${component} OPTIONAL ${ARGN})
endfunction()
qvs_install_pages(3 config-development
    FILES_MATCHING PATTERN libqvs-config.3 PATTERN qvs_config.*.3 PATTERN QVSConfig_*.3)
qvs_install_pages(3 development
    PATTERN libqvs-config.3 EXCLUDE PATTERN qvs_config.*.3 EXCLUDE PATTERN QVSConfig_*.3 EXCLUDE)
qvs_install_pages(5 tool FILES_MATCHING PATTERN qvs-document.5)
qvs_install_pages(5 host FILES_MATCHING PATTERN qvs-lab.5 PATTERN qvs-layout.5)
qvs_install_pages(7 development)
qvs_install_pages(1 host FILES_MATCHING PATTERN treesh.1)
