# What the targets of the project share: the warnings and the sanitizers, both interface targets that every one links,
# search paths, and precompiled headers.
add_library(qvs_warnings INTERFACE)
target_compile_options(qvs_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wmissing-declarations
    $<$<COMPILE_LANGUAGE:CXX>:-Wextra-semi -Wnon-virtual-dtor>
    $<$<BOOL:${QVS_WERROR}>:-Werror>)

# The interposer and the emulated shell run inside programs that have no sanitizer; they never link this.
add_library(qvs_sanitize INTERFACE)
if(QVS_SANITIZE)
    target_compile_options(qvs_sanitize INTERFACE
        -fsanitize=${QVS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(qvs_sanitize INTERFACE -fsanitize=${QVS_SANITIZE})
endif()
if(QVS_FUZZ)
    # What is fuzzed tells the fuzzer where it has been, and is fast enough to be there often.
    target_compile_options(qvs_sanitize INTERFACE -fsanitize=fuzzer-no-link -O1)
    target_link_options(qvs_sanitize INTERFACE -fsanitize=fuzzer-no-link)
endif()

# An installed program or library finds the project's libraries in PATH, in the build tree by the same path. With
# two different ones CMake pads the shorter with colons, and the loader takes nothing between two colons to be the
# current directory.
function(qvs_search_path target path)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH ${path} BUILD_WITH_INSTALL_RPATH ON)
endfunction()

# The second compiler reads the large headers of other projects once for a target, not once for each source; GCC
# sees each source as it is, so that a missing include shows.
function(qvs_precompile target)
    if(QVS_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
endfunction()
