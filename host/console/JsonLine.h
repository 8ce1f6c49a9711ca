#pragma once

#include <chrono>
#include <cstdint>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// Writes one JSON object that stands on one line, as `--json` writes them. Bytes of a text that are not UTF-8 become
/// U+FFFD.
class JsonLine
{
public:
    /// Begins an object with the members that every object has: `type`, and `time` in UTC as ISO 8601 with milliseconds,
    /// "2024-05-06T07:08:09.042Z".
    explicit JsonLine(std::string_view type,
                      std::chrono::system_clock::time_point time = std::chrono::system_clock::now());

    JsonLine& Text(const char* key, std::string_view text);
    JsonLine& Number(const char* key, int64_t number);
    JsonLine& Flag(const char* key, bool flag);
    JsonLine& Texts(const char* key, const std::vector<std::string>& texts);
    JsonLine& Numbers(const char* key, const std::vector<unsigned>& numbers);

    /// Begins an object inside the object; `End` ends it.
    JsonLine& Begin(const char* key);
    JsonLine& End();

    /// Ends the object and returns it without an end of line. Must be the last call.
    std::string Take();

private:
    void Write(std::string_view text);

    rapidjson::StringBuffer m_buffer;
    rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
};

} // namespace host
