#include "platform/session/CompanyDirectory.h"

#include <algorithm>

namespace platform
{

void CompanyDirectory::BeginSnapshot()
{
    const std::lock_guard lock(m_mutex);
    ++m_round;
    m_state = m_known ? State::Repeat : State::First;
}

std::vector<std::pair<std::string, CompanyDirectory::Terminal>> CompanyDirectory::EndSnapshot()
{
    const std::lock_guard lock(m_mutex);
    std::vector<std::pair<std::string, Terminal>> gone;
    for (auto it = m_users.begin(); it != m_users.end();)
    {
        auto& [userId, terminals] = *it;
        for (Terminal& terminal : terminals)
        {
            if (terminal.round != m_round && terminal.online)
            {
                terminal.online = false;
                gone.emplace_back(userId, terminal);
            }
        }
        std::erase_if(terminals, [this](const Terminal& terminal) { return terminal.round != m_round; });
        it = terminals.empty() ? m_users.erase(it) : std::next(it);
    }
    m_state = State::Complete;
    m_known = true;
    return gone;
}

void CompanyDirectory::Clear()
{
    const std::lock_guard lock(m_mutex);
    m_users.clear();
    m_state = State::None;
    m_known = false;
}

bool CompanyDirectory::IsSubscribed() const
{
    return m_state != State::None;
}

bool CompanyDirectory::IsComplete() const
{
    return m_state == State::Complete;
}

const CompanyDirectory::Terminal* CompanyDirectory::Apply(const std::string& userId, const std::string& deviceId,
                                                          const PresenceRecord& record, bool retained)
{
    const std::lock_guard lock(m_mutex);
    Terminals& terminals = m_users[userId];
    auto found = std::find_if(terminals.begin(), terminals.end(),
                              [&deviceId](const Terminal& terminal) { return terminal.deviceId == deviceId; });
    bool changed = false;
    if (found == terminals.end())
    {
        Terminal terminal;
        terminal.deviceId = deviceId;
        found = terminals.insert(terminals.end(), std::move(terminal));
        changed = record.online;
    }
    else
    {
        found->round = m_round;
        if (record.epoch < found->epoch)
        {
            return nullptr;
        }
        changed = record.online != found->online ||
                  (record.online && (record.custom != found->custom || record.ext != found->ext));
    }
    found->round = m_round;
    found->epoch = record.epoch;
    found->online = record.online;
    // The record of an offline terminal holds no texts. The last ones stay for its terminal event.
    if (record.online)
    {
        found->custom = record.custom;
        found->ext = record.ext;
    }
    const bool isPartOfFirst = retained && m_state == State::First;
    return changed && !isPartOfFirst ? &*found : nullptr;
}

const CompanyDirectory::Terminals* CompanyDirectory::Find(const std::string& userId) const
{
    const auto found = m_users.find(userId);
    return found != m_users.end() ? &found->second : nullptr;
}

bool CompanyDirectory::IsOnline(const Terminals& terminals)
{
    return std::any_of(terminals.begin(), terminals.end(), [](const Terminal& terminal) { return terminal.online; });
}

void CompanyDirectory::ForEach(const std::function<void(const std::string&, const Terminals&)>& visit) const
{
    for (const auto& [userId, terminals] : m_users)
    {
        visit(userId, terminals);
    }
}

bool CompanyDirectory::IsKnownOffline(const std::string& userId) const
{
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Complete)
    {
        return false;
    }
    const Terminals* terminals = Find(userId);
    return terminals == nullptr || !IsOnline(*terminals);
}

} // namespace platform
