# SPDX-License-Identifier: Apache-2.0
# Debian packages: `cpack -G DEB --config build/release/CPackConfig.cmake` makes one package of each component.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qvs)
set(CPACK_PACKAGE_VENDOR qvs)
set(CPACK_PACKAGE_CONTACT "qvs maintainers <maintainers@qvs.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
# Older than the first revision of a distribution that packages this version.
set(CPACK_DEBIAN_PACKAGE_RELEASE 0qvs1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Finds the packages of the libraries of Debian. Those of the project are named below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/finish-packages.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/correct-sizes.cmake)

# qvs_package(COMPONENT PACKAGE SECTION DEPENDS SUMMARY TEXT): the package of a component. In DEPENDS, commas separate
# packages, and @ stands for " (= this version)". The lines of TEXT have at most 79 characters.
set(CPACK_COMPONENTS_ALL)
function(qvs_package component package section depends summary text)
    string(TOUPPER ${component} upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} PARENT_SCOPE)
    string(REPLACE @ " (= ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})" depends "${depends}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
    if(section STREQUAL libs)
        # finish-packages.cmake writes the symbols.
        set(symbols ${CMAKE_BINARY_DIR}/CMakeFiles/${package}/symbols)
        set(CPACK_DEBIAN_${upper}_SYMBOLS ${symbols} PARENT_SCOPE)
        set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA
            "${CMAKE_CURRENT_SOURCE_DIR}/cmake/debian/triggers;${symbols}" PARENT_SCOPE)
    endif()
endfunction()

set(any_state_library "libmesh-public-reference | libmesh-public")
qvs_package(library libqvs1 libs "${any_state_library}"
    "control library for virtual-switch data paths"
    "libqvs creates and destroys distributed virtual switches, ports and
uplinks of a hypervisor host, sets their policies and reads their state.
This package contains the library.")
qvs_package(development libqvs-dev libdevel "libqvs1@, ${any_state_library}"
    "control library for virtual-switch data paths (development)"
    "libqvs creates and destroys distributed virtual switches, ports and
uplinks of a hypervisor host, sets their policies and reads their state.
This package contains the headers, and files for pkg-config and CMake.")
qvs_package(config libqvs-config0 libs "libqvs1@"
    "declarative configuration of virtual switches"
    "libqvs-config compares the switches of a host with a document and carries
out the difference, all of it or nothing. This package contains the
library.")
qvs_package(config-development libqvs-config-dev libdevel "libqvs-config0@, libqvs-dev@"
    "declarative configuration of virtual switches (development)"
    "libqvs-config compares the switches of a host with a document and carries
out the difference, all of it or nothing. This package contains the
headers and a file for pkg-config.")
qvs_package(host-mesh libmesh-public-reference libs ""
    "reference state library for libqvs"
    "libmeshPublic is the library by which libqvs reaches the kernel of a
hypervisor. A hypervisor has its own; this one reaches the emulated kernel
of the package qvs-host.")
set(CPACK_DEBIAN_HOST-MESH_PACKAGE_PROVIDES libmesh-public)
set(CPACK_DEBIAN_HOST-MESH_PACKAGE_CONFLICTS libmesh-public)
set(CPACK_DEBIAN_HOST-MESH_PACKAGE_REPLACES libmesh-public)
qvs_package(tool qvs admin "libqvs1@"
    "command-line tool for virtual switches"
    "qvs shows and changes the distributed virtual switches of a hypervisor
host, declares them in a document, and undoes changes that fail.")
set(CPACK_DEBIAN_TOOL_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/qvs/postrm)
qvs_package(agent qvs-agent admin "libqvs1@"
    "one configuration for the virtual switches of many hosts"
    "qvs-agent follows the configuration that qvs fleet publishes in a
distributed store, carries it out on this host, and undoes what fails.")
set(CPACK_DEBIAN_AGENT_PACKAGE_RECOMMENDS "qvs")
qvs_package(host qvs-host utils "libmesh-public-reference@"
    "emulated hypervisor host for libqvs"
    "qvs-host runs programs that use libqvs on an emulated hypervisor host: a
kernel, its devices and its shell, without privileges. It is for trying
out and testing agents.")
set(CPACK_DEBIAN_HOST_PACKAGE_RECOMMENDS "qvs")
qvs_package(python python3-qvs python "libqvs1@, python3:any (>= 3.11)"
    "Python module for virtual switches"
    "The module qvs controls the distributed virtual switches of a hypervisor
host from Python: switches, ports, policies, documents and tables of the
kernel. It has type hints.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS libqvs-config0)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_LIST_DIR}/debian/python/postinst ${CMAKE_CURRENT_LIST_DIR}/debian/python/prerm)
qvs_package(documentation qvs-doc doc ""
    "documentation of qvs"
    "The documentation describes the control library libqvs, its command-line
tool qvs and the emulated host qvs-host.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
include(CPack)
