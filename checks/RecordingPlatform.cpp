#include "checks/RecordingPlatform.h"

namespace checks
{

namespace
{

std::string ListOf(const avcore::ZolTextList& texts)
{
    std::string list = "[";
    for (const avcore::ZolText& text : texts)
    {
        list += (list.size() > 1 ? "," : "") + std::string(text.c_str());
    }
    return list + "]";
}

const char* HttpName(const avcore::IZolHttp* http)
{
    return http == nullptr ? "null" : "http";
}

avcore::ZolPortErrCode Code(int code)
{
    return static_cast<avcore::ZolPortErrCode>(code);
}

avcore::ZolUserTerminalInfo RecordOf(const PageTerminal& terminal)
{
    return {terminal.terminal.c_str(), terminal.status, terminal.custom.c_str(), terminal.ext.c_str()};
}

/// A page in the platform's records, which refer to the texts of the page.
struct PageRecords
{
    explicit PageRecords(const Page& page)
    {
        terminals.reserve(page.size());
        for (const PageUser& user : page)
        {
            auto& records = terminals.emplace_back();
            std::transform(user.terminals.begin(), user.terminals.end(), std::back_inserter(records), RecordOf);
            users.push_back(
                {user.hasNullId ? nullptr : user.id.c_str(), static_cast<int32_t>(records.size()), records.data()});
        }
    }

    std::vector<std::vector<avcore::ZolUserTerminalInfo>> terminals;
    WBASELIB::Vector<avcore::ZolUserInfo> users;
};

void FillResults(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results)
{
    for (const avcore::ZolText& id : ids)
    {
        results.push_back({id, "ok"});
    }
}

} // namespace

HRESULT RecordingOnline::AddListener(avcore::IZolOnlineListener* listener)
{
    Record("AddListener(", listeners.Add(listener), ")");
    return Play("AddListener");
}

HRESULT RecordingOnline::RemoveListener(avcore::IZolOnlineListener* listener)
{
    Record("RemoveListener(", listeners.Remove(listener), ")");
    return Play("RemoveListener");
}

HRESULT RecordingOnline::RefreshUsersStatus(const avcore::ZolTextList& ids, unsigned* requestId)
{
    *requestId = NextId(requestIds, m_lastRequestId);
    Record("RefreshUsersStatus(", ListOf(ids), ") -> ", *requestId);
    return Play("RefreshUsersStatus");
}

HRESULT RecordingOnline::RefreshAllUsersStatus(unsigned* requestId)
{
    *requestId = NextId(requestIds, m_lastRequestId);
    Record("RefreshAllUsersStatus() -> ", *requestId);
    return Play("RefreshAllUsersStatus");
}

HRESULT RecordingOnline::SetUserCustomInfo(const char* text)
{
    Record("SetUserCustomInfo(", Quoted(text), ")");
    return Play("SetUserCustomInfo");
}

HRESULT RecordingOnline::InviteUsers(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results, const char* code,
                                     const char* json, unsigned* inviteId)
{
    const unsigned before = *inviteId;
    *inviteId = NextId(inviteIds, m_lastInviteId);
    Record("InviteUsers(", ListOf(ids), ", results=", results.size(), ", code=", Quoted(code), ", ", json,
           ", inviteId=", before, ") -> ", *inviteId);
    FillResults(ids, results);
    if (!inviteResults.empty())
    {
        const HRESULT result = inviteResults.front();
        inviteResults.pop_front();
        return result;
    }
    return Play("InviteUsers");
}

HRESULT RecordingOnline::CancelInvite(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results,
                                      unsigned inviteId)
{
    Record("CancelInvite(", ListOf(ids), ", results=", results.size(), ", ", inviteId, ")");
    FillResults(ids, results);
    return Play("CancelInvite");
}

HRESULT RecordingOnline::AcceptInvite(const char* userId, unsigned inviteId, const char* json)
{
    Record("AcceptInvite(", Quoted(userId), ", ", inviteId, ", ", json, ")");
    return Play("AcceptInvite");
}

HRESULT RecordingOnline::RejectInvite(const char* userId, unsigned inviteId, const char* json)
{
    Record("RejectInvite(", Quoted(userId), ", ", inviteId, ", ", json, ")");
    return Play("RejectInvite");
}

void RecordingOnline::RefreshUserStatusFinished(avcore::ZolPortErrCode code, unsigned requestId, const Page& page,
                                                int pageCount, int pageIndex)
{
    const PageRecords records(page);
    m_sender.Send(listeners, [&](avcore::IZolOnlineListener& listener)
                  { listener.OnRefreshUserStatusFinished(code, requestId, records.users, pageCount, pageIndex); });
}

void RecordingOnline::InviteIncome(const char* userId, unsigned inviteId, const char* code, const char* msg)
{
    m_sender.Send(listeners,
                  [&](avcore::IZolOnlineListener& listener) { listener.OnInviteIncome(userId, inviteId, code, msg); });
}

void RecordingOnline::InviteAccepted(const char* userId, unsigned inviteId, const char* msg)
{
    m_sender.Send(listeners,
                  [&](avcore::IZolOnlineListener& listener) { listener.OnInviteAccepted(userId, inviteId, msg); });
}

void RecordingOnline::InviteRejected(const char* userId, unsigned inviteId, avcore::ZolInviteRejectReason reason,
                                     const char* msg)
{
    m_sender.Send(listeners, [&](avcore::IZolOnlineListener& listener)
                  { listener.OnInviteRejected(userId, inviteId, reason, msg); });
}

void RecordingOnline::InviteCanceled(const char* userId, unsigned inviteId, avcore::ZolInviteCancelReason reason)
{
    m_sender.Send(listeners,
                  [&](avcore::IZolOnlineListener& listener) { listener.OnInviteCanceled(userId, inviteId, reason); });
}

void RecordingOnline::UserTerminalStateChanged(const char* userId, const PageTerminal& terminal)
{
    const avcore::ZolUserTerminalInfo record = RecordOf(terminal);
    m_sender.Send(listeners,
                  [&](avcore::IZolOnlineListener& listener) { listener.OnUserTerminalStateChanged(userId, record); });
}

unsigned RecordingOnline::NextId(std::deque<unsigned>& ids, unsigned& last)
{
    const std::lock_guard guard(m_idMutex);
    if (ids.empty())
    {
        return ++last;
    }
    const unsigned id = ids.front();
    ids.pop_front();
    return id;
}

HRESULT RecordingTMsg::AddListener(avcore::IZolTMsgListener* listener)
{
    Record("AddListener(", listeners.Add(listener), ")");
    return Play("AddListener");
}

HRESULT RecordingTMsg::RemoveListener(avcore::IZolTMsgListener* listener)
{
    Record("RemoveListener(", listeners.Remove(listener), ")");
    return Play("RemoveListener");
}

void RecordingTMsg::UserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg)
{
    m_sender.Send(listeners,
                  [&](avcore::IZolTMsgListener& listener) { listener.OnUserMsgIncome(srcUserId, msgId, msg); });
}

void RecordingTMsg::GroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg)
{
    m_sender.Send(listeners,
                  [&](avcore::IZolTMsgListener& listener) { listener.OnGroupMsgIncome(srcUserId, msgId, msg); });
}

HRESULT RecordingMds::AddListener(avcore::IZolMdsClientListener* listener)
{
    Record("AddListener(", listeners.Add(listener), ")");
    return Play("AddListener");
}

HRESULT RecordingMds::RemoveListener(avcore::IZolMdsClientListener* listener)
{
    Record("RemoveListener(", listeners.Remove(listener), ")");
    return Play("RemoveListener");
}

HRESULT RecordingMds::SendMdsData(const char* json)
{
    Record("SendMdsData(", json, ")");
    return Play("SendMdsData");
}

void RecordingMds::MsgData(const char* msg)
{
    m_sender.Send(listeners, [&](avcore::IZolMdsClientListener& listener) { listener.OnMdsMsgData(msg); });
}

RecordingConnection::RecordingConnection(Journal& journal, Worker& thread, const std::string& number)
    : RecordingUnknown(journal, "connection" + number),
      sender(journal, thread),
      online(journal, sender, "online" + number),
      tmsg(journal, sender, "tmsg" + number),
      mds(journal, sender, "mds" + number)
{
}

HRESULT RecordingConnection::AddListener(avcore::IZolConnectionListener* listener)
{
    Record("AddListener(", listeners.Add(listener), ")");
    return Play("AddListener");
}

HRESULT RecordingConnection::RemoveListener(avcore::IZolConnectionListener* listener)
{
    Record("RemoveListener(", listeners.Remove(listener), ")");
    return Play("RemoveListener");
}

HRESULT RecordingConnection::Login(const char* server, avcore::IZolHttp* usedHttp, const char* appid, const char* token,
                                   const char* deviceid, const char* companyid, const char* userid, const char* mutex,
                                   const char* ext, bool force, bool registeruser)
{
    http = usedHttp;
    Record("Login(", Quoted(server), ", ", HttpName(usedHttp), ", appid=", Quoted(appid), ", token=", Quoted(token),
           ", deviceid=", Quoted(deviceid), ", companyid=", Quoted(companyid), ", userid=", Quoted(userid),
           ", mutex=", Quoted(mutex), ", ext=", Quoted(ext), ", force=", force, ", registeruser=", registeruser, ")");
    return Play("Login");
}

HRESULT RecordingConnection::LoginOldGw(const GUID& guid, const char* userid, uint32_t param32, uint16_t param16,
                                        uint64_t param64)
{
    Record("LoginOldGw(", NameOf(guid), ", ", Quoted(userid), ", ", param32, ", ", param16, ", ", param64, ")");
    return Play("LoginOldGw");
}

HRESULT RecordingConnection::Logout()
{
    Record("Logout()");
    return Play("Logout");
}

HRESULT RecordingConnection::JoinGroup(const char* groupId)
{
    Record("JoinGroup(", Quoted(groupId), ")");
    return Play("JoinGroup");
}

HRESULT RecordingConnection::LeaveGroup()
{
    Record("LeaveGroup()");
    return Play("LeaveGroup");
}

HRESULT RecordingConnection::GetComponent(const IID& iid, void** out)
{
    Record("GetComponent(", NameOf(iid), ")");
    const HRESULT result = Play("GetComponent " + NameOf(iid));
    if (result < 0)
    {
        return result;
    }
    if (handsOutNull)
    {
        *out = nullptr;
    }
    else if (iid == avcore::IID_IZolOnline)
    {
        *out = static_cast<avcore::IZolOnline*>(&online);
    }
    else if (iid == avcore::IID_IZolTMsg)
    {
        *out = static_cast<avcore::IZolTMsg*>(&tmsg);
    }
    else if (iid == avcore::IID_IZolMdsClient)
    {
        *out = static_cast<avcore::IZolMdsClient*>(&mds);
    }
    else
    {
        return E_NOINTERFACE;
    }
    return result;
}

HRESULT RecordingConnection::RequestCPAddress(const char* server, avcore::IZolHttp* usedHttp, const char* appid,
                                              const char* token, const char* companyid)
{
    http = usedHttp;
    Record("RequestCPAddress(", Quoted(server), ", ", HttpName(usedHttp), ", appid=", Quoted(appid),
           ", token=", Quoted(token), ", companyid=", Quoted(companyid), ")");
    return Play("RequestCPAddress");
}

void RecordingConnection::LoginResult(int code, const char* deviceId, const char* customState, const char* extendInfo)
{
    sender.Send(listeners, [&](avcore::IZolConnectionListener& listener)
                { listener.OnLoginResult(Code(code), deviceId, customState, extendInfo); });
}

void RecordingConnection::JoinGroupResult(int code)
{
    sender.Send(listeners, [&](avcore::IZolConnectionListener& listener) { listener.OnJoinGroupResult(Code(code)); });
}

void RecordingConnection::LeaveGroupResult(int code)
{
    sender.Send(listeners, [&](avcore::IZolConnectionListener& listener) { listener.OnLeaveGroupResult(Code(code)); });
}

void RecordingConnection::Logouted(int code)
{
    sender.Send(listeners, [&](avcore::IZolConnectionListener& listener) { listener.OnLogouted(Code(code)); });
}

std::vector<int32_t> RecordingConnection::ReconnectStart()
{
    std::vector<int32_t> answers;
    sender.Send(listeners,
                [&](avcore::IZolConnectionListener& listener) { answers.push_back(listener.OnReconnectStart()); });
    return answers;
}

void RecordingConnection::ReconnectSucess()
{
    sender.Send(listeners, [](avcore::IZolConnectionListener& listener) { listener.OnReconnectSucess(); });
}

void RecordingConnection::ReconnectFail(int code, const char* text)
{
    sender.Send(listeners,
                [&](avcore::IZolConnectionListener& listener) { listener.OnReconnectFail(Code(code), text); });
}

void RecordingConnection::GroupUserJoined(const char* userId)
{
    sender.Send(listeners, [&](avcore::IZolConnectionListener& listener) { listener.OnGroupUserJoined(userId); });
}

void RecordingConnection::GroupUserLeaved(const char* userId)
{
    sender.Send(listeners, [&](avcore::IZolConnectionListener& listener) { listener.OnGroupUserLeaved(userId); });
}

void RecordingConnection::GroupUserSync(const std::vector<std::string>& users)
{
    avcore::ZolTextList list;
    for (const std::string& user : users)
    {
        list.push_back(user.c_str());
    }
    // Media records are opaque and cannot be created here, so the vector is empty; listeners only get a reference to
    // it.
    alignas(void*) const std::byte media[16]{};
    sender.Send(listeners,
                [&](avcore::IZolConnectionListener& listener) {
                    listener.OnGroupUserSync(
                        list, *reinterpret_cast<const WBASELIB::Vector<avcore::ZolMediaInfo>*>(media), true);
                });
}

RecordingConnection& RecordingPlatform::NewConnection()
{
    connections.push_back(
        std::make_unique<RecordingConnection>(m_journal, thread, std::to_string(connections.size() + 1)));
    RecordingConnection& connection = *connections.back();
    if (onNewConnection)
    {
        onNewConnection(connection);
    }
    return connection;
}

} // namespace checks
