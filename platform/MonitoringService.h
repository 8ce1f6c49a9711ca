#pragma once

#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <string>

namespace platform
{

/// The kind of a quality report.
enum class ReportKind
{
    Overview,
    Detail,
    All,
};

/// A report as a terminal sent it.
struct MonitoringReport
{
    std::string userId;
    std::string deviceId;
    std::string json; ///< as given to `IZolMdsClient::SendMdsData`
};

/// The monitoring service: asks terminals for quality reports and collects them.
///
/// [any] Every operation may be called on any thread. A command reaches the terminals that the user has logged in at
/// that time; send it again for a terminal that logs in later.
class MonitoringService
{
public:
    using OnReport = std::function<void(const MonitoringReport&)>;

    /// Serves one company. `onReport` runs on the platform thread. The platform must outlive the service.
    MonitoringService(Platform& platform, const std::string& appId, const std::string& companyId, OnReport onReport);
    /// Waits for an `onReport` under way, unless called from inside it. No `onReport` runs after the destructor.
    ~MonitoringService();

    MonitoringService(const MonitoringService&) = delete;
    MonitoringService& operator=(const MonitoringService&) = delete;

    /// Send the command "subscribe_av_quality" or "unsubscribe_av_quality" with the sub-type of `kind`, for instance
    /// {"message":{"command":"subscribe_av_quality","data":{"subType":"overview"}}}.
    void Subscribe(const std::string& userId, ReportKind kind);
    void Unsubscribe(const std::string& userId, ReportKind kind);

    /// Sends any text as a command, also a text that terminals do not understand.
    void SendCommand(const std::string& userId, const std::string& json);

private:
    class Impl;
    std::shared_ptr<Impl> m_impl;
};

} // namespace platform
