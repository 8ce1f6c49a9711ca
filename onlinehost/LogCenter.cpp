#include "onlinehost/LogCenter.h"

#include "onlinehost/Error.h"
#include "onlinehost/Text.h"
#include "onlinehost/WideFormat.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <spdlog/logger.h>
#include <spdlog/sinks/ringbuffer_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <thread>

namespace onlinehost
{

using Quenda::ILogWriter;
using Quenda::kMaxLogMessageBufLen;
using Quenda::LogLevel;

namespace
{

constexpr char kPattern[] = "%Y-%m-%d %H:%M:%S.%e %t %l %n %@ %v";

/// The log service's levels, lowest first. On purpose INFO ranks below TRACE: modules are compiled with these numbers.
constexpr struct
{
    const char* name;
    spdlog::level::level_enum shown;
} kLevels[] = {
    {"info", spdlog::level::info}, {"trace", spdlog::level::trace},    {"warning", spdlog::level::warn},
    {"error", spdlog::level::err}, {"fatal", spdlog::level::critical}, {"off", spdlog::level::off},
};

LogLevel KnownLevel(int32_t level)
{
    return static_cast<LogLevel>(std::clamp<int32_t>(level, Quenda::LOG_LEVEL_INFO, Quenda::LOG_LEVEL_FATAL));
}

spdlog::level::level_enum ShownLevel(LogLevel level)
{
    return kLevels[level - Quenda::kLogLevelBase].shown;
}

} // namespace

/// A registered writer and the threads that are inside it.
struct Registration
{
    ILogWriter* writer;
    bool removed = false;
    std::vector<std::thread::id> callers{};
};

struct LogCenter::Logger
{
    Logger(std::string_view loggerName, const std::vector<spdlog::sink_ptr>& sinks)
        : name(loggerName),
          output(std::string(loggerName), sinks.begin(), sinks.end())
    {
        output.set_level(spdlog::level::trace);
        output.flush_on(spdlog::level::trace);
    }

    const std::string name;
    spdlog::logger output;
    int32_t level = kLevelOff;
    uint32_t openCount = 0;
    std::vector<std::shared_ptr<Registration>> writers;
};

/// Answers `GetLoggerLevel`, which precedes every log line, without a lock.
class LogCenter::Manager final : public Counted<ILogMgr>
{
public:
    explicit Manager(State& state) : m_state(state)
    {
        for (std::atomic<int32_t>& level : m_levels)
        {
            level.store(kLevelOff, std::memory_order_relaxed);
        }
    }

    void SetLevel(size_t index, int32_t level)
    {
        m_levels[index].store(level, std::memory_order_relaxed);
    }

    int32_t GetLoggerLevel(int64_t loggerId) override
    {
        const auto index = static_cast<uint64_t>(loggerId) - 1;
        return index < m_levels.size() ? m_levels[index].load(std::memory_order_relaxed) : kLevelOff;
    }

    ILogMessage* CreateMessage(int64_t loggerId, int32_t level, const char* file, int32_t line) override;

    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved9() override {}

private:
    State& m_state;
    std::array<std::atomic<int32_t>, kMaxLoggers> m_levels;
};

struct LogCenter::State
{
    explicit State(const Options& options) : level(options.level), manager(*this)
    {
        if (!options.file.empty())
        {
            sinks.push_back(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
                options.file.string(), options.fileSize, options.olderFiles));
        }
        if (options.keptLines != 0)
        {
            kept = std::make_shared<spdlog::sinks::ringbuffer_sink_mt>(options.keptLines);
            sinks.push_back(kept);
        }
        for (const spdlog::sink_ptr& sink : sinks)
        {
            sink->set_pattern(kPattern);
        }
    }

    /// The logger of a name, added if there is none; null when `kMaxLoggers` are in use. Loggers live as long as the
    /// center, so that a message may outlive the closing of its logger.
    Logger* GetLogger(std::string_view name)
    {
        const auto found =
            std::find_if(loggers.begin(), loggers.end(), [name](const auto& logger) { return logger->name == name; });
        if (found != loggers.end())
        {
            return found->get();
        }
        if (loggers.size() == kMaxLoggers)
        {
            return nullptr;
        }
        loggers.push_back(std::make_unique<Logger>(name, sinks));
        loggers.back()->level = level;
        loggers.back()->output.set_error_handler([this](const std::string&) { NoteFailedWrite(); });
        return loggers.back().get();
    }

    /// The logging library calls it inside the `catch` for a sink that failed.
    void NoteFailedWrite()
    {
        const std::lock_guard lock(failureMutex);
        if (writeFailure == nullptr)
        {
            writeFailure = std::current_exception();
        }
    }

    size_t IndexOf(const Logger& logger) const
    {
        const auto found =
            std::find_if(loggers.begin(), loggers.end(), [&logger](const auto& each) { return each.get() == &logger; });
        return static_cast<size_t>(found - loggers.begin());
    }

    Logger* FindOpen(int64_t loggerId)
    {
        const auto index = static_cast<uint64_t>(loggerId) - 1;
        return index < loggers.size() && loggers[index]->openCount != 0 ? loggers[index].get() : nullptr;
    }

    void PublishLevel(const Logger& logger)
    {
        manager.SetLevel(IndexOf(logger), logger.openCount != 0 ? logger.level : kLevelOff);
    }

    void Commit(Logger& logger, LogLevel messageLevel, const char* file, int32_t line, std::string_view text)
    {
        const spdlog::source_loc place(file, file != nullptr ? line : 0, "");
        logger.output.log(place, ShownLevel(messageLevel), spdlog::string_view_t(text.data(), text.size()));

        std::unique_lock lock(mutex);
        if (logger.writers.empty())
        {
            return;
        }
        const std::vector<std::shared_ptr<Registration>> writers = logger.writers;
        for (const std::shared_ptr<Registration>& registration : writers)
        {
            CallWriter(lock, *registration, messageLevel, text);
        }
    }

    void CallWriter(std::unique_lock<std::mutex>& lock, Registration& registration, LogLevel messageLevel,
                    std::string_view text)
    {
        if (registration.removed)
        {
            return;
        }
        registration.callers.push_back(std::this_thread::get_id());
        lock.unlock();
        try
        {
            registration.writer->AppendLog(text.data(), static_cast<unsigned int>(text.size()), messageLevel);
        }
        catch (...)
        {
            // The operation that logged must not fail because a writer does.
        }
        lock.lock();
        auto& callers = registration.callers;
        callers.erase(std::find(callers.begin(), callers.end(), std::this_thread::get_id()));
        returned.notify_all();
    }

    std::mutex failureMutex;
    std::exception_ptr writeFailure; ///< of the first line that was not written
    std::mutex mutex;
    std::condition_variable returned; ///< signalled when a thread has left a writer
    std::vector<spdlog::sink_ptr> sinks;
    std::shared_ptr<spdlog::sinks::ringbuffer_sink_mt> kept;
    std::vector<std::unique_ptr<Logger>> loggers; ///< a logger's id is its index + 1
    int32_t level;
    Manager manager;
};

class LogCenter::Message final : public ILogMessage
{
public:
    Message(State& state, Logger& logger, LogLevel level, const char* file, int32_t line)
        : m_state(state),
          m_logger(logger),
          m_level(level),
          m_file(file),
          m_line(line)
    {
        m_text[0] = '\0';
    }

    void Reserved0() override {}

    uint32_t Release() override
    {
        m_state.Commit(m_logger, m_level, m_file, m_line, {m_text, m_length});
        delete this;
        return 0;
    }

    void Append(const char* format, va_list arguments) override
    {
        if (format == nullptr || m_full)
        {
            return;
        }
        const size_t room = sizeof(m_text) - m_length;
        const int length = std::vsnprintf(m_text + m_length, room, format, arguments);
        if (length < 0)
        {
            m_text[m_length] = '\0';
            AppendText("[unreadable]");
            return;
        }
        Settle(m_length + static_cast<size_t>(length));
    }

    void AppendWide(const wchar_t* format, va_list arguments) override
    {
        if (format != nullptr && !m_full)
        {
            AppendText(FormatWide(format, arguments));
        }
    }

private:
    void AppendText(std::string_view text)
    {
        const size_t copied = text.copy(m_text + m_length, sizeof(m_text) - 1 - m_length);
        m_text[m_length + copied] = '\0';
        Settle(m_length + text.size());
    }

    /// Sets the length and, if the whole text of `length` bytes did not fit, puts the mark at its end.
    void Settle(size_t length)
    {
        static constexpr std::string_view kMark = "[...]";

        if (length < sizeof(m_text))
        {
            m_length = length;
            return;
        }
        m_length = CutLength({m_text, sizeof(m_text) - 1}, sizeof(m_text) - 1 - kMark.size());
        m_length += kMark.copy(m_text + m_length, kMark.size());
        m_text[m_length] = '\0';
        m_full = true;
    }

    State& m_state;
    Logger& m_logger;
    const LogLevel m_level;
    const char* const m_file;
    const int32_t m_line;
    size_t m_length = 0;
    bool m_full = false; ///< the mark stands at the end
    char m_text[kMaxLogMessageBufLen];
};

ILogMessage* LogCenter::Manager::CreateMessage(int64_t loggerId, int32_t level, const char* file, int32_t line)
{
    if (level < GetLoggerLevel(loggerId))
    {
        return nullptr;
    }
    const std::lock_guard lock(m_state.mutex);
    Logger* const logger = m_state.FindOpen(loggerId);
    return logger != nullptr ? new Message(m_state, *logger, KnownLevel(level), file, line) : nullptr;
}

LogCenter::LogCenter(const Options& options)
try : m_state(std::make_unique<State>(options))
{
}
catch (const spdlog::spdlog_ex& error)
{
    throw Error(std::string("the log cannot be written: ") + error.what());
}

LogCenter::~LogCenter() = default;

void LogCenter::SetLevel(int32_t level)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->level = level;
    for (const auto& logger : m_state->loggers)
    {
        logger->level = level;
        m_state->PublishLevel(*logger);
    }
}

void LogCenter::SetLevel(const std::string& name, int32_t level)
{
    const std::lock_guard lock(m_state->mutex);
    if (Logger* const logger = m_state->GetLogger(name))
    {
        logger->level = level;
        m_state->PublishLevel(*logger);
    }
}

void LogCenter::Write(const std::string& name, LogLevel level, std::string_view text)
{
    Logger* logger = nullptr;
    {
        const std::lock_guard lock(m_state->mutex);
        logger = m_state->GetLogger(name);
        if (logger == nullptr || static_cast<int32_t>(level) < logger->level)
        {
            return;
        }
    }
    m_state->Commit(*logger, KnownLevel(static_cast<int32_t>(level)), nullptr, 0, text);
}

void LogCenter::CheckWritten() const
{
    const std::lock_guard lock(m_state->failureMutex);
    if (m_state->writeFailure == nullptr)
    {
        return;
    }
    try
    {
        std::rethrow_exception(m_state->writeFailure);
    }
    catch (const std::exception& error)
    {
        throw Error("the log could not be written: " + Printable(error.what()));
    }
}

std::vector<std::string> LogCenter::Lines() const
{
    std::vector<std::string> lines;
    if (m_state->kept != nullptr)
    {
        lines = m_state->kept->last_formatted();
    }
    for (std::string& line : lines)
    {
        line.pop_back(); // the line end
    }
    return lines;
}

HRESULT LogCenter::QueryInterface(const GUID& iid, void** out)
{
    if (out == nullptr || iid != IID_ILogCenter)
    {
        return Counted::QueryInterface(iid, out);
    }
    *out = static_cast<ILogCenter*>(this);
    AddRef();
    return S_OK;
}

ILogMgr* LogCenter::GetLogMgr()
{
    return &m_state->manager;
}

int64_t LogCenter::OpenLogger(const char* name, int32_t, int32_t, int32_t)
{
    if (name == nullptr)
    {
        return 0;
    }
    const std::lock_guard lock(m_state->mutex);
    Logger* const logger = m_state->GetLogger(name);
    if (logger == nullptr)
    {
        return 0;
    }
    ++logger->openCount;
    m_state->PublishLevel(*logger);
    return static_cast<int64_t>(m_state->IndexOf(*logger)) + 1;
}

HRESULT LogCenter::CloseLogger(int64_t loggerId)
{
    const std::lock_guard lock(m_state->mutex);
    Logger* const logger = m_state->FindOpen(loggerId);
    if (logger == nullptr)
    {
        return E_FAIL;
    }
    --logger->openCount;
    m_state->PublishLevel(*logger);
    return S_OK;
}

HRESULT LogCenter::AddLogWriter(const char* name, ILogWriter* writer)
{
    if (name == nullptr || writer == nullptr)
    {
        return E_POINTER;
    }
    const std::lock_guard lock(m_state->mutex);
    Logger* const logger = m_state->GetLogger(name);
    if (logger == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    auto& writers = logger->writers;
    if (std::none_of(writers.begin(), writers.end(), [writer](const auto& each) { return each->writer == writer; }))
    {
        writers.push_back(std::make_shared<Registration>(Registration{writer}));
    }
    return S_OK;
}

HRESULT LogCenter::RemoveLogWriter(const char* name, ILogWriter* writer)
{
    if (name == nullptr || writer == nullptr)
    {
        return E_POINTER;
    }
    std::unique_lock lock(m_state->mutex);
    const auto logger = std::find_if(m_state->loggers.begin(), m_state->loggers.end(),
                                     [name](const auto& each) { return each->name == name; });
    if (logger == m_state->loggers.end())
    {
        return E_FAIL;
    }
    auto& writers = (*logger)->writers;
    const auto found =
        std::find_if(writers.begin(), writers.end(), [writer](const auto& each) { return each->writer == writer; });
    if (found == writers.end())
    {
        return E_FAIL;
    }
    const std::shared_ptr<Registration> registration = *found;
    writers.erase(found);
    registration->removed = true;

    const auto& callers = registration->callers;
    if (std::find(callers.begin(), callers.end(), std::this_thread::get_id()) == callers.end())
    {
        m_state->returned.wait(lock, [&callers] { return callers.empty(); });
    }
    return S_OK;
}

int32_t ParseLogLevel(std::string_view text)
{
    int32_t level = Quenda::LOG_LEVEL_INFO;
    for (const auto& known : kLevels)
    {
        if (text == known.name)
        {
            return level;
        }
        ++level;
    }
    throw Error("log level \"" + Printable(text) + "\" is unknown: expected info, trace, warning, error, fatal or off");
}

} // namespace onlinehost
