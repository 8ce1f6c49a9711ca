# Builds the host in consumer/ against PREFIX through the CMake package and through pkg-config. Each program must load the
# module and print its class identifier.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

set(consumer "${CMAKE_CURRENT_LIST_DIR}/consumer")
set(expected "{4022bd11-a92f-4f6d-9031-eeb92e998806}")

function(expect_class_of_the_module)
    run(${ARGN})
    if(NOT output STREQUAL "${expected}\n")
        message(FATAL_ERROR "expected ${expected}, got ${output}")
    endif()
endfunction()

run("${CMAKE_COMMAND}" -S "${consumer}" -B package -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_PREFIX_PATH=${PREFIX}"
)
run("${CMAKE_COMMAND}" --build package)
file(STRINGS "${WORK}/package/module.txt" module)
expect_class_of_the_module("${WORK}/package/consumer" "${module}")

find_pkg_config("${PREFIX}")
run("${pkg_config}" --variable=module onlinemanager)
string(STRIP "${output}" module)
run("${pkg_config}" --cflags onlinemanager)
separate_arguments(compile UNIX_COMMAND "${output}")
run("${pkg_config}" --libs onlinemanager)
separate_arguments(link UNIX_COMMAND "${output}")
run("${COMPILER}" -std=c++20 ${compile} "${consumer}/consumer.cpp" -o by-pkg-config ${link})
expect_class_of_the_module("${WORK}/by-pkg-config" "${module}")
