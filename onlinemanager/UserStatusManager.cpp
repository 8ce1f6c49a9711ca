#include "onlinemanager/UserStatusManager.h"

#include "commonutil/StringUtil.h"

#include <algorithm>
#include <string>
#include <utility>

namespace onlinemanager
{

namespace
{

using commonutil::TextOrEmpty;

constexpr unsigned kOnline = 1;

uint64_t Mix(uint64_t seed, uint64_t value)
{
    return seed ^ (value + 0x9e3779b9 + (seed << 6) + (seed >> 2));
}

} // namespace

UserStatusManager::UserStatusManager(std::shared_ptr<ISerialization> serialization)
    : m_serialization(std::move(serialization))
{
}

bool UserStatusManager::Add(unsigned userId, const avcore::ZolUserTerminalInfo& info)
{
    UserTerminalInfo terminal = ConvertTerminalInfo(info);
    const WBASELIB::WAutoLock guard(&m_lock);
    UserOnlineInfo& user = m_users[userId];
    user.user_id = userId;
    const auto known =
        std::find_if(user.terminals.begin(), user.terminals.end(),
                     [&terminal](const UserTerminalInfo& other) { return other.terminal == terminal.terminal; });
    if (known == user.terminals.end())
    {
        user.terminals.push_back(std::move(terminal));
    }
    else if (known->status == terminal.status && known->custom == terminal.custom)
    {
        return false;
    }
    else
    {
        *known = std::move(terminal);
    }
    Rate(&user);
    return true;
}

int UserStatusManager::Cache(const WBASELIB::Vector<avcore::ZolUserInfo>& users)
{
    std::vector<UserOnlineInfo> page;
    page.reserve(users.size());
    for (const avcore::ZolUserInfo& user : users)
    {
        page.push_back(ConvertUserInfo(user));
    }
    const WBASELIB::WAutoLock guard(&m_lock);
    std::move(page.begin(), page.end(), std::back_inserter(m_cache));
    return 1;
}

std::vector<unsigned> UserStatusManager::ResetByCache()
{
    std::vector<unsigned> changed;
    const WBASELIB::WAutoLock guard(&m_lock);
    UserTable refreshed;
    refreshed.reserve(m_cache.size());
    for (UserOnlineInfo& user : m_cache)
    {
        const unsigned userId = user.user_id;
        const auto known = m_users.find(userId);
        if (known == m_users.end())
        {
            changed.push_back(userId);
            refreshed.try_emplace(userId, std::move(user));
            continue;
        }
        const UserOnlineInfo& before = known->second;
        if (before.online_status == user.online_status && user.online_status != kOnline)
        {
            continue; // offline before and after: dropped without a word
        }
        const bool same = before.online_status == user.online_status && before.terminal_hash == user.terminal_hash;
        if (!same)
        {
            changed.push_back(userId);
            known->second = std::move(user);
        }
        refreshed.insert(m_users.extract(known));
    }

    const size_t present = changed.size();
    for (const auto& [userId, user] : m_users)
    {
        if (user.online_status == kOnline)
        {
            changed.push_back(userId);
        }
    }
    std::sort(changed.begin() + static_cast<std::ptrdiff_t>(present), changed.end());

    m_users = std::move(refreshed);
    std::vector<UserOnlineInfo>().swap(m_cache); // a company's worth of memory, not needed until the next refresh
    return changed;
}

bool UserStatusManager::Query(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb)
{
    for (const unsigned userId : ids)
    {
        cb(Find(userId));
    }
    return true;
}

void UserStatusManager::Clear()
{
    const WBASELIB::WAutoLock guard(&m_lock);
    m_users.clear();
}

UserTerminalInfo UserStatusManager::ConvertTerminalInfo(const avcore::ZolUserTerminalInfo& info)
{
    UserTerminalInfo terminal;
    terminal.terminal = TextOrEmpty(info.terminal);
    terminal.terminal_type =
        static_cast<quenda::TerminalType>(m_serialization->ParseLoginExtInfo(TextOrEmpty(info.ext_info)));
    terminal.status = static_cast<uint32_t>(info.status);
    terminal.custom = TextOrEmpty(info.custom);
    return terminal;
}

unsigned UserStatusManager::ReportTerminalOnlineStatus(const std::vector<UserTerminalInfo>& terminals)
{
    // When nobody is online the last terminal decides, not the most significant one: hosts show what was reported last.
    unsigned status = 0;
    for (const UserTerminalInfo& terminal : terminals)
    {
        if (status != kOnline)
        {
            status = terminal.status;
        }
    }
    return status;
}

uint64_t UserStatusManager::CalcTerminalInfoHash(const std::vector<UserTerminalInfo>& terminals)
{
    uint64_t digest = 0;
    for (const UserTerminalInfo& terminal : terminals)
    {
        // The standard library's string hash, MurmurHash2 with its own seed: hosts compare digests between sessions.
        const uint64_t name = std::hash<std::string>{}(terminal.terminal);
        const uint64_t custom = std::hash<std::string>{}(terminal.custom);
        const uint64_t mixed = Mix(Mix(name + 0x9e3779b9, terminal.status), custom);
        digest ^= mixed << 1;
    }
    return digest;
}

UserOnlineInfo UserStatusManager::ConvertUserInfo(const avcore::ZolUserInfo& info)
{
    UserOnlineInfo user;
    commonutil::ReadUserId(info.user_id, &user.user_id);
    user.terminals.reserve(static_cast<size_t>(std::max(info.terminal_count, 0)));
    for (int32_t index = 0; index < info.terminal_count; ++index)
    {
        user.terminals.push_back(ConvertTerminalInfo(info.terminals[index]));
    }
    Rate(&user);
    return user;
}

void UserStatusManager::Rate(UserOnlineInfo* user)
{
    user->online_status = ReportTerminalOnlineStatus(user->terminals);
    user->terminal_hash = CalcTerminalInfoHash(user->terminals);
}

UserOnlineInfo UserStatusManager::Find(unsigned userId)
{
    const WBASELIB::WAutoLock guard(&m_lock);
    const auto known = m_users.find(userId);
    if (known != m_users.end())
    {
        return known->second;
    }
    UserOnlineInfo unknown;
    unknown.user_id = userId;
    return unknown;
}

} // namespace onlinemanager
