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

UserTerminalInfo MakeTerminal(const avcore::ZolUserTerminalInfo& info, quenda::TerminalType type)
{
    return {TextOrEmpty(info.terminal), type, static_cast<uint32_t>(info.status), TextOrEmpty(info.custom)};
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
    UserOnlineInfo& user = m_users[userId].user;
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
    TypeTable knownTypes;
    for (const avcore::ZolUserInfo& user : users)
    {
        page.push_back(ConvertUserInfo(user, &knownTypes));
    }
    const WBASELIB::WAutoLock guard(&m_lock);
    std::move(page.begin(), page.end(), std::back_inserter(m_cache));
    return 1;
}

std::vector<unsigned> UserStatusManager::ResetByCache()
{
    std::vector<unsigned> changed;
    const WBASELIB::WAutoLock guard(&m_lock);
    ++m_refresh;
    m_users.reserve(m_cache.size());
    for (UserOnlineInfo& user : m_cache)
    {
        const auto [position, isNew] = m_users.try_emplace(user.user_id);
        Entry& known = position->second;
        if (known.refresh == m_refresh)
        {
            changed.push_back(user.user_id); // the refresh contains the user twice: the first record stays
            continue;
        }
        const bool isStatusSame = !isNew && known.user.online_status == user.online_status;
        if (isStatusSame && user.online_status != kOnline)
        {
            continue; // offline before and after: dropped without a report
        }
        known.refresh = m_refresh;
        if (!isStatusSame || known.user.terminal_hash != user.terminal_hash)
        {
            changed.push_back(user.user_id);
            known.user = std::move(user);
        }
    }
    std::vector<UserOnlineInfo>().swap(m_cache); // frees the memory of a whole company until the next refresh

    const std::vector<unsigned> missing = TakeMissing();
    changed.insert(changed.end(), missing.begin(), missing.end());
    return changed;
}

/// Call it under the lock. Removes the users that the last refresh did not contain. Returns those of them that were
/// online, in ascending order.
std::vector<unsigned> UserStatusManager::TakeMissing()
{
    std::vector<unsigned> missing;
    for (auto position = m_users.begin(); position != m_users.end();)
    {
        const auto& [userId, entry] = *position;
        if (entry.refresh == m_refresh)
        {
            ++position;
            continue;
        }
        if (entry.user.online_status == kOnline)
        {
            missing.push_back(userId);
        }
        position = m_users.erase(position);
    }
    std::sort(missing.begin(), missing.end());
    return missing;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed.
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
    return MakeTerminal(info, ReadType(info.ext_info));
}

quenda::TerminalType UserStatusManager::ReadType(const char* extInfo)
{
    return static_cast<quenda::TerminalType>(m_serialization->ParseLoginExtInfo(TextOrEmpty(extInfo)));
}

unsigned UserStatusManager::ReportTerminalOnlineStatus(const std::vector<UserTerminalInfo>& terminals)
{
    // When no terminal is online, the status of the last one counts, on purpose: hosts show what was reported last.
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
        // The digest must use the standard library's string hash: hosts compare digests between sessions.
        const uint64_t name = std::hash<std::string>{}(terminal.terminal);
        const uint64_t custom = std::hash<std::string>{}(terminal.custom);
        const uint64_t mixed = Mix(Mix(name + 0x9e3779b9, terminal.status), custom);
        digest ^= mixed << 1;
    }
    return digest;
}

UserOnlineInfo UserStatusManager::ConvertUserInfo(const avcore::ZolUserInfo& info, TypeTable* knownTypes)
{
    UserOnlineInfo user;
    commonutil::ReadUserId(info.user_id, &user.user_id);
    user.terminals.reserve(static_cast<size_t>(std::max(info.terminal_count, 0)));
    for (int32_t index = 0; index < info.terminal_count; ++index)
    {
        const avcore::ZolUserTerminalInfo& terminal = info.terminals[index];
        const auto [type, isNew] = knownTypes->try_emplace(TextOrEmpty(terminal.ext_info));
        if (isNew)
        {
            type->second = ReadType(terminal.ext_info);
        }
        user.terminals.push_back(MakeTerminal(terminal, type->second));
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
        return known->second.user;
    }
    UserOnlineInfo unknown;
    unknown.user_id = userId;
    return unknown;
}

} // namespace onlinemanager
