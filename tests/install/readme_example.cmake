# The README contains the whole example of a host.
cmake_minimum_required(VERSION 3.25)

file(READ "${SOURCE}/README.md" readme)
file(READ "${SOURCE}/examples/minimal_host/minimal_host.cpp" example)
string(FIND "${readme}" "```cpp\n${example}```\n" position)
if(position EQUAL -1)
    message(FATAL_ERROR "README.md does not quote examples/minimal_host/minimal_host.cpp as it stands")
endif()
