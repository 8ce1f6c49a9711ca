# rapidjson: a target for the headers of RapidJSON. RapidJSON's own package gives only their folder.

find_package(RapidJSON REQUIRED)
add_library(rapidjson INTERFACE)
target_include_directories(rapidjson SYSTEM INTERFACE "${RAPIDJSON_INCLUDE_DIRS}")
