#pragma once

#include "host/shell/ShellReason.h"
#include "host/shell/ShellTerminal.h"
#include "host/trace/Trace.h"
#include "onlinehost/ComponentFactory.h"
#include "onlinehost/LogCenter.h"
#include "onlinehost/LogWatch.h"
#include "onlinehost/Module.h"
#include "platform/Crowd.h"
#include "platform/MonitoringService.h"
#include "platform/Platform.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace host
{

class ShellInbox;

/// The objects of a shell: the platform with its simulated users, the module, and the terminals of the shell's user.
class ShellWorld
{
public:
    struct Options
    {
        std::string module; ///< file of the module; empty = where `FindModule` finds it
        onlinemanager::LoginParam
            login; ///< initial values of terminals; an empty mutual-exclusion tag becomes the device
        std::string caFile;
        std::chrono::milliseconds timeLimit{10'000};
        platform::PlatformOptions platform{};
        /// Throws `Error` when a recording would overwrite a file that the program uses; empty for no check.
        std::function<void(const Trace::Options&)> checkTrace{};
    };

    /// The arguments must outlive the world. `trace` records all terminals from the beginning; it may be null. `Error`
    /// when the module cannot be loaded.
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

    /// The user's terminal with this device, or with an empty device the user's first one. Makes it when there is none.
    ShellTerminal& Terminal(uint32_t userId, const std::string& device);

    const std::vector<std::unique_ptr<ShellTerminal>>& Terminals() const
    {
        return m_terminals;
    }

    /// The terminal that `Device` would return, or null when it would have to make one.
    ShellTerminal* FindTerminal(uint32_t userId, const std::string& device) const;

    /// Destroys the terminal with its component.
    void Forget(const ShellTerminal& device);

    /// Records the terminals that are made from now on. `ShellFailure` when a recording is under way already, `Error`
    /// when a file cannot be written or `Options::checkTrace` refuses the files.
    void StartTrace(const Trace::Options& options);

    /// Completes the files of `StartTrace` and returns them; nothing is recorded any more. `ShellFailure` when
    /// `StartTrace` records nothing, `Error` when the files could not be written.
    std::vector<std::filesystem::path> StopTrace();

    /// Whether a recording of `StartTrace` is under way.
    bool IsOwnTraceRunning() const;

    /// Takes the current company offline and replaces it by a new one, which is still offline. A count of 0 leaves no
    /// company. `ShellFailure` when the user ids exceed the largest one. If `progress` throws, the current company
    /// stays, and some of its members are offline.
    void SetCompany(const platform::CrowdOptions& options, const platform::Crowd::Progress& progress);

    /// The simulated colleagues; null when there are none.
    platform::Crowd* Company()
    {
        return m_company.get();
    }

    const platform::CrowdOptions& CompanySettings() const
    {
        return m_companySettings;
    }

    platform::MonitoringService& Monitoring();

    /// Why the module refused the operation that was called last on the shell's thread; see `ShellReason::Take`.
    std::string TakeFailure()
    {
        return m_reason.Take();
    }

private:
    const Options m_options;
    ShellInbox& m_inbox;
    ShellReason m_reason;
    onlinehost::LogCenter& m_log;
    Trace* m_trace; ///< records new terminals; may be null
    platform::Platform m_platform;
    onlinehost::ComponentFactory m_factory{std::bind_front(&platform::Platform::CreateComponent, &m_platform), m_log};
    std::shared_ptr<onlinehost::Module> m_module;
    onlinehost::LogWatch m_logWatch;
    std::unique_ptr<platform::MonitoringService> m_monitoring;
    platform::CrowdOptions m_companySettings;
    std::unique_ptr<platform::Crowd> m_company;
    std::vector<std::filesystem::path> m_traceFiles; ///< of the last `StartTrace`
    std::vector<std::unique_ptr<Trace>> m_ownTraces; ///< each stays as long as the terminals that it recorded
    std::vector<std::unique_ptr<ShellTerminal>> m_terminals;
};

} // namespace host
