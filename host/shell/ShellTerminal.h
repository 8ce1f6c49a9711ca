#pragma once

#include "host/shell/ShellPresence.h"
#include "onlinehost/Component.h"
#include "onlinehost/Event.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace host
{

class ShellInbox;
struct ShellEvent;

/// One terminal of one user in the shell: its component, and the state that the shell has learned from its
/// notifications.
///
/// Use it on the shell's thread only. Its events go to the inbox on the thread that notifies.
class ShellTerminal
{
public:
    /// An invitation that came in, until it is declined, withdrawn or answered on another terminal.
    struct Received
    {
        uint32_t inviter = 0;
        bool isAccepted = false; ///< stays in the list, because it can still be withdrawn or declined
    };

    /// An invitation that went out, and the answers so far.
    struct Sent
    {
        std::vector<uint32_t> users;
        std::set<uint32_t> accepted{};
        std::set<uint32_t> declined{};
        std::set<uint32_t> offline{};
    };

    /// A meeting that the terminal is in.
    struct Meeting
    {
        std::string name{}; ///< as the user named it
        uint32_t roomId = 0;
        std::string groupId{};
        std::set<uint32_t> others{}; ///< the other users in it
    };

    /// The inbox must outlive the terminal.
    ShellTerminal(const onlinemanager::LoginParam& param, std::unique_ptr<onlinehost::Component> session,
                  ShellInbox& inbox);
    ~ShellTerminal();
    ShellTerminal(const ShellTerminal&) = delete;
    ShellTerminal& operator=(const ShellTerminal&) = delete;

    /// "7@pc", safe to show.
    const std::string& Name() const
    {
        return m_name;
    }

    onlinehost::Component& Online()
    {
        return *m_session;
    }

    /// Updates the state from an event that the shell shows.
    void Note(const onlinehost::Event& event);

    /// [any] What the module knows of users now, in the order of `ids`.
    std::vector<onlinemanager::UserOnlineInfo> Query(const std::vector<unsigned>& ids);

    /// Call it before a login: the next `OnLoginSuccess` then begins a new list of users. `TriggerNotify` sends that
    /// notification again without a login.
    void BeginLogin()
    {
        m_isLoginBegun = true;
    }

    onlinemanager::LoginParam login; ///< parameters of the current or the next login
    bool isLoggedIn = false;
    bool isMeasured = false; ///< the monitoring service wants quality reports
    bool watchesAll = false;
    std::set<uint32_t> watched;
    std::set<uint32_t> known; ///< users that were reported
    std::map<uint32_t, Received> received;
    std::map<uint32_t, Sent> sent;
    std::map<onlinemanager::TunnelType, Meeting> meetings; ///< by the tunnel that carries them

    /// The meeting that the terminal is in; null when it is in none. Of two, the one that the session's tunnel carries.
    const Meeting* Joined() const;

private:
    class Messages;

    /// [any] Makes the shell's event of a notification. Call it inside the notification: it asks the module for the
    /// users that changed, and later they may have changed again.
    ShellEvent Understand(onlinehost::Event event);

    void NoteMember(const onlinehost::Event& event);
    void NoteAnswer(const onlinehost::Event& event);

    const std::string m_name;
    ShellPresence m_presence;
    std::atomic<bool> m_isLoginBegun{false}; ///< the next `OnLoginSuccess` reports a new login
    std::unique_ptr<onlinehost::Component> m_session;
    std::unique_ptr<Messages> m_messages;
};

/// "user 7 online: pc (type 1), phone (type 2, offline)"
std::string DescribeUser(const onlinemanager::UserOnlineInfo& user);

} // namespace host
