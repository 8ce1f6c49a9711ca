# The CMake package has the components that it names, and refuses others and those that are not installed.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

set(ask "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/components" -B build -G "${GENERATOR}" --fresh
    "-DCMAKE_CXX_COMPILER=${COMPILER}"
)

run(${ask} "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DREQUIRED=headers\;wbaselib\;platform\;module" "-DOPTIONAL=teapot")
foreach(component headers wbaselib platform module)
    if(NOT output MATCHES "${component}: found")
        message(FATAL_ERROR "expected the component ${component} to be found")
    endif()
endforeach()
if(NOT output MATCHES "teapot: missing")
    message(FATAL_ERROR "expected an unknown optional component to be missing")
endif()
expect_failure("There is no component \"teapot\"; there are headers, module, platform and wbaselib."
    ${ask} "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DREQUIRED=headers\;teapot"
)

file(COPY "${PREFIX}/" DESTINATION "${WORK}/without")
file(GLOB_RECURSE platform "${WORK}/without/libplatform.a")
file(REMOVE ${platform})
expect_failure("The component \"platform\" is not installed: OnlineManager was built with ONLINE_BUILD_HOST=OFF."
    ${ask} "-DCMAKE_PREFIX_PATH=${WORK}/without" "-DREQUIRED=platform"
)
run(${ask} "-DCMAKE_PREFIX_PATH=${WORK}/without" "-DREQUIRED=headers" "-DOPTIONAL=platform")
if(NOT output MATCHES "platform: missing")
    message(FATAL_ERROR "expected the optional component platform to be missing")
endif()
