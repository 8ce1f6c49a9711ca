#pragma once

#include "common/frameworksdk/ILogCenter.h"
#include "onlinehost/Counted.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace onlinehost
{

/// A log center for `ComponentFactory`: named loggers that write to a file, to memory, and to the registered
/// `ILogWriter`s.
///
/// A host makes one before it loads a module. It must destroy the center only after it has unloaded every module that
/// got it and released all messages: a module keeps its center while it is loaded, also for components created later.
///
/// All operations are [any]. A logger has one id while it is open: opening it again gives the same id, and it stays
/// open until `CloseLogger` was called as often as `OpenLogger`.
class LogCenter final : public Counted<ILogCenter>
{
public:
    /// A level above the level of every message, so that nothing is written.
    static constexpr int32_t kLevelOff = 6;
    static constexpr size_t kMaxLoggers = 64; ///< names that can be in use

    struct Options
    {
        std::filesystem::path file;                ///< empty for no file
        size_t fileSize = Quenda::kMaxLogFileSize; ///< bytes; the center starts a new file after this size
        size_t olderFiles = 5; ///< number of full files that it keeps as "name.1.log", "name.2.log", ...
        size_t keptLines = 0;  ///< number of newest lines that `Lines` returns
        int32_t level = Quenda::LOG_LEVEL_TRACE; ///< of every logger until `SetLevel`
    };

    /// Throws `Error` if the file cannot be opened for writing.
    explicit LogCenter(const Options& options);
    ~LogCenter();

    /// Sets the level of every logger, also of loggers that are opened later.
    void SetLevel(int32_t level);

    /// Sets the level of one logger, which need not be open.
    void SetLevel(const std::string& name, int32_t level);

    /// Writes a line of the host under the logger `name`, which need not be open.
    void Write(const std::string& name, Quenda::LogLevel level, std::string_view text);

    /// Throws `Error`, with the name of the file and the reason, if a line could not be written to the file, on a full
    /// disk for example. The operation that logged the line did not fail.
    void CheckWritten() const;

    /// The newest lines, formatted as in the file, the oldest first.
    std::vector<std::string> Lines() const;

    /// As `Counted`; also gives the center itself for `IID_ILogCenter`.
    HRESULT QueryInterface(const GUID& iid, void** out) override;

    /// The manager of this center, which lives as long as the center; no reference is added.
    ILogMgr* GetLogMgr() override;

    /// Opens a logger and returns its id; 0 for a null name, and when `kMaxLoggers` names are in use. The mode and the
    /// options have no effect.
    int64_t OpenLogger(const char* name, int32_t mode, int32_t option1, int32_t option2) override;

    /// `E_FAIL` if no logger with this id is open.
    HRESULT CloseLogger(int64_t loggerId) override;

    /// Registers a writer with a logger, which need not be open. The center borrows it until `RemoveLogWriter`, and
    /// calls it on the thread that logs. A second registration changes nothing. `E_POINTER` for a null argument,
    /// `E_OUTOFMEMORY` when `kMaxLoggers` names are in use.
    HRESULT AddLogWriter(const char* name, Quenda::ILogWriter* writer) override;

    /// Removes a writer. Afterwards no thread is inside it, because this operation waits for them; from inside the
    /// writer itself it does not wait. Two writers must not remove each other at the same time, since each would wait
    /// for the other. `E_POINTER` for a null argument, `E_FAIL` for a writer that is not registered.
    HRESULT RemoveLogWriter(const char* name, Quenda::ILogWriter* writer) override;

private:
    struct Logger;
    struct State;
    class Manager;
    class Message;

    std::unique_ptr<State> m_state;
};

/// [any] The level that is called "info", "trace", "warning", "error", "fatal" or "off". Throws `Error` for any other
/// text.
int32_t ParseLogLevel(std::string_view text);

} // namespace onlinehost
