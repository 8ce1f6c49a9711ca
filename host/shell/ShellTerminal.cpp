#include "host/shell/ShellTerminal.h"

#include "avcore/IZolConnection.h"
#include "avcore/IZolTMsg.h"
#include "host/shell/ShellInbox.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <charconv>
#include <cstring>
#include <utility>

namespace host
{

using namespace onlinehost;

using namespace onlinemanager;

/// Listens for messages on the platform connection that the module shares with the host, because the module itself only
/// logs messages.
class ShellTerminal::Messages final : public avcore::IZolTMsgListener
{
public:
    Messages(Component& session, std::string terminal, ShellInbox& inbox)
        : m_terminal(std::move(terminal)),
          m_inbox(inbox)
    {
        session.Tunnel(TUNNEL_TYPE_PAAS);
        IUnknown* shared = nullptr;
        void* connection = nullptr;
        session.Manager().GetZolConnectionForAVMP(&shared);
        if (shared == nullptr || shared->QueryInterface(avcore::IID_IZolConnection, &connection) < 0)
        {
            throw Error("the component shares no connection");
        }
        m_connection = static_cast<avcore::IZolConnection*>(connection);
        void* channel = nullptr;
        if (m_connection->GetComponent(avcore::IID_IZolTMsg, &channel) < 0 || channel == nullptr)
        {
            m_connection->Release();
            throw Error("the platform has no messages");
        }
        m_channel = static_cast<avcore::IZolTMsg*>(channel);
        m_channel->AddListener(this);
    }

    ~Messages()
    {
        m_channel->RemoveListener(this);
        m_connection->Release();
    }

    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    void OnUserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override
    {
        Tell(srcUserId, msgId, msg, "");
    }

    void OnGroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override
    {
        Tell(srcUserId, msgId, msg, ", sent to the meeting");
    }

private:
    void Tell(const char* from, unsigned int id, const char* text, const char* where)
    {
        ShellEvent event{.source = m_terminal,
                         .name = kMessageEvent,
                         .text = "gets message " + std::to_string(id) + " from user " + Printable(from) + where + ": " +
                                 Printable(text),
                         .content = text};
        std::from_chars(from, from + std::strlen(from), event.event.userId);
        m_inbox.Push(std::move(event));
    }

    const std::string m_terminal;
    ShellInbox& m_inbox;
    avcore::IZolConnection* m_connection = nullptr;
    avcore::IZolTMsg* m_channel = nullptr;
};

ShellTerminal::ShellTerminal(const LoginParam& param, std::unique_ptr<Component> session, ShellInbox& inbox)
    : login(param),
      m_name(std::to_string(param.userid) + "@" + Printable(param.deviceid)),
      m_session(std::move(session))
{
    m_session->Events().SetOnPush(
        [this, &inbox, &events = m_session->Events()]
        {
            if (std::optional<Event> event = events.Take(std::chrono::milliseconds(0)))
            {
                inbox.Push(Understand(std::move(*event)));
            }
        });
    m_messages = std::make_unique<Messages>(*m_session, m_name, inbox);
}

ShellTerminal::~ShellTerminal() = default;

ShellEvent ShellTerminal::Understand(Event event)
{
    std::vector<UserChange> changes;
    if (event.kind == EventKind::UserStatusChanged)
    {
        changes = m_presence.Learn(Query(event.userIds));
    }
    else if (event.kind == EventKind::LoginSuccess && m_isLoginBegun.exchange(false))
    {
        m_presence.Forget();
    }
    ShellEvent understood = MakeShellEvent(m_name, std::move(event));
    understood.changes = std::move(changes);
    return understood;
}

const ShellTerminal::Meeting* ShellTerminal::Joined() const
{
    return meetings.empty() ? nullptr : &meetings.begin()->second;
}

void ShellTerminal::Note(const Event& event)
{
    switch (event.kind)
    {
    case EventKind::LoginSuccess:
        isLoggedIn = true;
        break;
    case EventKind::Offline:
        isLoggedIn = false;
        known.clear();
        received.clear();
        meetings.erase(TUNNEL_TYPE_PAAS);
        break;
    case EventKind::ReconnectSucess:
        isLoggedIn = isLoggedIn || event.tunnel == TUNNEL_TYPE_PAAS;
        break;
    case EventKind::ReconnectFail:
        meetings.erase(event.tunnel);
        if (event.tunnel == TUNNEL_TYPE_PAAS)
        {
            isLoggedIn = false;
            received.clear();
        }
        break;
    case EventKind::JoinMeetingResult:
        if (event.code == ERR_SUCCESS)
        {
            meetings[event.tunnel] = {};
        }
        break;
    case EventKind::LeaveMeetingResult:
        meetings.erase(event.tunnel);
        break;
    case EventKind::UserJoined:
    case EventKind::UserLeaved:
        NoteMember(event);
        break;
    case EventKind::UserStatusChanged:
        known.insert(event.userIds.begin(), event.userIds.end());
        known.erase(0); // the module reports 0 for an id that is not a number
        break;
    case EventKind::InviteIncome:
        received.insert_or_assign(event.requestId, Received{event.userId});
        break;
    case EventKind::InviteAccepted:
    case EventKind::InviteRejected:
        NoteAnswer(event);
        break;
    case EventKind::InviteAbandoned:
        received.erase(event.requestId);
        break;
    case EventKind::AVQualitySubscribed:
        isMeasured = true;
        break;
    case EventKind::AVQualityUnsubscribed:
        isMeasured = false;
        break;
    default:
        break;
    }
}

void ShellTerminal::NoteMember(const Event& event)
{
    const auto meeting = meetings.find(event.tunnel);
    if (meeting == meetings.end())
    {
        return;
    }
    if (event.kind == EventKind::UserJoined)
    {
        meeting->second.others.insert(event.userId);
    }
    else
    {
        meeting->second.others.erase(event.userId);
    }
}

void ShellTerminal::NoteAnswer(const Event& event)
{
    const auto found = sent.find(event.requestId);
    if (found == sent.end())
    {
        return;
    }
    Sent& invitation = found->second;
    // An invitee that accepted can still decline.
    invitation.accepted.erase(event.userId);
    std::set<uint32_t>& answers = event.kind == EventKind::InviteAccepted             ? invitation.accepted
                                  : event.reason == avcore::ZOL_INVITE_REJECT_OFFLINE ? invitation.offline
                                                                                      : invitation.declined;
    answers.insert(event.userId);
}

std::vector<UserOnlineInfo> ShellTerminal::Query(const std::vector<unsigned>& ids)
{
    std::vector<UserOnlineInfo> users;
    if (ids.empty())
    {
        return users;
    }
    users.reserve(ids.size());
    m_session->Users().QueryUserStatus(ids, [&users](const UserOnlineInfo& user) { users.push_back(user); });
    return users;
}

std::string DescribeUser(const UserOnlineInfo& user)
{
    std::string text = "user " + std::to_string(user.user_id);
    if (user.terminals.empty())
    {
        return text + " unknown";
    }
    text += user.online_status == 1 ? " online:" : " offline:";
    for (const UserTerminalInfo& terminal : user.terminals)
    {
        text += &terminal == &user.terminals.front() ? " " : ", ";
        text += Printable(terminal.terminal) + " (type " + std::to_string(terminal.terminal_type);
        text += terminal.status == 1   ? ""
                : terminal.status == 0 ? ", offline"
                                       : ", status " + std::to_string(terminal.status);
        text += terminal.custom.empty() ? "" : ", \"" + Printable(terminal.custom) + "\"";
        text += ")";
    }
    return text;
}

} // namespace host
