# The installed suppressions name every deliberate leak of the module in this build.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

find_program(valgrind valgrind REQUIRED)
find_pkg_config("${PREFIX}")
run("${pkg_config}" --variable=valgrind_suppressions onlinemanager)
string(STRIP "${output}" suppressions)
run("${valgrind}" --leak-check=full --keep-debuginfo=yes --error-exitcode=1 "--suppressions=${suppressions}"
    "${PREFIX}/bin/onlinehost" demo --timeout 60
)
