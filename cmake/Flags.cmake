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
    # Plain and fast forms, one thread and many, g++ and clang must give equal sums.
    -ffp-contract=off
    # Assertion messages and debug information name files from the root of the tree.
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
if(TAMARIN_WERROR)
    target_compile_options(tamarin_flags INTERFACE -Werror)
endif()

# The instructions to use, for what computes. The rest makes do with those that every processor has: it is spared
# what libraries' headers do differently for each, and a compiler cache keeps it once for all.
add_library(tamarin_processor INTERFACE)
target_compile_options(tamarin_processor INTERFACE -march=${TAMARIN_ARCH})

# Debug information is a tenth of the work of compiling what is hardly optimised. Whoever compiles many files in
# one go to have them soon does without; the presets for developers have it, and where a sanitizer reports it.
if(TAMARIN_UNITY AND NOT TAMARIN_SANITIZE)
    set(debug_information -g0)
else()
    set(debug_information -g1)
endif()
# The options of what is called more than it computes, which differ from those of its configuration.
set(TAMARIN_COLD_OPTIONS "$<$<CONFIG:Release>:-O1;${debug_information}>$<$<CONFIG:RelWithDebInfo>:-O0>")
foreach(level IN ITEMS 0 1)
    set(TAMARIN_TEST_OPTIONS_${level} "$<$<CONFIG:Release,RelWithDebInfo>:-O${level};${debug_information}>")
endforeach()
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
