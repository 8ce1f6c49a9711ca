#pragma once

#include "common/frameworksdk/ILogCenter.h"

#include <functional>
#include <string>
#include <string_view>

namespace onlinehost
{

/// The logger that the module opens.
inline constexpr char kModuleLogger[] = "OnlineManager";

/// Passes every line of a logger to a function, as long as it lives.
class LogWatch final : public Quenda::ILogWriter
{
public:
    /// [any] Called on the thread that logs.
    using OnLine = std::function<void(std::string_view text)>;

    LogWatch(ILogCenter& center, const std::string& logger, OnLine onLine);
    /// No call is under way when it returns, unless it is made from inside one.
    ~LogWatch() override;
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;

    void AppendLog(const char* text, unsigned int length, Quenda::LogLevel level) override;

private:
    ILogCenter& m_center;
    const std::string m_logger;
    const OnLine m_onLine;
};

} // namespace onlinehost
