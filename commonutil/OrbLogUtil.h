#pragma once

#include "common/frameworksdk/ILogCenter.h"

namespace commonutil
{

/// The module's handle on the host's log service. Set and cleared on the host's control thread, read by log lines on any.
class OrbLogUtil
{
public:
    /// Opens the module's logger over the component factory `factory`; true at once when it is open already. False for a
    /// null factory or name, or when the host refuses: the module then stays silent.
    static bool Init(IUnknown* factory, const char* name, int mode);

    /// Detaches the module from its logger; with `release_logger` the logger is closed at the log center as well.
    static void Release(bool release_logger);

    // Every access is a relaxed atomic one.
    static ILogMgr* m_model_log_mrg; ///< null = logging off
    static int64_t m_logger_id;      ///< 0 = none
};

} // namespace commonutil

namespace Quenda
{

/// A message of the module's logger from its creation to its release; empty when the line is suppressed.
class LogMessage
{
public:
    /// Costs two loads and one question to the log manager when the line is suppressed.
    LogMessage(const char* file, int line);

    /// Commits the message. The host's release must not throw: that ends the process.
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

/// Fills messages in the manner of printf. The message object formats; an empty holder takes nothing.
class LogWrapper
{
public:
    static void Fill(LogMessage& message, const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// `%s` stands for wide text in this form.
    static void Fill(LogMessage& message, const wchar_t* format, ...);
};

} // namespace Quenda

/// One log line, at the position where it stands: `ORB_LOG("%s()", "Login")`. The arguments are not evaluated when the line
/// is suppressed.
#define ORB_LOG(...)                                                                        \
    do                                                                                      \
    {                                                                                       \
        if (Quenda::LogMessage orbLogMessage("../" __FILE_NAME__, __LINE__); orbLogMessage) \
        {                                                                                   \
            Quenda::LogWrapper::Fill(orbLogMessage, __VA_ARGS__);                           \
        }                                                                                   \
    } while (false)

/// Reserved for hosts that look the module's log up by this name; never set or read here.
extern void* g_onlinemanager_log;
