# run(COMMAND...): runs the command in WORK and stops the test if it fails. Sets `output` to its standard output.
function(run)
    execute_process(COMMAND ${ARGN}
        WORKING_DIRECTORY "${WORK}"
        COMMAND_ECHO STDOUT
        OUTPUT_VARIABLE output
        ERROR_VARIABLE errors
        RESULT_VARIABLE code
    )
    message("${output}${errors}")
    if(NOT code EQUAL 0)
        message(FATAL_ERROR "expected exit code 0, got ${code}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# expect_failure(TEXT COMMAND...): runs the command in WORK. It must fail and write TEXT. `written` then holds all that the
# command wrote.
function(expect_failure text)
    execute_process(COMMAND ${ARGN}
        WORKING_DIRECTORY "${WORK}"
        COMMAND_ECHO STDOUT
        OUTPUT_VARIABLE output
        ERROR_VARIABLE errors
        RESULT_VARIABLE code
    )
    message("${output}${errors}")
    # CMake wraps its messages.
    string(REGEX REPLACE "[ \n]+" " " written "${output}${errors}")
    string(FIND "${written}" "${text}" position)
    if(code EQUAL 0 OR position EQUAL -1)
        message(FATAL_ERROR "expected a failure with the text: ${text}")
    endif()
    set(written "${written}" PARENT_SCOPE)
endfunction()

# find_pkg_config(PREFIX): lets `pkg_config` find the packages that are installed there.
function(find_pkg_config prefix)
    find_program(pkg_config NAMES pkg-config REQUIRED)
    file(GLOB_RECURSE found "${prefix}/onlinemanager.pc")
    cmake_path(GET found PARENT_PATH folder)
    set(ENV{PKG_CONFIG_PATH} "${folder}")
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
