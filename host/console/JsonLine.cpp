#include "host/console/JsonLine.h"

#include "onlinehost/Text.h"

#include <cstdio>
#include <ctime>

namespace host
{

namespace
{

/// "2024-05-06T07:08:09.042Z"
std::string UtcText(std::chrono::system_clock::time_point time)
{
    using std::chrono::milliseconds;
    const auto sinceEpoch = std::chrono::floor<milliseconds>(time.time_since_epoch());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const auto clock = static_cast<std::time_t>(seconds.count());
    std::tm parts{};
    gmtime_r(&clock, &parts);
    char day[32];
    char text[48];
    std::strftime(day, sizeof(day), "%FT%T", &parts);
    std::snprintf(text, sizeof(text), "%s.%03dZ", day, static_cast<int>((sinceEpoch - seconds).count()));
    return text;
}

} // namespace

JsonLine::JsonLine(std::string_view type, std::chrono::system_clock::time_point time)
{
    m_writer.StartObject();
    Text("type", type).Text("time", UtcText(time));
}

void JsonLine::Write(std::string_view text)
{
    const std::string utf8 = onlinehost::RepairUtf8(text);
    m_writer.String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
}

JsonLine& JsonLine::Text(const char* key, std::string_view text)
{
    m_writer.Key(key);
    Write(text);
    return *this;
}

JsonLine& JsonLine::Number(const char* key, int64_t number)
{
    m_writer.Key(key);
    m_writer.Int64(number);
    return *this;
}

JsonLine& JsonLine::Flag(const char* key, bool flag)
{
    m_writer.Key(key);
    m_writer.Bool(flag);
    return *this;
}

JsonLine& JsonLine::Texts(const char* key, const std::vector<std::string>& texts)
{
    m_writer.Key(key);
    m_writer.StartArray();
    for (const std::string& text : texts)
    {
        Write(text);
    }
    m_writer.EndArray();
    return *this;
}

JsonLine& JsonLine::Numbers(const char* key, const std::vector<unsigned>& numbers)
{
    m_writer.Key(key);
    m_writer.StartArray();
    for (const unsigned number : numbers)
    {
        m_writer.Uint(number);
    }
    m_writer.EndArray();
    return *this;
}

JsonLine& JsonLine::Begin(const char* key)
{
    m_writer.Key(key);
    m_writer.StartObject();
    return *this;
}

JsonLine& JsonLine::End()
{
    m_writer.EndObject();
    return *this;
}

std::string JsonLine::Take()
{
    m_writer.EndObject();
    return {m_buffer.GetString(), m_buffer.GetSize()};
}

} // namespace host
