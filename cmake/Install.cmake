# What of the library is installed, and how other builds find it. The programs, the state library and the parts of
# the emulated host are installed where they are built.
include(CMakePackageConfigHelpers)

# `library` is what a program needs to run, `development` what it needs to be built.
install(TARGETS qvs
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qvs DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development FILES_MATCHING PATTERN *.h)

# CMake: find_package(qvs 1 CONFIG REQUIRED), target_link_libraries(tool PRIVATE qvs::qvs)
set(QVS_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qvs)
configure_package_config_file(cmake/qvs-config.cmake.in ${CMAKE_BINARY_DIR}/cmake/qvs-config.cmake
    INSTALL_DESTINATION ${QVS_CMAKE_DIR} PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/cmake/qvs-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/cmake/qvs-config.cmake ${CMAKE_BINARY_DIR}/cmake/qvs-config-version.cmake
    DESTINATION ${QVS_CMAKE_DIR} COMPONENT development)

# pkg-config, once as installed (found from the file's own place, so that the prefix can be chosen at install
# time), and once for the build tree.
set(QVS_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH up /${QVS_PC_DIR} /)
set(QVS_PC_PREFIX "\${pcfiledir}/${up}")
set(QVS_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
set(QVS_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(cmake/qvs.pc.in ${CMAKE_BINARY_DIR}/cmake/qvs.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/cmake/qvs.pc DESTINATION ${QVS_PC_DIR} COMPONENT development)

set(QVS_PC_PREFIX ${CMAKE_BINARY_DIR})
set(QVS_PC_LIBDIR ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(QVS_PC_INCLUDEDIR ${PROJECT_SOURCE_DIR}/include)
configure_file(cmake/qvs.pc.in ${CMAKE_BINARY_DIR}/pkgconfig/qvs.pc @ONLY)

install(FILES docs/man/libqvs.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT development)
install(FILES docs/man/qvs-host.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT host)
