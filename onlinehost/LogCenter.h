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

/// The log service of the host: named loggers that write to a file, to memory, and to the registered `ILogWriter`s.
///
/// A logger has one id as long as it is open; opening it again gives the same id, and it is closed when it was closed as
/// often as it was opened. The mode and the options of `OpenLogger` mean nothing here. Everything may be called from any
/// thread. Messages under construction must be released before the center is destroyed, and modules that were given the
/// center must be unloaded: a module keeps its center as long as it is loaded, also for components made later.
class LogCenter final : public Counted<ILogCenter>
{
public:
    /// A level above all levels: nothing is written.
    static constexpr int32_t kLevelOff = 6;
    static constexpr size_t kMaxLoggers = 64;

    struct Options
    {
        std::filesystem::path file;                ///< empty: no file
        size_t fileSize = Quenda::kMaxLogFileSize; ///< bytes after which a new file is begun
        size_t olderFiles = 5; ///< full files that are kept beside it, as "name.1.log", "name.2.log", ...
        size_t keptLines = 0;  ///< newest lines that `Lines` shows
        int32_t level = Quenda::LOG_LEVEL_TRACE;
    };

    /// `Error` when the file cannot be written.
    explicit LogCenter(const Options& options);
    ~LogCenter();

    /// Sets the level of every logger, also of those to come.
    void SetLevel(int32_t level);

    /// Sets the level of one logger, open or not.
    void SetLevel(const std::string& name, int32_t level);

    /// Writes a line of the host's own under the logger `name`.
    void Write(const std::string& name, Quenda::LogLevel level, std::string_view text);

    /// The newest lines as they went to the file, the oldest first.
    std::vector<std::string> Lines() const;

    HRESULT QueryInterface(const GUID& iid, void** out) override;
    ILogMgr* GetLogMgr() override;

    /// 0 for a null name, or when `kMaxLoggers` names are in use.
    int64_t OpenLogger(const char* name, int32_t mode, int32_t option1, int32_t option2) override;
    HRESULT CloseLogger(int64_t loggerId) override;

    /// `E_POINTER` for a null argument. A writer that is registered with the logger already stays registered once.
    HRESULT AddLogWriter(const char* name, Quenda::ILogWriter* writer) override;

    /// Waits until no other thread is inside the writer, unless it is called from inside that writer. `E_FAIL` for a writer
    /// that is not registered. Two writers must not remove each other at the same time.
    HRESULT RemoveLogWriter(const char* name, Quenda::ILogWriter* writer) override;

private:
    struct Logger;
    struct State;
    class Manager;
    class Message;

    std::unique_ptr<State> m_state;
};

/// "info", "trace", "warning", "error", "fatal" or "off" as a level; `Error` for anything else.
int32_t ParseLogLevel(std::string_view text);

} // namespace onlinehost
