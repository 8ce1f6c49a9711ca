# For an older C++ standard than the headers need, the message names the needed standard before any error inside a header.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

find_pkg_config("${PREFIX}")
run("${pkg_config}" --cflags onlinemanager)
separate_arguments(compile UNIX_COMMAND "${output}")
file(WRITE "${WORK}/host.cpp" "#include \"onlinemanager/IOnlineManager.h\"\n")
run("${COMPILER}" -std=c++20 ${compile} -fsyntax-only host.cpp)
expect_failure("these headers need C++20: compile with -std=c++20 or newer"
    "${COMPILER}" -std=c++17 ${compile} -fsyntax-only host.cpp
)
