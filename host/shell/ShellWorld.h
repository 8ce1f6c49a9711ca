#pragma once

#include "host/shell/ShellTerminal.h"
#include "onlinehost/ComponentFactory.h"
#include "onlinehost/LogCenter.h"
#include "onlinehost/LogWatch.h"
#include "onlinehost/Module.h"
#include "platform/Crowd.h"
#include "platform/MonitoringService.h"
#include "platform/Platform.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace host
{

class ShellInbox;
class Trace;

/// What the shell stands on: the platform and the people on it, the module, and the terminals of the person at the shell.
class ShellWorld
{
public:
    struct Options
    {
        std::string module;              ///< empty: where the program finds it
        onlinemanager::LoginParam login; ///< what terminals begin with; without a mutual-exclusion tag it is the device
        std::string caFile;
        std::chrono::milliseconds timeLimit{10'000};
    };

    /// What is handed over must outlive the world; `trace` is null when nothing is recorded. `Error` when something cannot
    /// be made.
    ShellWorld(const Options& options, ShellInbox& inbox, onlinehost::LogCenter& log, Trace* trace);

    const Options& Settings() const
    {
        return m_options;
    }

    platform::Platform& Platform()
    {
        return m_platform;
    }

    onlinehost::LogCenter& Log()
    {
        return m_log;
    }

    /// The user's terminal, which is made when there is none yet; with an empty device the user's first one.
    ShellTerminal& Device(uint32_t userId, const std::string& device);

    const std::vector<std::unique_ptr<ShellTerminal>>& Devices() const
    {
        return m_devices;
    }

    /// Sends the present company home; the new one is still offline. `ShellFailure` when the ids run out.
    void SetCompany(const platform::CrowdOptions& options);

    /// Null when there is none.
    platform::Crowd* Company()
    {
        return m_company.get();
    }

    const platform::CrowdOptions& CompanySettings() const
    {
        return m_companySettings;
    }

    platform::MonitoringService& Monitoring();

    /// The newest line of the module's log that tells a failure, and forgets it.
    std::string TakeFailure();

private:
    void NoteLogLine(std::string_view line);

    const Options m_options;
    ShellInbox& m_inbox;
    std::mutex m_failureMutex;
    std::string m_failure;
    onlinehost::LogCenter& m_log;
    Trace* const m_trace;
    platform::Platform m_platform;
    onlinehost::ComponentFactory m_factory{std::bind_front(&platform::Platform::CreateComponent, &m_platform), m_log};
    std::shared_ptr<onlinehost::Module> m_module;
    onlinehost::LogWatch m_logWatch;
    std::unique_ptr<platform::MonitoringService> m_monitoring;
    platform::CrowdOptions m_companySettings;
    std::unique_ptr<platform::Crowd> m_company;
    std::vector<std::unique_ptr<ShellTerminal>> m_devices;
};

} // namespace host
