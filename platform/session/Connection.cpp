#include "platform/session/Connection.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform
{

namespace
{

/// Ids become parts of topics, whose length is limited. Escaping may triple the length of an id.
constexpr size_t kLongestId = 4096;

bool AreTexts(std::initializer_list<const char*> texts)
{
    return std::none_of(texts.begin(), texts.end(), [](const char* text) { return text == nullptr; });
}

bool AreIds(std::initializer_list<const char*> ids)
{
    return std::all_of(ids.begin(), ids.end(),
                       [](const char* id)
                       {
                           const size_t length = std::strlen(id);
                           return length != 0 && length <= kLongestId;
                       });
}

/// Leaves out ids that no user can have.
std::vector<std::string> ToIds(const avcore::ZolTextList& texts)
{
    std::vector<std::string> ids;
    for (const avcore::ZolText& text : texts)
    {
        if (AreIds({text.c_str()}))
        {
            ids.emplace_back(text.c_str());
        }
    }
    return ids;
}

} // namespace

Connection::Connection(const std::shared_ptr<Engine>& engine)
    : m_session(std::make_shared<Session>(engine)),
      m_online(*m_session),
      m_tMsg(*m_session),
      m_mdsClient(*m_session)
{
    engine->Register(m_session);
}

HRESULT Connection::QueryInterface(const GUID& iid, void** out)
{
    if (out == nullptr)
    {
        return E_POINTER;
    }
    *out = nullptr;
    if (!(iid == IID_IUnknown) && !(iid == avcore::IID_IZolConnection))
    {
        return E_NOINTERFACE;
    }
    AddRef();
    *out = static_cast<avcore::IZolConnection*>(this);
    return S_OK;
}

uint32_t Connection::AddRef()
{
    return m_references.fetch_add(1, std::memory_order_relaxed) + 1;
}

uint32_t Connection::Release()
{
    const uint32_t left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
    {
        m_session->Abandon();
        delete this;
    }
    return left;
}

HRESULT Connection::AddListener(avcore::IZolConnectionListener* listener)
{
    return m_session->AddListener(listener);
}

HRESULT Connection::RemoveListener(avcore::IZolConnectionListener* listener)
{
    return m_session->RemoveListener(listener);
}

HRESULT Connection::Login(const char* server, avcore::IZolHttp* http, const char* appid, const char* token,
                          const char* deviceid, const char* companyid, const char* userid, const char* mutex,
                          const char* ext, bool force, bool registeruser)
{
    if (!AreTexts({server, appid, token, deviceid, companyid, userid, mutex, ext}))
    {
        return E_POINTER;
    }
    if (!AreIds({server, deviceid, companyid, userid}) || std::strlen(appid) > kLongestId)
    {
        return E_INVALIDARG;
    }
    LoginRequest request;
    request.server = server;
    request.appId = appid;
    request.token = token;
    request.deviceId = deviceid;
    request.companyId = companyid;
    request.userId = userid;
    request.mutex = mutex;
    request.ext = ext;
    request.force = force;
    request.registerUser = registeruser;
    return m_session->Login(std::move(request), http);
}

HRESULT Connection::LoginOldGw(const GUID& guid, const char* userid, uint32_t param32, uint16_t param16,
                               uint64_t param64)
{
    if (userid == nullptr)
    {
        return E_POINTER;
    }
    if (!AreIds({userid}))
    {
        return E_INVALIDARG;
    }
    LoginRequest request;
    request.gateway = true;
    request.deviceId = "gateway";
    request.userId = userid;
    request.token = std::to_string(param32) + '/' + std::to_string(param16) + '/' + std::to_string(param64);
    request.groupId = Platform::MeetingGroupId(guid);
    return m_session->Login(std::move(request), nullptr);
}

HRESULT Connection::Logout()
{
    return m_session->Logout();
}

HRESULT Connection::JoinGroup(const char* groupId)
{
    if (groupId == nullptr)
    {
        return E_POINTER;
    }
    return AreIds({groupId}) ? m_session->JoinGroup(groupId) : E_INVALIDARG;
}

HRESULT Connection::LeaveGroup()
{
    return m_session->LeaveGroup();
}

HRESULT Connection::GetComponent(const IID& iid, void** out)
{
    if (out == nullptr)
    {
        return E_POINTER;
    }
    *out = nullptr;
    if (iid == avcore::IID_IZolOnline)
    {
        *out = static_cast<avcore::IZolOnline*>(&m_online);
    }
    else if (iid == avcore::IID_IZolTMsg)
    {
        *out = static_cast<avcore::IZolTMsg*>(&m_tMsg);
    }
    else if (iid == avcore::IID_IZolMdsClient)
    {
        *out = static_cast<avcore::IZolMdsClient*>(&m_mdsClient);
    }
    return *out != nullptr ? S_OK : E_NOINTERFACE;
}

HRESULT Connection::RequestCPAddress(const char* server, avcore::IZolHttp* http, const char* appid, const char* token,
                                     const char* companyid)
{
    if (!AreTexts({server, appid, token, companyid}))
    {
        return E_POINTER;
    }
    if (!AreIds({server, companyid}))
    {
        return E_INVALIDARG;
    }
    // A listener may release the connection while the request is under way.
    const std::shared_ptr<Session> session = m_session;
    return session->RequestCpAddress(CpRequest{server, appid, token, companyid}, http);
}

HRESULT Connection::Online::AddListener(avcore::IZolOnlineListener* listener)
{
    return m_session.AddListener(listener);
}

HRESULT Connection::Online::RemoveListener(avcore::IZolOnlineListener* listener)
{
    return m_session.RemoveListener(listener);
}

HRESULT Connection::Online::RefreshUsersStatus(const avcore::ZolTextList& ids, unsigned* requestId)
{
    if (requestId == nullptr)
    {
        return E_POINTER;
    }
    if (ids.empty())
    {
        return E_INVALIDARG;
    }
    return m_session.Refresh(ToIds(ids), requestId);
}

HRESULT Connection::Online::RefreshAllUsersStatus(unsigned* requestId)
{
    return requestId == nullptr ? E_POINTER : m_session.Refresh(std::nullopt, requestId);
}

HRESULT Connection::Online::SetUserCustomInfo(const char* text)
{
    return text == nullptr ? E_POINTER : m_session.SetCustomInfo(text);
}

HRESULT Connection::Online::InviteUsers(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results,
                                        const char* code, const char* json, unsigned* inviteId)
{
    if (!AreTexts({code, json}) || inviteId == nullptr)
    {
        return E_POINTER;
    }
    const std::vector<std::string> users = ToIds(ids);
    if (users.empty())
    {
        return E_INVALIDARG;
    }
    return m_session.InviteUsers(users, results, code, json, inviteId);
}

HRESULT Connection::Online::CancelInvite(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results,
                                         unsigned inviteId)
{
    const std::vector<std::string> users = ToIds(ids);
    // Only an empty list means all invitees. A list without a usable id means none.
    if (users.empty() && !ids.empty())
    {
        return E_INVALIDARG;
    }
    return m_session.CancelInvite(users, results, inviteId);
}

HRESULT Connection::Online::AcceptInvite(const char* userId, unsigned inviteId, const char* json)
{
    return AreTexts({userId, json}) ? m_session.AnswerInvite(true, userId, inviteId, json) : E_POINTER;
}

HRESULT Connection::Online::RejectInvite(const char* userId, unsigned inviteId, const char* json)
{
    return AreTexts({userId, json}) ? m_session.AnswerInvite(false, userId, inviteId, json) : E_POINTER;
}

HRESULT Connection::TMsg::AddListener(avcore::IZolTMsgListener* listener)
{
    return m_session.AddListener(listener);
}

HRESULT Connection::TMsg::RemoveListener(avcore::IZolTMsgListener* listener)
{
    return m_session.RemoveListener(listener);
}

HRESULT Connection::MdsClient::AddListener(avcore::IZolMdsClientListener* listener)
{
    return m_session.AddListener(listener);
}

HRESULT Connection::MdsClient::RemoveListener(avcore::IZolMdsClientListener* listener)
{
    return m_session.RemoveListener(listener);
}

HRESULT Connection::MdsClient::SendMdsData(const char* json)
{
    return json == nullptr ? E_POINTER : m_session.SendReport(json);
}

} // namespace platform
