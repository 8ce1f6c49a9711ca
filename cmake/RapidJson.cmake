# rapidjson: the headers of RapidJSON as a target. Its own package names only the folder.

find_package(RapidJSON REQUIRED)
add_library(rapidjson INTERFACE)
target_include_directories(rapidjson SYSTEM INTERFACE "${RAPIDJSON_INCLUDE_DIRS}")
