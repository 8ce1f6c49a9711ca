# MODULE names no library but those of the system and of the compiler, binds all its references when it is loaded, and
# has its tables of references write-protected from then on.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND "${READELF}" --wide --dynamic --segments "${MODULE}"
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)

# Without brackets, which would tie the elements of a list together.
string(REGEX REPLACE "[][]" "" output "${output}")
string(REGEX MATCHALL "Shared library: [^\n]+" needed "${output}")
list(TRANSFORM needed REPLACE "Shared library: " "")
if(NOT "libc.so.6" IN_LIST needed)
    message(FATAL_ERROR "found no libc.so.6 among the needed libraries: ${needed}")
endif()
list(REMOVE_ITEM needed libc.so.6 libm.so.6 libgcc_s.so.1 libstdc++.so.6)
if(needed)
    message(FATAL_ERROR "needs at run time: ${needed}")
endif()

foreach(mark "FLAGS_1[^\n]* NOW" "GNU_RELRO")
    if(NOT output MATCHES "${mark}")
        message(FATAL_ERROR "${MODULE} lacks: ${mark}")
    endif()
endforeach()
