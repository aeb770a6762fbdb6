# SPDX-License-Identifier: Apache-2.0
# Options that the targets of the project share: warnings and sanitizers (two interface targets that every target
# links), search paths, and precompiled headers.
add_library(qvs_warnings INTERFACE)
target_compile_options(qvs_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wmissing-declarations
    $<$<COMPILE_LANGUAGE:CXX>:-Wextra-semi -Wnon-virtual-dtor>
    $<$<BOOL:${QVS_WERROR}>:-Werror>)

# Hardening of everything that is installed, which scripts/checks/binaries verifies. All addresses are resolved when a
# program starts. A distribution may have set the source checks of glibc in its flags, so that they are undefined first.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
add_compile_options(-fstack-protector-strong)
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    add_compile_options(-fcf-protection)
endif()
if(NOT QVS_SANITIZE)
    # A sanitizer has checks of its own. Without optimisation, glibc has none.
    add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    # Functions that nothing calls are left out.
    add_compile_options(-ffunction-sections -fdata-sections)
    add_link_options(-Wl,--gc-sections)
endif()

# The interposer and the emulated shell run inside programs without a sanitizer and must not link this target.
add_library(qvs_sanitize INTERFACE)
if(QVS_SANITIZE)
    target_compile_options(qvs_sanitize INTERFACE
        -fsanitize=${QVS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(qvs_sanitize INTERFACE -fsanitize=${QVS_SANITIZE})
endif()
if(QVS_COVERAGE)
    target_compile_options(qvs_sanitize INTERFACE -fprofile-instr-generate -fcoverage-mapping)
    target_link_options(qvs_sanitize INTERFACE -fprofile-instr-generate)
endif()
if(QVS_FUZZ)
    # Fuzzed code is instrumented for coverage, and optimised so that the fuzzer can run it often.
    target_compile_options(qvs_sanitize INTERFACE -fsanitize=fuzzer-no-link -O1)
    target_link_options(qvs_sanitize INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Sets the path in which a program or library searches the libraries of the project. The path is the same in the build
# tree and in an installation. If the paths differed, CMake would pad the shorter one with colons, and the loader would
# treat the empty elements between them as the current directory.
function(qvs_search_path target path)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH ${path} BUILD_WITH_INSTALL_RPATH ON)
endfunction()

# Links the C++ runtime into a program or library. Most of the start of a small program is the time in which the loader
# looks up the symbols of the shared runtime. A sanitizer needs the shared one.
function(qvs_static_runtime target)
    if(NOT QVS_SANITIZE)
        target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
    endif()
endfunction()

# Compiles a target for size. Programs that wait for the kernel, for files and for the network gain nothing from longer
# code.
function(qvs_small target)
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-Os>)
endfunction()

# Builds with the second compiler precompile the large headers of other projects, which saves time. Builds with GCC do
# not, so that they detect missing includes.
function(qvs_precompile target)
    if(QVS_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
endfunction()

# qvs_flatbuffers(NAME OPTION...): the interface library qvs_NAME_schema with NAME_generated.h, made from NAME.fbs of the
# directory.
function(qvs_flatbuffers name)
    find_package(FlatBuffers CONFIG REQUIRED)
    set(generated ${CMAKE_CURRENT_BINARY_DIR}/generated)
    add_custom_command(
        OUTPUT ${generated}/${name}_generated.h
        COMMAND flatbuffers::flatc --cpp --scoped-enums --cpp-field-case-style lower ${ARGN} -o ${generated}
                ${CMAKE_CURRENT_SOURCE_DIR}/${name}.fbs
        DEPENDS ${name}.fbs
        COMMENT "Generating ${name}_generated.h"
        VERBATIM)
    add_custom_target(qvs_${name}_header DEPENDS ${generated}/${name}_generated.h)
    add_library(qvs_${name}_schema INTERFACE)
    target_include_directories(qvs_${name}_schema INTERFACE ${PROJECT_SOURCE_DIR}/host)
    target_include_directories(qvs_${name}_schema SYSTEM INTERFACE ${generated})
    add_dependencies(qvs_${name}_schema qvs_${name}_header)
endfunction()
