#include "platform/wire/Topics.h"

namespace platform
{

namespace topics
{

namespace
{

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

bool IsPlain(char character)
{
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z') || character == '-' || character == '_' || character == '.';
}

} // namespace

std::string Escape(std::string_view text)
{
    if (text.empty())
    {
        return "%";
    }
    std::string level;
    level.reserve(text.size());
    for (const char character : text)
    {
        if (IsPlain(character))
        {
            level += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        level += '%';
        level += kHexDigits[byte >> 4U];
        level += kHexDigits[byte & 0xFU];
    }
    return level;
}

std::string Unescape(std::string_view level)
{
    if (level == "%")
    {
        return {};
    }
    std::string text;
    text.reserve(level.size());
    for (size_t i = 0; i < level.size(); ++i)
    {
        if (level[i] == '%' && i + 2 < level.size())
        {
            const size_t high = kHexDigits.find(level[i + 1]);
            const size_t low = kHexDigits.find(level[i + 2]);
            if (high != std::string_view::npos && low != std::string_view::npos)
            {
                text += static_cast<char>(static_cast<unsigned char>(high << 4U | low));
                i += 2;
                continue;
            }
        }
        text += level[i];
    }
    return text;
}

std::vector<std::string_view> Split(std::string_view topic)
{
    std::vector<std::string_view> levels;
    for (size_t begin = 0;;)
    {
        const size_t end = topic.find('/', begin);
        levels.push_back(topic.substr(begin, end - begin));
        if (end == std::string_view::npos)
        {
            return levels;
        }
        begin = end + 1;
    }
}

} // namespace topics

using topics::Escape;

CompanyTopics::CompanyTopics(std::string_view appId, std::string_view companyId)
    : m_base("zol/c/" + Escape(appId) + '/' + Escape(companyId) + '/')
{
}

std::string CompanyTopics::Presence(std::string_view userId, std::string_view deviceId) const
{
    return m_base + "p/" + Escape(userId) + '/' + Escape(deviceId);
}

std::string CompanyTopics::PresenceOfUser(std::string_view userId) const
{
    return m_base + "p/" + Escape(userId) + "/+";
}

std::string CompanyTopics::PresenceOfAll() const
{
    return m_base + "p/+/+";
}

std::string CompanyTopics::User(std::string_view userId) const
{
    return m_base + "u/" + Escape(userId);
}

std::string CompanyTopics::AllUsers() const
{
    return m_base + "u/+";
}

std::string CompanyTopics::Terminal(std::string_view userId, std::string_view deviceId) const
{
    return m_base + "t/" + Escape(userId) + '/' + Escape(deviceId);
}

std::string CompanyTopics::Reports(std::string_view userId, std::string_view deviceId) const
{
    return m_base + "r/" + Escape(userId) + '/' + Escape(deviceId);
}

std::string CompanyTopics::AllReports() const
{
    return m_base + "r/+/+";
}

std::string_view CompanyTopics::Inside(std::string_view topic) const
{
    return topic.starts_with(m_base) ? topic.substr(m_base.size()) : std::string_view();
}

GroupTopics::GroupTopics(std::string_view groupId) : m_base("zol/g/" + Escape(groupId) + '/') {}

std::string GroupTopics::Member(std::string_view userId, std::string_view sessionId) const
{
    return m_base + "m/" + Escape(userId) + '/' + Escape(sessionId);
}

std::string GroupTopics::AllMembers() const
{
    return m_base + "m/+/+";
}

std::string GroupTopics::Messages() const
{
    return m_base + "x";
}

std::string_view GroupTopics::Inside(std::string_view topic) const
{
    return topic.starts_with(m_base) ? topic.substr(m_base.size()) : std::string_view();
}

} // namespace platform
