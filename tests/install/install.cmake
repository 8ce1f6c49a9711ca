# Installs BUILD and moves the result to PREFIX.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/first")
file(REMOVE_RECURSE "${PREFIX}")
file(RENAME "${WORK}/first" "${PREFIX}")
