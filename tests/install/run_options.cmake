# ./run refuses a wrong option before it builds, and accepts every option of the demonstration. A `cmake` that leaves a file when
# it is called comes first in PATH.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(COPY "${SOURCE}/run" "${SOURCE}/scripts" DESTINATION "${WORK}")
file(WRITE "${WORK}/bin/cmake" "#!/bin/sh\n: >'${WORK}/built'\n")
file(CHMOD "${WORK}/bin/cmake" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
set(ENV{PATH} "${WORK}/bin:$ENV{PATH}")

expect_failure("unknown option --bogus" "${WORK}/run" --bogus)
foreach(users IN ITEMS 10 49 1000001 09 99999999999999999999 many)
    expect_failure("--users must be 50 to 1000000, not ${users}" "${WORK}/run" --users ${users})
    expect_failure("--users must be 50 to 1000000, not ${users}" "${WORK}/run" "--users=${users}")
endforeach()
if(EXISTS "${WORK}/built")
    message(FATAL_ERROR "./run built before it refused a wrong option")
endif()

run("${BUILD}/host/onlinehost" demo --help)
string(REGEX MATCHALL "\n  (-h,)?--[a-z-]+" options "${output}")
if(NOT "\n  --users" IN_LIST options)
    message(FATAL_ERROR "expected --users among the options of the demonstration, got: ${options}")
endif()
foreach(option IN LISTS options)
    string(REGEX REPLACE "[^-]*(-h,)?(--[a-z-]+)" "\\2" option "${option}")
    run("${WORK}/run" ${option} --help)
endforeach()
