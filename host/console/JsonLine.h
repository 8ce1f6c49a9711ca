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

/// Writes one JSON object that stands on one line. Bytes of a text that are not UTF-8 become U+FFFD.
class JsonLine
{
public:
    JsonLine();

    JsonLine& Text(const char* key, std::string_view text);
    JsonLine& Number(const char* key, int64_t number);
    JsonLine& Flag(const char* key, bool flag);
    JsonLine& Texts(const char* key, const std::vector<std::string>& texts);
    JsonLine& Numbers(const char* key, const std::vector<unsigned>& numbers);

    /// UTC in ISO 8601, with milliseconds: "2024-05-06T07:08:09.042Z".
    JsonLine& Time(const char* key, std::chrono::system_clock::time_point time);

    /// Begins an object inside the object; `End` ends it.
    JsonLine& Begin(const char* key);
    JsonLine& End();

    /// The whole object, without an end of line. Call it once, and nothing after it.
    std::string Take();

private:
    void Write(std::string_view text);

    rapidjson::StringBuffer m_buffer;
    rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
};

} // namespace host
