#include "host/shell/ShellWorld.h"
#include "host/trace/RecordComponent.h"

#include "host/console/ModulePath.h"
#include "host/shell/ShellFailure.h"
#include "host/shell/ShellInbox.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace host
{

using namespace onlinehost;

namespace
{

ShellEvent Notice(std::string_view text)
{
    return {.source = "platform", .name = kNoticeEvent, .text = Printable(text)};
}

} // namespace

ShellWorld::ShellWorld(const Options& options, ShellInbox& inbox, LogCenter& log, Trace* trace)
    : m_options(options),
      m_inbox(inbox),
      m_log(log),
      m_trace(trace),
      m_platform(options.platform),
      m_module(std::make_shared<Module>(FindModule(options.module))),
      m_logWatch(m_log, kModuleLogger, [this](std::string_view line) { m_reason.Note(line); })
{
    m_platform.SetDiagnostic([&inbox](std::string_view text) { inbox.Push(Notice(text)); });
}

ShellTerminal* ShellWorld::FindTerminal(uint32_t userId, const std::string& device) const
{
    const auto found =
        std::find_if(m_terminals.begin(), m_terminals.end(),
                     [&](const auto& known)
                     { return known->login.userid == userId && (device.empty() || known->login.deviceid == device); });
    return found == m_terminals.end() ? nullptr : found->get();
}

ShellTerminal& ShellWorld::Terminal(uint32_t userId, const std::string& device)
{
    if (ShellTerminal* const found = FindTerminal(userId, device))
    {
        return *found;
    }
    onlinemanager::LoginParam login = m_options.login;
    login.userid = userId;
    login.deviceid = device.empty() ? login.deviceid : device;
    login.mutex = login.mutex.empty() ? login.deviceid : login.mutex;

    HttpClient::Options http;
    http.caFile = m_options.caFile;
    http.timeLimit = m_options.timeLimit;
    http.onFailure = [&inbox = m_inbox](const std::string& text) { inbox.Push(Notice(text)); };
    const std::string name = std::to_string(userId) + "@" + Printable(login.deviceid);
    auto session = std::make_unique<Component>(m_module, m_factory, std::move(http), RecordComponent(m_trace, name));
    return *m_terminals.emplace_back(std::make_unique<ShellTerminal>(login, std::move(session), m_inbox));
}

void ShellWorld::Forget(const ShellTerminal& device)
{
    std::erase_if(m_terminals, [&device](const auto& known) { return known.get() == &device; });
}

void ShellWorld::StartTrace(const Trace::Options& options)
{
    if (m_trace != nullptr)
    {
        throw ShellFailure(EXIT_REFUSED,
                           std::string("a recording is running already; ") +
                               (IsOwnTraceRunning() ? "\"trace off\" ends it"
                                                    : "--trace or --diagram started it, and it ends with the shell"));
    }
    if (m_options.checkTrace)
    {
        m_options.checkTrace(options);
    }
    m_trace = m_ownTraces.emplace_back(std::make_unique<Trace>(options)).get();
    m_traceFiles = {options.file, options.diagram};
    std::erase(m_traceFiles, std::filesystem::path());
}

std::vector<std::filesystem::path> ShellWorld::StopTrace()
{
    if (m_trace == nullptr)
    {
        throw ShellFailure(EXIT_REFUSED, "no recording is running");
    }
    if (!IsOwnTraceRunning())
    {
        throw ShellFailure(EXIT_REFUSED, "--trace or --diagram started the recording, and it ends with the shell");
    }
    std::exchange(m_trace, nullptr)->Close();
    return m_traceFiles;
}

bool ShellWorld::IsOwnTraceRunning() const
{
    return m_trace != nullptr && !m_ownTraces.empty() && m_ownTraces.back().get() == m_trace;
}

void ShellWorld::SetCompany(const platform::CrowdOptions& options, const platform::Crowd::Progress& progress)
{
    if (options.count > 0 && options.count - 1 > UINT32_MAX - options.firstUserId)
    {
        throw ShellFailure(EXIT_USAGE,
                           "the company needs user ids above the largest one, " + std::to_string(UINT32_MAX));
    }
    if (m_company != nullptr)
    {
        m_company->GoOffline(progress);
        m_company.reset();
    }
    m_companySettings = options;
    if (options.count > 0)
    {
        m_company = std::make_unique<platform::Crowd>(m_platform, options);
    }
}

platform::MonitoringService& ShellWorld::Monitoring()
{
    if (m_monitoring == nullptr)
    {
        m_monitoring = std::make_unique<platform::MonitoringService>(
            m_platform, m_options.login.appid, std::to_string(m_options.login.companyid),
            [&inbox = m_inbox](const platform::MonitoringReport& report)
            {
                ShellEvent event{.source = "monitoring",
                                 .name = kReportEvent,
                                 .text = "gets a report from " + Printable(report.userId + "@" + report.deviceId) +
                                         ": " + Printable(report.json),
                                 .content = report.json};
                std::from_chars(report.userId.data(), report.userId.data() + report.userId.size(), event.event.userId);
                inbox.Push(std::move(event));
            });
    }
    return *m_monitoring;
}

} // namespace host
