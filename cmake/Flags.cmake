# Compiler flags shared by every room.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Assertions are promises to the user and stay on everywhere, so no build type defines NDEBUG.
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -g1")
# The sanitizers' and fuzzers' builds; -O2 takes half as long again to compile.
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1")
set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g")

add_library(tamarin_flags INTERFACE)
target_compile_options(tamarin_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
    -march=${TAMARIN_ARCH}
    # Plain and fast forms, one thread and many, g++ and clang must give equal sums.
    -ffp-contract=off
    # Assertion messages and debug information name files from the root of the tree.
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(TAMARIN_WERROR)
    target_compile_options(tamarin_flags INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # g++ judges shadowing, by a narrower rule; assert(!"text") is how a message is asserted; a loop
    # that sanitizers keep from being vectorised is no fault of the loop.
    target_compile_options(tamarin_flags INTERFACE
        -Wno-shadow -Wno-string-conversion -Wno-pass-failed)
endif()
# g++ 12 warns of overlapping copies in std::string's operator+ where there are none (bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(tamarin_flags INTERFACE -Wno-restrict)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_definitions(tamarin_flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()
if(TAMARIN_SANITIZE)
    target_compile_options(tamarin_flags INTERFACE
        -fsanitize=${TAMARIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tamarin_flags INTERFACE -fsanitize=${TAMARIN_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # With sanitizers g++ 12 warns of uninitialised values inside its own <regex>.
        target_compile_options(tamarin_flags INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()

# For targets whose files may be compiled together, behind the flags above.
add_library(tamarin_united INTERFACE)
if(TAMARIN_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ then warns of unnamed namespaces, as in headers, and of names that hide those of another file;
    # builds file by file judge what is meant.
    target_compile_options(tamarin_united INTERFACE -Wno-subobject-linkage -Wno-shadow)
endif()
