#pragma once

#include "common/frameworksdk/IUnknown.h"

#include <cstdarg>

/// The host's logging service: the center opens loggers by name, the manager knows their levels and makes messages, a
/// message is filled in the manner of printf and committed by its release.
///
/// All of it is implemented by the host and called from every thread of the module, so it must be callable from any.

namespace Quenda
{

/// Levels of the log service. INFO ranks below TRACE on purpose: a logger set to INFO or TRACE writes all of this module's
/// lines (they are made at TRACE), a logger set higher writes none.
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

/// Receives every committed message of a logger. Implemented by a host or one of its plug-ins, registered by
/// `FWAddLogWriter` under the logger's name. Not owned by the log center: remove it before it is destroyed.
class ILogWriter
{
public:
    virtual ~ILogWriter() = default;

    /// [any] `text` has `length` bytes and is valid during the call only. Called on the thread that committed the message.
    virtual void AppendLog(const char* text, unsigned int length, LogLevel level) = 0;
};

} // namespace Quenda

/// One log message under construction. Made by `ILogMgr::CreateMessage`, ended by exactly one `Release`; used by one thread.
class ILogMessage
{
public:
    virtual void Reserved0() = 0;

    /// [any] Commits the message and ends it.
    virtual uint32_t Release() = 0;

    /// [any] Appends text as vprintf would. What does not fit the message's buffer is cut off.
    virtual void Append(const char* format, va_list arguments) = 0;

    /// [any] Appends wide text. `%s` stands for wide text here, unlike in wprintf.
    virtual void AppendWide(const wchar_t* format, va_list arguments) = 0;

protected:
    ~ILogMessage() = default;
};

/// Knows the level of each logger and makes messages. Handed out by `ILogCenter::GetLogMgr` without a reference; lives as
/// long as its center.
class ILogMgr : public IUnknown
{
public:
    virtual void Reserved3() = 0;
    virtual void Reserved4() = 0;
    virtual void Reserved5() = 0;
    virtual void Reserved6() = 0;
    virtual void Reserved7() = 0;

    /// [any] The level at which the logger stands (`Quenda::LogLevel`). Asked before every line, so it must be quick.
    virtual int32_t GetLoggerLevel(int64_t loggerId) = 0;

    virtual void Reserved9() = 0;

    /// [any] A new message, or null to suppress the line. `file` is a constant text of the caller.
    virtual ILogMessage* CreateMessage(int64_t loggerId, int32_t level, const char* file, int32_t line) = 0;

protected:
    ~ILogMgr() = default;
};

inline constexpr IID IID_ILogCenter{0xE67F5F27, 0xCB02, 0xD0B6, {0x62, 0xE2, 0x50, 0x0A, 0xB0, 0xC5, 0xB0, 0xD6}};

/// Opens and closes loggers. Got from the component factory by `QueryInterface(IID_ILogCenter)`.
class ILogCenter : public IUnknown
{
public:
    /// [any] The log manager, without a reference.
    virtual ILogMgr* GetLogMgr() = 0;

    /// [any] Opens a logger and returns its id, 0 when it is refused. The meaning of `mode` and of the last two values is
    /// the host's; the module passes mode 1, 2 and 0.
    virtual int64_t OpenLogger(const char* name, int32_t mode, int32_t option1, int32_t option2) = 0;

    /// [any] Closes a logger. Negative when there is no such logger.
    virtual HRESULT CloseLogger(int64_t loggerId) = 0;

    /// [any] Registers a writer with the logger `name`, open or not.
    virtual HRESULT AddLogWriter(const char* name, Quenda::ILogWriter* writer) = 0;

    /// [any] Takes a writer away again; it is not called any more once this has returned.
    virtual HRESULT RemoveLogWriter(const char* name, Quenda::ILogWriter* writer) = 0;

protected:
    ~ILogCenter() = default;
};

/// The older interface-based logger. The framework only opens and releases it.
class IWLog : public IUnknown
{
protected:
    ~IWLog() = default;
};

inline constexpr IID IID_IWLogAllocator{0x19B9932D, 0x1068, 0x4ADD, {0xA6, 0x42, 0x0B, 0x95, 0xEB, 0xF3, 0x38, 0xA9}};

/// Maker of the older loggers. Got from the component factory by `QueryInterface(IID_IWLogAllocator)`; a host may lack it.
class IWLogAllocator : public IUnknown
{
public:
    /// [host] Creates a logger, the caller holding the only reference. Negative on failure.
    virtual HRESULT CreateLog(const wchar_t* name, int32_t level, int32_t mode, IWLog** out) = 0;

    /// [host] The same with a choice of encryption.
    virtual HRESULT CreateLog2(const wchar_t* name, int32_t level, int32_t mode, BOOL encrypt, IWLog** out) = 0;

protected:
    ~IWLogAllocator() = default;
};
