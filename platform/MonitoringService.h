#pragma once

#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <string>

namespace platform
{

/// Which quality reports are meant.
enum class ReportKind
{
    Overview,
    Detail,
    All,
};

/// A report as it came from a terminal.
struct MonitoringReport
{
    std::string userId;
    std::string deviceId;
    std::string json; ///< as given to `IZolMdsClient::SendMdsData`
};

/// The service that asks terminals for quality reports and collects them.
///
/// A command reaches the terminals that a user has logged in at that time; one that logs in later has to be asked again.
/// Every operation may be called on any thread.
class MonitoringService
{
public:
    using OnReport = std::function<void(const MonitoringReport&)>;

    /// Serves one company. `onReport` runs on the platform thread. The platform has to outlive the service.
    MonitoringService(Platform& platform, const std::string& appId, const std::string& companyId, OnReport onReport);
    /// When it returns no `onReport` is running and none will come, unless it is called from inside one.
    ~MonitoringService();

    MonitoringService(const MonitoringService&) = delete;
    MonitoringService& operator=(const MonitoringService&) = delete;

    /// {"message":{"command":"subscribe_av_quality","data":{"subType":"overview"}}} and its like.
    void Subscribe(const std::string& userId, ReportKind kind);
    void Unsubscribe(const std::string& userId, ReportKind kind);

    /// Any text as a command, also one that no terminal understands.
    void SendCommand(const std::string& userId, const std::string& json);

private:
    class Impl;
    std::shared_ptr<Impl> m_impl;
};

} // namespace platform
