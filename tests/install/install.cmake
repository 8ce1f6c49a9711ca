# Installs BUILD below WORK, moves the result to another folder, and builds CONSUMER against it in both ways: through the
# CMake package and through pkg-config. Each program must load the module and print its class identifier. The EXAMPLE of
# a host must build and log in, and the installed program must find the installed module and show its demonstration.
cmake_minimum_required(VERSION 3.25)

set(expected "{4022bd11-a92f-4f6d-9031-eeb92e998806}")
set(prefix "${WORK}/moved")

function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${WORK}" COMMAND_ECHO STDOUT OUTPUT_VARIABLE output RESULT_VARIABLE code)
    message("${output}")
    if(NOT code EQUAL 0)
        message(FATAL_ERROR "exit code ${code}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_class_of_the_module)
    run(${ARGN})
    if(NOT output STREQUAL "${expected}\n")
        message(FATAL_ERROR "expected ${expected}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/first")
file(RENAME "${WORK}/first" "${prefix}")

function(build source folder)
    run("${CMAKE_COMMAND}" -S "${source}" -B "${folder}" -G "${GENERATOR}"
        "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_PREFIX_PATH=${prefix}"
    )
    run("${CMAKE_COMMAND}" --build "${folder}")
endfunction()

build("${CONSUMER}" "${WORK}/package")
file(STRINGS "${WORK}/package/module.txt" module)
expect_class_of_the_module("${WORK}/package/consumer" "${module}")

file(GLOB_RECURSE found "${prefix}/onlinemanager.pc")
get_filename_component(folder "${found}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${folder}")
find_program(pkg_config NAMES pkg-config REQUIRED)
run("${pkg_config}" --variable=module onlinemanager)
string(STRIP "${output}" module)
run("${pkg_config}" --cflags onlinemanager)
separate_arguments(compile UNIX_COMMAND "${output}")
run("${pkg_config}" --libs onlinemanager)
separate_arguments(link UNIX_COMMAND "${output}")
run("${COMPILER}" -std=c++20 ${compile} "${CONSUMER}/consumer.cpp" -o "${WORK}/by-pkg-config" ${link})
expect_class_of_the_module("${WORK}/by-pkg-config" "${module}")

build("${EXAMPLE}" "${WORK}/example")
run("${WORK}/example/minimal_host")

run("${prefix}/bin/onlinehost" demo)
