#include "bench/LoadedModule.h"

#include "avcore/IZolConnection.h"
#include "common/frameworksdk/frameworkcomponent.h"

#include <dlfcn.h>
#include <stdexcept>
#include <vector>

namespace bench
{

namespace
{

constexpr unsigned kInviteIds =
    1U << 16; // used again and again, so that the module's table of invitations does not grow

/// An object with a reference count that never frees it.
template <typename Interface>
class Lent : public Interface
{
public:
    HRESULT QueryInterface(const GUID& /*iid*/, void** out) override
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    uint32_t AddRef() override
    {
        return 1;
    }
    uint32_t Release() override
    {
        return 1;
    }
};

/// Accepts every operation and sends no event.
class IdleOnline final : public avcore::IZolOnline
{
public:
    void Reserved0() override {}
    void Reserved5() override {}

    HRESULT AddListener(avcore::IZolOnlineListener* added) override
    {
        listener = added;
        return S_OK;
    }
    HRESULT RemoveListener(avcore::IZolOnlineListener* /*removed*/) override
    {
        listener = nullptr;
        return S_OK;
    }
    HRESULT RefreshUsersStatus(const avcore::ZolTextList& /*ids*/, unsigned* requestId) override
    {
        *requestId = 1;
        return S_OK;
    }
    HRESULT RefreshAllUsersStatus(unsigned* requestId) override
    {
        *requestId = 1;
        return S_OK;
    }
    HRESULT SetUserCustomInfo(const char* /*text*/) override
    {
        return S_OK;
    }
    HRESULT InviteUsers(const avcore::ZolTextList& /*ids*/, avcore::ZolTextPairList& /*results*/, const char* /*code*/,
                        const char* /*json*/, unsigned* inviteId) override
    {
        m_lastInviteId = m_lastInviteId % kInviteIds + 1;
        *inviteId = m_lastInviteId;
        return S_OK;
    }
    HRESULT CancelInvite(const avcore::ZolTextList& /*ids*/, avcore::ZolTextPairList& /*results*/,
                         unsigned /*inviteId*/) override
    {
        return S_OK;
    }
    HRESULT AcceptInvite(const char* /*userId*/, unsigned /*inviteId*/, const char* /*json*/) override
    {
        return S_OK;
    }
    HRESULT RejectInvite(const char* /*userId*/, unsigned /*inviteId*/, const char* /*json*/) override
    {
        return S_OK;
    }

    avcore::IZolOnlineListener* listener = nullptr;

private:
    unsigned m_lastInviteId = 0;
};

/// Answers a login or logout when `Answer` is called, and sends no other event.
class IdleConnection final : public Lent<avcore::IZolConnection>
{
public:
    HRESULT AddListener(avcore::IZolConnectionListener* listener) override
    {
        m_listeners.push_back(listener);
        return S_OK;
    }
    HRESULT RemoveListener(avcore::IZolConnectionListener* listener) override
    {
        std::erase(m_listeners, listener);
        return S_OK;
    }
    HRESULT Login(const char* /*server*/, avcore::IZolHttp* /*http*/, const char* /*appid*/, const char* /*token*/,
                  const char* /*deviceid*/, const char* /*companyid*/, const char* /*userid*/, const char* /*mutex*/,
                  const char* /*ext*/, bool /*force*/, bool /*registeruser*/) override
    {
        return S_OK;
    }
    HRESULT LoginOldGw(const GUID& /*guid*/, const char* /*userid*/, uint32_t /*param32*/, uint16_t /*param16*/,
                       uint64_t /*param64*/) override
    {
        return E_FAIL;
    }
    HRESULT Logout() override
    {
        return S_OK;
    }
    HRESULT JoinGroup(const char* /*groupId*/) override
    {
        return E_FAIL;
    }
    HRESULT LeaveGroup() override
    {
        return E_FAIL;
    }
    HRESULT GetComponent(const IID& iid, void** out) override
    {
        *out = iid == avcore::IID_IZolOnline ? static_cast<avcore::IZolOnline*>(&online) : nullptr;
        return *out != nullptr ? S_OK : E_NOINTERFACE;
    }
    HRESULT RequestCPAddress(const char* /*server*/, avcore::IZolHttp* /*http*/, const char* /*appid*/,
                             const char* /*token*/, const char* /*companyid*/) override
    {
        return E_FAIL;
    }

    void LoginSucceeded()
    {
        for (avcore::IZolConnectionListener* const listener : m_listeners)
        {
            listener->OnLoginResult(avcore::ZOL_PORT_SUCCESS, "", "", "");
        }
    }

    void LoggedOut()
    {
        for (avcore::IZolConnectionListener* const listener : m_listeners)
        {
            listener->OnLogouted(avcore::ZOL_PORT_SUCCESS);
        }
    }

    IdleOnline online;

private:
    std::vector<avcore::IZolConnectionListener*> m_listeners;
};

/// The module's table of functions. The module stays loaded, because it keeps nothing from one component to the next.
const FMDllTable& Functions()
{
    static const FMDllTable table = []
    {
        void* const library = dlopen(BENCH_MODULE, RTLD_NOW | RTLD_LOCAL);
        const auto entry = library != nullptr ? reinterpret_cast<LPFNFMDll>(dlsym(library, "FMDll")) : nullptr;
        FMDllTable filled{};
        filled.m_Size = sizeof(filled);
        if (entry == nullptr || entry(&filled) != S_OK)
        {
            throw std::runtime_error("cannot load " BENCH_MODULE);
        }
        return filled;
    }();
    return table;
}

} // namespace

class LoadedModule::Factory final : public Lent<IComponentFactory>
{
public:
    HRESULT CreateComponent(const CLSID& /*clsid*/, const IID& /*iid*/, IUnknown* /*outer*/, void** out) override
    {
        // The first connection that the component asks for is the session's, the second the gateway's.
        IdleConnection& connection = m_made == 0 ? session : m_gateway;
        ++m_made;
        *out = static_cast<avcore::IZolConnection*>(&connection);
        return S_OK;
    }

    IdleConnection session;

private:
    IdleConnection m_gateway;
    int m_made = 0;
};

LoadedModule::LoadedModule() : m_factory(std::make_unique<Factory>())
{
    void* created = nullptr;
    Functions().m_lpfnCreateComponent(onlinemanager::CLSID_OnlineManager, onlinemanager::IID_OnlineManager, nullptr,
                                      m_factory.get(), &created);
    m_manager = static_cast<onlinemanager::IOnlineManager*>(created);
    if (m_manager == nullptr || m_manager->Initialize(nullptr) != S_OK)
    {
        throw std::runtime_error("the module made no component");
    }
    m_manager->GetPaasOnline(&m_session);
    LogIn();
    m_session->GetUserOnline(&m_users);
}

LoadedModule::~LoadedModule()
{
    m_manager->Destroy();
    m_manager->Release();
}

avcore::IZolOnlineListener& LoadedModule::Platform()
{
    return *m_factory->session.online.listener;
}

void LoadedModule::LogIn()
{
    onlinemanager::LoginParam param;
    param.userid = kSelfUserId;
    param.server = "tcp:idle";
    if (!m_session->Login(param, false))
    {
        throw std::runtime_error("the module refused a login");
    }
    m_factory->session.LoginSucceeded();
}

void LoadedModule::ForgetUsers()
{
    m_session->Logout();
    m_factory->session.LoggedOut();
    LogIn();
}

} // namespace bench
