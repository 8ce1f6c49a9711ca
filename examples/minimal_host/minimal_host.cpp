// A complete host: opens the module, logs one user in on the in-process platform, prints the result, and ends.
#include "common/frameworksdk/frameworkcomponent.h"
#include "onlinemanager/IOnlineManager.h"
#include "onlinemanager/IPaasOnline.h"
#include "platform/Platform.h"

#include <cstdio>
#include <dlfcn.h>
#include <future>

namespace
{

// Creates the platform connections for the component. It offers no log center, so the module writes no log.
class Factory : public IComponentFactory
{
public:
    HRESULT QueryInterface(const GUID& /*iid*/, void** out) override
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }

    uint32_t AddRef() override
    {
        return 1; // lives in main, longer than the component
    }

    uint32_t Release() override
    {
        return 1;
    }

    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) override
    {
        return m_platform.CreateComponent(clsid, iid, outer, out);
    }

private:
    platform::Platform m_platform;
};

// Receives the result of the login, on the platform's thread.
class Listener : public onlinemanager::IPaasOnlineNotify
{
public:
    void OnLoginSuccess() override
    {
        m_result.set_value(0);
    }

    void OnOffline(onlinemanager::ErrCode code) override
    {
        m_result.set_value(code);
    }

    int WaitForResult()
    {
        const int result = m_result.get_future().get();
        m_result = {};
        return result;
    }

private:
    std::promise<int> m_result;
};

} // namespace

int main(int argc, char** argv)
{
    void* const module = dlopen(argc > 1 ? argv[1] : ONLINE_MODULE, RTLD_NOW | RTLD_LOCAL);
    const auto fmdll = module != nullptr ? reinterpret_cast<LPFNFMDll>(dlsym(module, "FMDll")) : nullptr;
    FMDllTable table{};
    table.m_Size = sizeof(table);
    if (fmdll == nullptr || fmdll(&table) != S_OK)
    {
        const char* const reason = dlerror();
        std::fprintf(stderr, "cannot use the module: %s\n", reason != nullptr ? reason : "FMDll failed");
        return 1;
    }

    Factory factory;
    Listener listener;
    factory.AddRef(); // the component takes this reference over
    void* created = nullptr;
    if (table.m_lpfnCreateComponent(onlinemanager::CLSID_OnlineManager, onlinemanager::IID_OnlineManager, nullptr,
                                    &factory, &created) != S_OK)
    {
        std::fprintf(stderr, "the module did not create the component\n");
        return 1;
    }
    auto* const manager = static_cast<onlinemanager::IOnlineManager*>(created);
    onlinemanager::IPaasOnline* session = nullptr;
    // No HTTP object is needed: the server below is no HTTP or HTTPS address.
    if (manager->Initialize(nullptr) != S_OK || manager->GetPaasOnline(&session) != S_OK || session == nullptr)
    {
        std::fprintf(stderr, "the component has no session\n");
        return 1;
    }
    session->AddNotify(&listener);

    onlinemanager::LoginParam param;
    param.userid = 52011;
    param.companyid = 1001;
    param.deviceid = "desk";
    param.appid = "example";
    param.token = "secret";
    param.mutex = "pc";
    param.server = "tcp:in-process";
    const int login = session->Login(param, false) ? listener.WaitForResult() : -1;
    std::printf("login of %u: %d\n", param.userid, login);
    if (login == 0 && session->Logout())
    {
        std::printf("logout: %d\n", listener.WaitForResult());
    }

    session->RemoveNotify(&listener);
    manager->Destroy(); // `session` is invalid from here on
    manager->Release();
    const bool unload = table.m_lpfnCanUnloadNow() == 0 && dlclose(module) == 0;
    std::printf("module unloaded: %s\n", unload ? "yes" : "no");
    return login == 0 && unload ? 0 : 1;
}
