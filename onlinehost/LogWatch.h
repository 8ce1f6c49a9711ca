#pragma once

#include "common/frameworksdk/ILogCenter.h"

#include <functional>
#include <string>
#include <string_view>

namespace onlinehost
{

/// The logger that the module opens.
inline constexpr char kModuleLogger[] = "OnlineManager";

/// Passes every line of a logger to a function while the object lives. A host makes one to react to what the module
/// logs.
class LogWatch final : public Quenda::ILogWriter
{
public:
    /// [any] Gets the text of a line without time and level, on the thread that logs it. The text ends with the call.
    using OnLine = std::function<void(std::string_view text)>;

    /// Registers with `center`, which must outlive the object. `onLine` must not be empty.
    LogWatch(ILogCenter& center, const std::string& logger, OnLine onLine);

    /// Unregisters. No call of `onLine` is under way afterwards, except one that contains the destruction itself.
    ~LogWatch() override;
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;

    /// [any] Called by the log center.
    void AppendLog(const char* text, unsigned int length, Quenda::LogLevel level) override;

private:
    ILogCenter& m_center;
    const std::string m_logger;
    const OnLine m_onLine;
};

} // namespace onlinehost
