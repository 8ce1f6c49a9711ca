#pragma once

#include "avcore/IZolOnline.h"
#include "onlinemanager/IOnlineManager.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IUserOnline.h"

#include <memory>

namespace bench
{

/// The built module, loaded as a host does, with one user logged in on a platform that does nothing. The module's log is
/// off.
class LoadedModule
{
public:
    static constexpr unsigned kSelfUserId = 1;

    /// Throws std::runtime_error when the module cannot be used.
    LoadedModule();
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    onlinemanager::IUserOnline& Users()
    {
        return *m_users;
    }

    /// The module's listener at the platform's online component. A call here is an event of the platform.
    avcore::IZolOnlineListener& Platform();

    /// Logs out and in again.
    void ForgetUsers();

private:
    class Factory;

    void LogIn();

    std::unique_ptr<Factory> m_factory;
    onlinemanager::IOnlineManager* m_manager = nullptr;
    onlinemanager::IPaasOnline* m_session = nullptr;
    onlinemanager::IUserOnline* m_users = nullptr;
};

} // namespace bench
