# online_flags: the compiler options of all code in this repository. Every target links it.

add_library(online_flags INTERFACE)

target_compile_features(online_flags INTERFACE cxx_std_20)
target_include_directories(online_flags INTERFACE "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")

target_compile_options(online_flags INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Werror
    -Wcast-align
    -Wconversion
    -Wextra-semi
    -Wold-style-cast
    -Woverloaded-virtual
    -Wshadow
    -Wsign-conversion
    -Wsuggest-override
    -Wundef
    # RapidJSON's iterators predate C++20 and compare in a way that clang finds ambiguous in our code that uses them.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-ambiguous-reversed-operator>
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond>
    $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op>
    # g++ 12 finds overlapping copies in its own std::string once operator+ is inlined; there are none.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
)

target_compile_options(online_flags INTERFACE
    -fvisibility=hidden
    -fvisibility-inlines-hidden
    # A record may be absent behind a reference, and the tunnels test for that.
    -fno-delete-null-pointer-checks
)

if(ONLINE_SANITIZE)
    list(JOIN ONLINE_SANITIZE "," sanitizers)
    target_compile_options(online_flags INTERFACE
        -fsanitize=${sanitizers}
        -fno-sanitize-recover=all
        -fno-omit-frame-pointer
    )
    target_link_options(online_flags INTERFACE -fsanitize=${sanitizers})
    if("undefined" IN_LIST ONLINE_SANITIZE)
        # Objects of host, platform and module meet by slot and not by C++ type, so their type records never match.
        target_compile_options(online_flags INTERFACE -fno-sanitize=vptr)
    endif()
endif()

# Checks of the standard library that change no layout, in the builds that are not for speed.
if(ONLINE_SANITIZE)
    target_compile_definitions(online_flags INTERFACE _GLIBCXX_ASSERTIONS)
else()
    target_compile_definitions(online_flags INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
endif()

# As target_precompile_headers, in the builds without optimisation. In an optimised build g++ 12 takes the standard library's
# code, once it comes out of a precompiled header, for ours, and warns of copies that never happen.
function(precompile_headers target)
    if(ONLINE_SANITIZE OR CMAKE_BUILD_TYPE STREQUAL "Debug")
        target_precompile_headers(${ARGV})
    endif()
endfunction()
