#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform
{

/// The invitations that one connection has sent and received. [any] Every operation may be called on any thread.
///
/// Sent invitations stay until another user logs in, also across logouts, because answers may be late. A received
/// invitation ends when it is declined, withdrawn or answered elsewhere, and with the login.
class Invitations
{
public:
    /// An invitation to send.
    struct Outgoing
    {
        uint32_t id;
        std::vector<std::string> userIds;
        std::string code;
        std::string text;
    };

    void BeginLogin(const std::string& userId);
    void EndLogin();

    void AddSent(uint32_t id, const std::vector<std::string>& userIds);
    /// Nothing for an id that was not sent. Otherwise the invitees among `userIds`, or all invitees when that is empty.
    std::optional<std::vector<std::string>> FindInvited(uint32_t id, const std::vector<std::string>& userIds) const;
    bool IsInvited(uint32_t id, const std::string& userId) const;

    /// Whether an answer counts: the first answer of the invitee, or a changed answer from the same session.
    bool TakeAnswer(uint32_t id, const std::string& userId, const std::string& sessionId, bool accept);

    /// False for a known invitation.
    bool AddReceived(const std::string& inviterId, uint32_t id, const std::string& replyTopic);
    /// The reply topic if the local user may give this answer: accept or decline an open invitation, or decline an
    /// accepted one. A declined invitation is removed.
    std::optional<std::string> Answer(const std::string& inviterId, uint32_t id, bool accept);
    /// False for an unknown invitation.
    bool RemoveReceived(const std::string& inviterId, uint32_t id);

private:
    struct Invitee
    {
        std::string answeredBy; ///< the session that answered; empty before the answer
        bool accepted = false;
    };
    struct Received
    {
        std::string replyTopic;
        bool accepted = false;
    };

    mutable std::mutex m_mutex;
    std::string m_userId;
    std::map<uint32_t, std::map<std::string, Invitee>> m_sent;
    std::map<std::pair<std::string, uint32_t>, Received> m_received;
};

} // namespace platform
