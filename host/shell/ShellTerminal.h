#pragma once

#include "onlinehost/Component.h"
#include "onlinehost/Event.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace host
{

class ShellInbox;

/// One terminal of one user at the shell: its session, and what its notifications have taught so far.
///
/// Belongs to the shell's thread; its events go to the inbox on whatever thread they happen.
class ShellTerminal
{
public:
    /// The inbox must outlive the device.
    ShellTerminal(const onlinemanager::LoginParam& login, std::unique_ptr<onlinehost::Component> session,
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

    /// Learns from an event that is being shown.
    void Note(const onlinehost::Event& event);

    /// What the module knows of users now, in the order of `ids`.
    std::vector<onlinemanager::UserOnlineInfo> Query(const std::vector<unsigned>& ids);

    onlinemanager::LoginParam login; ///< of the next login, or of the one that stands
    bool isLoggedIn = false;
    bool isMeasured = false; ///< somebody wants quality reports
    bool watchesAll = false;
    std::set<uint32_t> watched;
    std::set<uint32_t> known;                       ///< users that were reported
    std::map<uint32_t, uint32_t> received;          ///< open invitations that came in, and who sent them
    std::map<uint32_t, std::vector<uint32_t>> sent; ///< invitations that went out, and to whom
    uint32_t roomId = 0;                            ///< the meeting joined last
    std::string groupId;

private:
    class Messages;

    const std::string m_name;
    std::unique_ptr<onlinehost::Component> m_session;
    std::unique_ptr<Messages> m_messages;
};

/// "user 7 online: pc (type 1), phone (type 2, offline)"
std::string DescribeUser(const onlinemanager::UserOnlineInfo& user);

} // namespace host
