#pragma once

#include "platform/Platform.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace platform
{

/// The members of a crowd.
struct CrowdOptions
{
    std::string appId{};
    std::string companyId{};
    uint32_t firstUserId = 1;        ///< id of the first member; the others count up from it
    uint32_t count = 0;              ///< number of members
    std::string deviceId = "pc";     ///< device id of each member's terminal
    std::string ext = R"({"tt":1})"; ///< extension text of that terminal
    std::string custom{};            ///< custom information of that terminal
};

/// How a member answers an invitation.
struct CrowdScript
{
    enum class Answer
    {
        Ignore,
        Accept,
        Decline,
    };

    Answer answer = Answer::Accept;
    std::chrono::milliseconds after{0}; ///< delay of the answer, on top of `PlatformOptions::answerDelay`
    std::string message;                ///< JSON text of the answer; empty = the text that the module sends
    std::string joinGroupId;            ///< group that the member joins after it has accepted; empty = none
};

/// Simulated users at little cost: a member is a presence record in the backplane and a few bytes here, and has no
/// connection of its own. Connections see members as they see real users: in refreshes and terminal events, as invitees
/// that answer, and as members of groups.
///
/// [any] Every operation may be called on any thread. Operations ignore user ids outside the crowd. Unless an operation
/// says otherwise, it works for online and offline members.
class Crowd
{
public:
    /// All members are offline at first. The platform must outlive the crowd.
    Crowd(Platform& platform, const CrowdOptions& options);
    /// All members go offline. Waits for a callback under way unless called from inside that callback.
    ~Crowd();

    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    using Progress = std::function<void(size_t done, size_t total)>;

    /// All members come online before the call returns. The call runs `progress` on the calling thread at intervals and
    /// at the end.
    void ComeOnline(const Progress& progress = {});
    void ComeOnline(uint32_t userId);
    void GoOffline(const Progress& progress = {});
    void GoOffline(uint32_t userId);
    /// Takes a member away as a lost connection does: its terminals go offline and its group memberships end, without a
    /// leave.
    void Vanish(uint32_t userId);

    /// Adds a terminal to an online member. False when the member is offline or has this terminal already.
    bool AddTerminal(uint32_t userId, const std::string& deviceId, const std::string& ext);
    bool RemoveTerminal(uint32_t userId, const std::string& deviceId);

    /// Sets the custom information of the first terminal of an online member.
    void SetCustomInfo(uint32_t userId, const std::string& text);

    /// Sets the script of all members without a script of their own. Before the first call they accept at once.
    void SetScript(const CrowdScript& script);
    void SetScript(uint32_t userId, const CrowdScript& script);

    /// Online members join and leave a group. A member may be in several groups.
    void JoinGroup(uint32_t userId, const std::string& groupId);
    void LeaveGroup(uint32_t userId, const std::string& groupId);

    /// An invitation that reached an online member. The callback runs before the member answers.
    struct Invitation
    {
        uint32_t userId = 0; ///< the member
        std::string inviterId;
        uint32_t inviteId = 0;
        std::string code;
        std::string message;
    };
    /// [platform] Runs for each invitation, and for each withdrawn one. An empty function ends the calls.
    void SetOnInvited(std::function<void(const Invitation&)> callback);
    void SetOnCanceled(std::function<void(const Invitation&)> callback); ///< `code` and `message` are empty

    size_t CountOnline() const;

private:
    class Impl;
    std::shared_ptr<Impl> m_impl;
};

} // namespace platform
