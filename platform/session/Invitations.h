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

/// The tables of the invitations that one connection has sent and received. Every operation may be called on any thread.
///
/// Sent ones stay as long as the user, also across logouts, since answers may be late. Received ones end when they are
/// declined, withdrawn or answered elsewhere, and with the login.
class Invitations
{
public:
    /// An invitation on its way out.
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
    /// Absent when no such invitation was sent; otherwise who is to be told, of `userIds` or, when that is empty, of all.
    std::optional<std::vector<std::string>> FindInvited(uint32_t id, const std::vector<std::string>& userIds) const;
    bool IsInvited(uint32_t id, const std::string& userId) const;

    /// Whether an answer that came in is news: the first of that invitee, or another one from the same session.
    bool TakeAnswer(uint32_t id, const std::string& userId, const std::string& sessionId, bool accept);

    /// False when it is known already.
    bool AddReceived(const std::string& inviterId, uint32_t id, const std::string& replyTopic);
    /// The reply topic when the local user may answer so: an open invitation either way, an accepted one by declining it
    /// after all. A declined one is forgotten.
    std::optional<std::string> Answer(const std::string& inviterId, uint32_t id, bool accept);
    /// Whether it was there.
    bool RemoveReceived(const std::string& inviterId, uint32_t id);

private:
    struct Invitee
    {
        std::string answeredBy; ///< the session that answered; empty = none has
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
