# The installed program finds the installed module and plays its demonstration.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

run("${PREFIX}/bin/onlinehost" demo)
