#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform
{

/// The topics of the platform. An id from a host may hold any bytes, so it is escaped into one level: letters, digits,
/// '-', '_' and '.' stay, every other byte becomes '%' and two hexadecimal digits, and "%" alone is the empty text.
///
///     zol/c/<app>/<company>/p/<user>/<device>    presence of a terminal, retained
///     zol/c/<app>/<company>/u/<user>             messages to all terminals of a user
///     zol/c/<app>/<company>/t/<user>/<device>    messages to one terminal
///     zol/c/<app>/<company>/r/<user>/<device>    reports of a terminal to the monitoring service
///     zol/g/<group>/m/<user>/<session>           member of a group, retained
///     zol/g/<group>/x                            messages to all members of a group
namespace topics
{

std::string Escape(std::string_view text);
/// The inverse of `Escape`. A level that `Escape` cannot have made is returned unchanged.
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

    /// The levels after those of the company; empty when the topic belongs to another company.
    std::string_view Inside(std::string_view topic) const;

private:
    std::string m_base; ///< up to and including the '/' after the company
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
