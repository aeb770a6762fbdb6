# SPDX-License-Identifier: Apache-2.0
# Installation of the libraries, and the files with which other builds find them. The directories that build the
# programs, the state library and the parts of the emulated host install them.
include(CMakePackageConfigHelpers)

# A program needs the component `library` to run and `development` to be built. One that uses libqvs-config needs
# `config` and `config-development`, too.
install(TARGETS qvs
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS qvs-config
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT config NAMELINK_COMPONENT config-development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qvs DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development FILES_MATCHING PATTERN *.h PATTERN config.h EXCLUDE)
install(FILES include/qvs/config.h include/qvs/config.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qvs
    COMPONENT config-development)

# CMake: find_package(qvs 1 CONFIG REQUIRED), target_link_libraries(tool PRIVATE qvs::qvs), or qvs::config
# There are two configuration files. The installed one uses paths relative to itself, so that the prefix can be chosen
# at install time. The other one is in the root of the build tree, where -D CMAKE_PREFIX_PATH and -D qvs_DIR find it.
set(QVS_AS_INSTALLED ${CMAKE_BINARY_DIR}/CMakeFiles/as-installed)
set(QVS_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qvs)
function(qvs_cmake_config directory libdir includedir)
    configure_package_config_file(cmake/qvs-config.cmake.in ${directory}/qvs-config.cmake
        INSTALL_DESTINATION ${QVS_CMAKE_DIR} PATH_VARS libdir includedir)
    write_basic_package_version_file(${directory}/qvs-config-version.cmake COMPATIBILITY SameMajorVersion)
endfunction()
qvs_cmake_config(${QVS_AS_INSTALLED} ${CMAKE_INSTALL_LIBDIR} ${CMAKE_INSTALL_INCLUDEDIR})
qvs_cmake_config(${CMAKE_BINARY_DIR} ${CMAKE_LIBRARY_OUTPUT_DIRECTORY} ${PROJECT_SOURCE_DIR}/include)
install(FILES ${QVS_AS_INSTALLED}/qvs-config.cmake ${QVS_AS_INSTALLED}/qvs-config-version.cmake
    DESTINATION ${QVS_CMAKE_DIR} COMPONENT development)

# pkg-config files for the installation and for the build tree.
set(QVS_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH up /${QVS_PC_DIR} /)
set(QVS_PC_PREFIX "\${pcfiledir}/${up}")
set(QVS_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
set(QVS_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(cmake/qvs.pc.in ${QVS_AS_INSTALLED}/qvs.pc @ONLY)
configure_file(cmake/qvs-config.pc.in ${QVS_AS_INSTALLED}/qvs-config.pc @ONLY)
install(FILES ${QVS_AS_INSTALLED}/qvs.pc DESTINATION ${QVS_PC_DIR} COMPONENT development)
install(FILES ${QVS_AS_INSTALLED}/qvs-config.pc DESTINATION ${QVS_PC_DIR} COMPONENT config-development)

set(QVS_PC_PREFIX ${CMAKE_BINARY_DIR})
set(QVS_PC_LIBDIR ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(QVS_PC_INCLUDEDIR ${PROJECT_SOURCE_DIR}/include)
configure_file(cmake/qvs.pc.in ${CMAKE_BINARY_DIR}/pkgconfig/qvs.pc @ONLY)
configure_file(cmake/qvs-config.pc.in ${CMAKE_BINARY_DIR}/pkgconfig/qvs-config.pc @ONLY)

# The site if scripts/site has built it, else the pages of which it is made.
install(CODE "set(site ${PROJECT_SOURCE_DIR}/build/site)
set(documents \${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DOCDIR})
if(EXISTS \${site}/index.html)
    file(INSTALL \${site}/ DESTINATION \${documents}/html)
else()
    file(INSTALL ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/SECURITY.md DESTINATION \${documents})
    file(INSTALL ${PROJECT_SOURCE_DIR}/docs DESTINATION \${documents}
        PATTERN man EXCLUDE PATTERN theme EXCLUDE PATTERN site.css EXCLUDE)
endif()" COMPONENT documentation)
