# Settings for all targets of the build.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()

# -O2, as Debian builds: with -O3 g++ 12 inlines so much of std::string that it warns of copies that never happen.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(ONLINE_CCACHE ccache DOC "Compiler cache, used when present")
if(ONLINE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Without this sloppiness ccache does not cache what is compiled with a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${ONLINE_CCACHE}"
    )
endif()
