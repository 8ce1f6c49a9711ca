#include "host/shell/ShellPresence.h"

#include "onlinehost/Text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace host
{

using namespace onlinehost;

using onlinemanager::UserOnlineInfo;
using onlinemanager::UserTerminalInfo;

namespace
{

using Kind = UserChange::Kind;
using Terminals = std::vector<UserTerminalInfo>;

bool IsOnline(const UserTerminalInfo& terminal)
{
    return terminal.status == 1;
}

const UserTerminalInfo* FindOnline(const Terminals& terminals, const std::string& name)
{
    const auto found = std::find_if(terminals.begin(), terminals.end(),
                                    [&name](const UserTerminalInfo& terminal)
                                    { return terminal.terminal == name && IsOnline(terminal); });
    return found == terminals.end() ? nullptr : &*found;
}

void CompareTerminals(uint32_t userId, const Terminals& before, const Terminals& now, std::vector<UserChange>& changes)
{
    const auto add = [&](Kind kind, const UserTerminalInfo& terminal) {
        changes.push_back({kind, userId, terminal.terminal, terminal.custom});
    };
    for (const UserTerminalInfo& terminal : now)
    {
        const UserTerminalInfo* const known = FindOnline(before, terminal.terminal);
        if (IsOnline(terminal) && known == nullptr)
        {
            add(Kind::AddsTerminal, terminal);
        }
        else if (IsOnline(terminal) && known->custom != terminal.custom)
        {
            add(Kind::ChangesText, terminal);
        }
    }
    for (const UserTerminalInfo& terminal : before)
    {
        if (IsOnline(terminal) && FindOnline(now, terminal.terminal) == nullptr)
        {
            add(Kind::RemovesTerminal, terminal);
        }
    }
}

UserChange Arrival(Kind kind, uint32_t userId, const Terminals& now)
{
    UserChange change{kind, userId};
    size_t count = 0;
    for (const UserTerminalInfo& terminal : now)
    {
        if (IsOnline(terminal))
        {
            change.terminal += (count == 0 ? "" : " and ") + terminal.terminal;
            change.text = count++ == 0 ? terminal.custom : "";
        }
    }
    return change;
}

std::string Quoted(const std::string& text)
{
    return "\"" + Printable(text) + "\"";
}

std::string On(const UserChange& change)
{
    return change.terminal.empty() ? "" : " on " + Printable(change.terminal);
}

/// The change of one user in words that follow "sees user 7": "go offline".
std::string DescribeOne(const UserChange& change)
{
    const std::string with = change.text.empty() ? "" : ", " + Quoted(change.text);
    switch (change.kind)
    {
    case Kind::IsOnline:
        return "online" + On(change) + with;
    case Kind::ComesOnline:
        return "come online" + On(change) + with;
    case Kind::GoesOffline:
        return "go offline";
    case Kind::AddsTerminal:
        return "come online" + On(change) + " too" + with;
    case Kind::RemovesTerminal:
        return "go offline" + On(change) + ", still online elsewhere";
    case Kind::ChangesText:
        return change.text.empty() ? "clear the custom text" + On(change)
                                   : "publish " + Quoted(change.text) + On(change);
    case Kind::IsForgotten:
        break;
    }
    return "";
}

/// The same for several users, without details that differ between them.
std::string DescribeMany(Kind kind)
{
    switch (kind)
    {
    case Kind::IsOnline:
        return "online";
    case Kind::ComesOnline:
        return "come online";
    case Kind::GoesOffline:
        return "go offline";
    case Kind::AddsTerminal:
        return "come online on another terminal";
    case Kind::RemovesTerminal:
        return "go offline on one terminal";
    case Kind::ChangesText:
        return "publish another text";
    case Kind::IsForgotten:
        break;
    }
    return "";
}

/// Changes of one kind, of different users.
std::string DescribeGroup(const std::vector<UserChange>& group)
{
    std::vector<uint32_t> users;
    std::transform(group.begin(), group.end(), std::back_inserter(users),
                   [](const UserChange& change) { return change.userId; });
    // The module lists ids in the order of their texts.
    std::sort(users.begin(), users.end());
    const UserChange& first = group.front();
    if (first.kind == Kind::IsForgotten)
    {
        return "does not know " + CountText(users.size(), "user") + " any more: " + ListIds(users);
    }
    return group.size() == 1
               ? "sees user " + std::to_string(first.userId) + " " + DescribeOne(first)
               : "sees " + CountText(users.size(), "user") + " " + DescribeMany(first.kind) + ": " + ListIds(users);
}

/// Gathers changes until a user has a second one, because the sentences about one user must keep their order.
class Gathering
{
public:
    void Add(const UserChange& change)
    {
        if (!m_users.insert(change.userId).second)
        {
            Flush();
            m_users.insert(change.userId);
        }
        const auto group = std::find_if(m_groups.begin(), m_groups.end(),
                                        [&change](const auto& known) { return known.front().kind == change.kind; });
        if (group == m_groups.end())
        {
            m_groups.push_back({change});
        }
        else
        {
            group->push_back(change);
        }
    }

    std::vector<std::string> Take()
    {
        Flush();
        return std::move(m_sentences);
    }

private:
    void Flush()
    {
        for (const std::vector<UserChange>& group : m_groups)
        {
            m_sentences.push_back(DescribeGroup(group));
        }
        m_groups.clear();
        m_users.clear();
    }

    std::vector<std::vector<UserChange>> m_groups;
    std::set<uint32_t> m_users;
    std::vector<std::string> m_sentences;
};

} // namespace

std::vector<UserChange> ShellPresence::Learn(const std::vector<UserOnlineInfo>& users)
{
    const std::lock_guard lock(m_mutex);
    std::vector<UserChange> changes;
    for (const UserOnlineInfo& user : users)
    {
        const auto known = m_users.find(user.user_id);
        if (user.terminals.empty())
        {
            if (known != m_users.end())
            {
                m_users.erase(known);
                changes.push_back({Kind::IsForgotten, user.user_id});
            }
            continue;
        }
        const Terminals before = known == m_users.end() ? Terminals() : known->second;
        const bool wasOnline = std::any_of(before.begin(), before.end(), IsOnline);
        const bool isOnline = std::any_of(user.terminals.begin(), user.terminals.end(), IsOnline);
        if (wasOnline && isOnline)
        {
            CompareTerminals(user.user_id, before, user.terminals, changes);
        }
        else if (isOnline)
        {
            changes.push_back(Arrival(m_isFirst ? Kind::IsOnline : Kind::ComesOnline, user.user_id, user.terminals));
        }
        else if (wasOnline)
        {
            changes.push_back({Kind::GoesOffline, user.user_id});
        }
        m_users[user.user_id] = user.terminals;
    }
    m_isFirst = false;
    return changes;
}

void ShellPresence::Forget()
{
    const std::lock_guard lock(m_mutex);
    m_users.clear();
    m_isFirst = true;
}

std::vector<std::string> DescribeChanges(const std::vector<UserChange>& changes)
{
    Gathering gathering;
    for (const UserChange& change : changes)
    {
        gathering.Add(change);
    }
    return gathering.Take();
}

} // namespace host
