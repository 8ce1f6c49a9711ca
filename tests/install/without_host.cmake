# A build without the host has no platform library, so its pkg-config file names none.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

run("${CMAKE_COMMAND}" -S "${SOURCE}" -B build -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
    -DONLINE_BUILD_HOST=OFF -DONLINE_BUILD_TESTS=OFF -DONLINE_BUILD_BENCH=OFF
)
find_pkg_config("${WORK}/build")
run("${pkg_config}" --libs onlinemanager)
if(NOT output MATCHES "-lwbaselib" OR output MATCHES "-lplatform")
    message(FATAL_ERROR "expected -lwbaselib and no -lplatform")
endif()
