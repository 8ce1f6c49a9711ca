# The README shows the example of a host whole: README and EXAMPLE are the two files.
cmake_minimum_required(VERSION 3.25)

file(READ "${README}" readme)
file(READ "${EXAMPLE}" example)
string(FIND "${readme}" "```cpp\n${example}```\n" position)
if(position EQUAL -1)
    message(FATAL_ERROR "README.md does not quote ${EXAMPLE} as it stands")
endif()
