# Compares the defined dynamic symbols of MODULE with the names in EXPORTS.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND "${NM}" --dynamic --defined-only --format=just-symbols "${MODULE}"
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" found "${output}")
file(STRINGS "${EXPORTS}" expected)

set(extra ${found})
list(REMOVE_ITEM extra ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${found})
if(extra OR missing)
    message(FATAL_ERROR "exported but not agreed: ${extra}\nagreed but not exported: ${missing}")
endif()
