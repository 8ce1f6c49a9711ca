#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform
{

/// The topics of the platform. Ids come from outside and may hold anything, so each is escaped into one level: letters,
/// digits, '-', '_' and '.' stay, every other byte becomes '%' and two hexadecimal digits, and "%" alone is the empty text.
///
///     zol/c/<app>/<company>/p/<user>/<device>    presence of a terminal, retained
///     zol/c/<app>/<company>/u/<user>             what is meant for all terminals of a user
///     zol/c/<app>/<company>/t/<user>/<device>    what is meant for one terminal
///     zol/c/<app>/<company>/r/<user>/<device>    a terminal's reports to the monitoring service
///     zol/g/<group>/m/<user>/<session>           a group's member, retained
///     zol/g/<group>/x                            what is meant for everybody in a group
namespace topics
{

std::string Escape(std::string_view text);
/// The text that `Escape` made the level of; what it cannot have made stays as it is.
std::string Unescape(std::string_view level);

std::vector<std::string_view> Split(std::string_view topic);

} // namespace topics

/// The topics of one company.
class CompanyTopics
{
public:
    CompanyTopics() = default;
    CompanyTopics(std::string_view appId, std::string_view companyId);

    std::string Presence(std::string_view userId, std::string_view deviceId) const;
    std::string PresenceOfUser(std::string_view userId) const; ///< filter
    std::string PresenceOfAll() const;                         ///< filter
    std::string User(std::string_view userId) const;
    std::string AllUsers() const; ///< filter
    std::string Terminal(std::string_view userId, std::string_view deviceId) const;
    std::string Reports(std::string_view userId, std::string_view deviceId) const;
    std::string AllReports() const; ///< filter

    /// What stands after the company's own levels, or nothing when the topic is not one of this company.
    std::string_view Inside(std::string_view topic) const;

private:
    std::string m_base; ///< up to and with the '/' after the company
};

/// The topics of one group.
class GroupTopics
{
public:
    GroupTopics() = default;
    explicit GroupTopics(std::string_view groupId);

    std::string Member(std::string_view userId, std::string_view sessionId) const;
    std::string AllMembers() const; ///< filter
    std::string Messages() const;

    std::string_view Inside(std::string_view topic) const;

private:
    std::string m_base;
};

} // namespace platform
