#include "platform/session/Invitations.h"

namespace platform
{

void Invitations::BeginLogin(const std::string& userId)
{
    const std::lock_guard lock(m_mutex);
    m_received.clear();
    if (m_userId != userId)
    {
        m_sent.clear();
        m_userId = userId;
    }
}

void Invitations::EndLogin()
{
    const std::lock_guard lock(m_mutex);
    m_received.clear();
}

void Invitations::AddSent(uint32_t id, const std::vector<std::string>& userIds)
{
    const std::lock_guard lock(m_mutex);
    auto& invitees = m_sent[id];
    for (const std::string& userId : userIds)
    {
        invitees.emplace(userId, Invitee());
    }
}

std::optional<std::vector<std::string>> Invitations::FindInvited(uint32_t id,
                                                                 const std::vector<std::string>& userIds) const
{
    const std::lock_guard lock(m_mutex);
    const auto sent = m_sent.find(id);
    if (sent == m_sent.end())
    {
        return std::nullopt;
    }
    if (!userIds.empty())
    {
        return userIds;
    }
    std::vector<std::string> all;
    for (const auto& [userId, invitee] : sent->second)
    {
        all.push_back(userId);
    }
    return all;
}

bool Invitations::IsInvited(uint32_t id, const std::string& userId) const
{
    const std::lock_guard lock(m_mutex);
    const auto sent = m_sent.find(id);
    return sent != m_sent.end() && sent->second.contains(userId);
}

bool Invitations::TakeAnswer(uint32_t id, const std::string& userId, const std::string& sessionId, bool accept)
{
    const std::lock_guard lock(m_mutex);
    const auto sent = m_sent.find(id);
    if (sent == m_sent.end())
    {
        return false;
    }
    const auto found = sent->second.find(userId);
    if (found == sent->second.end())
    {
        return false;
    }
    Invitee& invitee = found->second;
    const bool isFirst = invitee.answeredBy.empty();
    const bool isChange = invitee.answeredBy == sessionId && invitee.accepted && !accept;
    if (!isFirst && !isChange)
    {
        return false;
    }
    invitee.answeredBy = sessionId;
    invitee.accepted = accept;
    return true;
}

bool Invitations::AddReceived(const std::string& inviterId, uint32_t id, const std::string& replyTopic)
{
    const std::lock_guard lock(m_mutex);
    return m_received.emplace(std::pair(inviterId, id), Received{replyTopic, false}).second;
}

std::optional<std::string> Invitations::Answer(const std::string& inviterId, uint32_t id, bool accept)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_received.find({inviterId, id});
    if (found == m_received.end() || (accept && found->second.accepted))
    {
        return std::nullopt;
    }
    std::string replyTopic = found->second.replyTopic;
    if (accept)
    {
        found->second.accepted = true;
    }
    else
    {
        m_received.erase(found);
    }
    return replyTopic;
}

bool Invitations::RemoveReceived(const std::string& inviterId, uint32_t id)
{
    const std::lock_guard lock(m_mutex);
    return m_received.erase({inviterId, id}) != 0;
}

} // namespace platform
