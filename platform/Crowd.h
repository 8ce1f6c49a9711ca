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

/// Who makes up a crowd.
struct CrowdOptions
{
    std::string appId{};
    std::string companyId{};
    uint32_t firstUserId = 1;        ///< the members' ids count up from here
    uint32_t count = 0;              ///< how many there are
    std::string deviceId = "pc";     ///< the terminal of each
    std::string ext = R"({"tt":1})"; ///< its extension text
    std::string custom{};            ///< its custom information
};

/// What a member does with an invitation.
struct CrowdScript
{
    enum class Answer
    {
        Ignore,
        Accept,
        Decline,
    };

    Answer answer = Answer::Ignore;
    std::chrono::milliseconds after{0}; ///< how long it thinks about it
    std::string message;                ///< the JSON text that goes with the answer; empty = the usual one for it
    std::string joinGroupId;            ///< having accepted, it joins this group; empty = none
};

/// Many simulated colleagues at little cost: a member is a presence record in the backplane and a few bytes here, and has no
/// connection of its own. Connections cannot tell it from a real user: it is in their refreshes and terminal events, gets
/// invitations, answers, is in groups, and can vanish without a word.
///
/// Every operation may be called on any thread. User ids outside the crowd are ignored. Operations on members work whether
/// they are online or not unless said otherwise.
class Crowd
{
public:
    /// Everybody is offline at first. The platform has to outlive the crowd.
    Crowd(Platform& platform, const CrowdOptions& options);
    /// Everybody online goes offline. Waits for a callback under way unless called from inside it.
    ~Crowd();

    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    using Progress = std::function<void(size_t done, size_t total)>;

    /// Everybody comes online before the call returns; `progress` is told now and then, on the calling thread, and at the
    /// end.
    void ComeOnline(const Progress& progress = {});
    void ComeOnline(uint32_t userId);
    void GoOffline(const Progress& progress = {});
    void GoOffline(uint32_t userId);
    /// Gone without a word, as the platform learns it: terminal and group membership end, nothing is said about leaving.
    void Vanish(uint32_t userId);

    /// A further terminal of an online member; false when the member is offline or has it already.
    bool AddTerminal(uint32_t userId, const std::string& deviceId, const std::string& ext);
    bool RemoveTerminal(uint32_t userId, const std::string& deviceId);

    /// The custom information of an online member's first terminal.
    void SetCustomInfo(uint32_t userId, const std::string& text);

    /// For everybody without a script of its own.
    void SetScript(const CrowdScript& script);
    void SetScript(uint32_t userId, const CrowdScript& script);

    /// Members that are online join and leave a group; each can be in several.
    void JoinGroup(uint32_t userId, const std::string& groupId);
    void LeaveGroup(uint32_t userId, const std::string& groupId);

    /// An invitation that reached an online member, told before it is answered.
    struct Invitation
    {
        uint32_t userId = 0; ///< the member
        std::string inviterId;
        uint32_t inviteId = 0;
        std::string code;
        std::string message;
    };
    /// Called on the platform thread for each invitation, and for each that is withdrawn; an empty function ends it.
    void SetOnInvited(std::function<void(const Invitation&)> callback);
    void SetOnCanceled(std::function<void(const Invitation&)> callback); ///< code and message are empty

    size_t CountOnline() const;

private:
    class Impl;
    std::shared_ptr<Impl> m_impl;
};

} // namespace platform
