#pragma once

#include "common/frameworksdk/IUnknown.h"

#include <cstdarg>

/// The host's logging service. The center opens loggers by name. The manager knows their levels and creates messages.
/// The module fills a message as printf does and commits it by its release.
///
/// The host implements all of it, except log writers. The module calls it on every thread that enters the module.

namespace Quenda
{

/// Levels of the log service. INFO ranks below TRACE on purpose. The module writes all its lines at TRACE: a logger at
/// INFO or TRACE gets all of them, a logger at a higher level gets none.
enum LogLevel : uint32_t
{
    LOG_LEVEL_INFO = 1,
    LOG_LEVEL_TRACE = 2,
    LOG_LEVEL_WARNING = 3,
    LOG_LEVEL_ERROR = 4,
    LOG_LEVEL_FATAL = 5,
};

enum LogColor : uint32_t
{
    COLOR_DEFAULT = 0,
    COLOR_RED = 1,
    COLOR_GREEN = 2,
    COLOR_YELLOW = 3,
};

inline constexpr uint32_t kLogLevelBase = 1;
inline constexpr uint32_t kLogLevelCnt = 5;
/// Colour of each level, from INFO to FATAL.
inline constexpr LogColor kLogLevelColor[kLogLevelCnt] = {COLOR_DEFAULT, COLOR_DEFAULT, COLOR_YELLOW, COLOR_RED,
                                                          COLOR_RED};
inline constexpr uint32_t kLoggerModeCnt = 3;
inline constexpr uint32_t kMaxLogFileSize = 0xA00000;  ///< bytes; kept by the host's log service
inline constexpr uint32_t kMaxLogMessageBufLen = 4096; ///< bytes; kept by the host's log service

/// Receives every committed message of a logger. A host or one of its plug-ins implements it and registers it with
/// `FWAddLogWriter` under the logger's name. The log center does not own it: remove it before you destroy it.
class ILogWriter
{
public:
    virtual ~ILogWriter() = default;

    /// [any] Takes one line. `text` has `length` bytes and is valid during the call only. The log center calls it on
    /// the thread that committed the message.
    virtual void AppendLog(const char* text, unsigned int length, LogLevel level) = 0;
};

} // namespace Quenda

/// One log message. `ILogMgr::CreateMessage` creates it. One thread fills it once and ends it by exactly one `Release`.
class ILogMessage
{
public:
    virtual void Reserved0() = 0;

    /// [any] Commits the message and ends it. The module ignores the result.
    virtual uint32_t Release() = 0;

    /// [any] Appends text, formatted as vprintf does. The implementation may cut off what does not fit into its buffer.
    virtual void Append(const char* format, va_list arguments) = 0;

    /// [any] Appends wide text, formatted as vwprintf does, but with `%s` for wide text.
    virtual void AppendWide(const wchar_t* format, va_list arguments) = 0;

protected:
    ~ILogMessage() = default;
};

/// Knows the level of each logger and creates messages. `ILogCenter::GetLogMgr` returns it without a reference; it
/// lives as long as its center.
class ILogMgr : public IUnknown
{
public:
    virtual void Reserved3() = 0;
    virtual void Reserved4() = 0;
    virtual void Reserved5() = 0;
    virtual void Reserved6() = 0;
    virtual void Reserved7() = 0;

    /// [any] Returns the level of the logger (`Quenda::LogLevel`). The module calls it before every line: it must be
    /// quick.
    virtual int32_t GetLoggerLevel(int64_t loggerId) = 0;

    virtual void Reserved9() = 0;

    /// [any] Creates a message, or returns null to suppress the line. `file` and `line` are the position in the
    /// module's source; `file` stays valid while the module is loaded.
    virtual ILogMessage* CreateMessage(int64_t loggerId, int32_t level, const char* file, int32_t line) = 0;

protected:
    ~ILogMgr() = default;
};

inline constexpr IID IID_ILogCenter{0xE67F5F27, 0xCB02, 0xD0B6, {0x62, 0xE2, 0x50, 0x0A, 0xB0, 0xC5, 0xB0, 0xD6}};

/// Opens and closes loggers. The module gets it from the component factory by `QueryInterface(IID_ILogCenter)`.
class ILogCenter : public IUnknown
{
public:
    /// [any] Returns the log manager without a reference.
    virtual ILogMgr* GetLogMgr() = 0;

    /// [any] Opens a logger and returns its id, or 0 to refuse. The host defines what `mode` and the options mean. The
    /// module passes mode 1 and the options 2 and 0.
    virtual int64_t OpenLogger(const char* name, int32_t mode, int32_t option1, int32_t option2) = 0;

    /// [any] Closes a logger. 0; negative when there is no such logger.
    virtual HRESULT CloseLogger(int64_t loggerId) = 0;

    /// [any] Registers a writer with the logger `name`, whether that is open or not. Negative on failure.
    virtual HRESULT AddLogWriter(const char* name, Quenda::ILogWriter* writer) = 0;

    /// [any] Removes a writer. When this has returned, the writer is not called any more. Negative on failure.
    virtual HRESULT RemoveLogWriter(const char* name, Quenda::ILogWriter* writer) = 0;

protected:
    ~ILogCenter() = default;
};

/// The older logger. The framework only creates and releases it.
class IWLog : public IUnknown
{
protected:
    ~IWLog() = default;
};

inline constexpr IID IID_IWLogAllocator{0x19B9932D, 0x1068, 0x4ADD, {0xA6, 0x42, 0x0B, 0x95, 0xEB, 0xF3, 0x38, 0xA9}};

/// Creates the older loggers. The module gets it from the component factory by `QueryInterface(IID_IWLogAllocator)`. A
/// host need not have it.
class IWLogAllocator : public IUnknown
{
public:
    /// [any] Creates a logger and writes it to `*out`. The caller holds the only reference. Negative on failure.
    virtual HRESULT CreateLog(const wchar_t* name, int32_t level, int32_t mode, IWLog** out) = 0;

    /// [any] Does the same, with a choice of encryption.
    virtual HRESULT CreateLog2(const wchar_t* name, int32_t level, int32_t mode, BOOL encrypt, IWLog** out) = 0;

protected:
    ~IWLogAllocator() = default;
};
