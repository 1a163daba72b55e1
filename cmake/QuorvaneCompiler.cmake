# Warnings, sanitizers, the compiler cache and the fast linker, in one interface target.
add_library(quorvane_compiler_options INTERFACE)
target_compile_options(quorvane_compiler_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough
    # GCC 12 sees overlaps in the standard library's own string code (its bug 105651).
    "$<$<CXX_COMPILER_ID:GNU>:-Wno-restrict;-Wno-stringop-overflow;-Wno-stringop-overread;-Wno-array-bounds>")
if(QUORVANE_WARNINGS_AS_ERRORS)
    target_compile_options(quorvane_compiler_options INTERFACE -Werror)
endif()
if(QUORVANE_VERIFY)
    target_compile_definitions(quorvane_compiler_options INTERFACE QUORVANE_VERIFY=1)
endif()
if(QUORVANE_SANITIZE)
    add_compile_options(-fsanitize=${QUORVANE_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QUORVANE_SANITIZE})
    # The checks' own code makes GCC see uses before a value in the standard library's variants.
    target_compile_options(quorvane_compiler_options INTERFACE "$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>")
    if(QUORVANE_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=all)
    endif()
    if(QUORVANE_SANITIZE MATCHES "thread")
        # The thread checks don't know fences; Asio's tasks are handed over under a mutex all the same.
        add_compile_definitions(BOOST_ASIO_DISABLE_FENCED_BLOCK)
    endif()
endif()

find_program(QUORVANE_CCACHE ccache)
find_program(QUORVANE_ENV env)
if(QUORVANE_CCACHE AND QUORVANE_ENV)
    # With a precompiled header the cache must not ask for the header's own time and macros, and the compiler
    # must say what it took from it; else nothing is ever found. Paths are taken relative to the source folder, so
    # that a second checkout finds what the first has compiled.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QUORVANE_ENV} CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${QUORVANE_CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        add_compile_options(-fpch-preprocess)
    else()
        add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
    endif()
endif()
find_program(QUORVANE_MOLD mold)
if(QUORVANE_MOLD AND NOT QUORVANE_SANITIZE)
    add_link_options(-fuse-ld=mold)
endif()
