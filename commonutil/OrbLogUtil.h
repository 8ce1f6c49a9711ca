#pragma once

#include "common/frameworksdk/ILogCenter.h"

namespace commonutil
{

/// The module's connection to the host's log service. The host's control thread sets and clears it; log lines read it
/// on any thread.
class OrbLogUtil
{
public:
    /// Opens the module's logger at the log center of the component factory `factory`. True, without any call, when the
    /// logger is open. False for a null factory or name, or when the host refuses: the module then writes no log lines.
    static bool Init(IUnknown* factory, const char* name, int mode);

    /// Detaches the module from its logger. With `release_logger` it also closes the logger at the log center.
    static void Release(bool release_logger);

    // Every access is a relaxed atomic one.
    static ILogMgr* m_model_log_mrg; ///< null = logging off
    static int64_t m_logger_id;      ///< 0 = none
};

} // namespace commonutil

namespace Quenda
{

/// A message of the module's logger, from its creation to its release. It is empty when the logger's level suppresses
/// the line.
class LogMessage
{
public:
    /// For a suppressed line it takes two loads and one call of the log manager.
    LogMessage(const char* file, int line);

    /// Releases the message, which writes the line. The host's release must not throw: an exception ends the process.
    ~LogMessage();

    LogMessage(const LogMessage&) = delete;
    LogMessage& operator=(const LogMessage&) = delete;

    explicit operator bool() const
    {
        return m_message != nullptr;
    }

private:
    friend class LogWrapper;

    ILogMessage* m_message;
};

/// Fills messages with a format and arguments as printf takes them. The message object formats. An empty message stays
/// empty.
class LogWrapper
{
public:
    static void Fill(LogMessage& message, const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// In this form `%s` takes wide text.
    static void Fill(LogMessage& message, const wchar_t* format, ...);
};

} // namespace Quenda

/// Writes one log line: `ORB_LOG("%s()", "Login")`. The line carries the name of the source file and the line number of
/// this macro. Hosts filter by the file name, so a function that logs must stay in its source file. A suppressed line
/// does not evaluate its arguments.
#define ORB_LOG(...)                                                                        \
    do                                                                                      \
    {                                                                                       \
        if (Quenda::LogMessage orbLogMessage("../" __FILE_NAME__, __LINE__); orbLogMessage) \
        {                                                                                   \
            Quenda::LogWrapper::Fill(orbLogMessage, __VA_ARGS__);                           \
        }                                                                                   \
    } while (false)

/// Reserved for hosts that look up the module's log by this name. The module neither sets nor reads it.
extern void* g_onlinemanager_log;
