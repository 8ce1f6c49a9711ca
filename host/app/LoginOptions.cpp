#include "host/app/LoginOptions.h"

#include "host/app/OptionCheck.h"
#include "host/console/Wording.h"
#include "onlinehost/Text.h"

#include <filesystem>

namespace host
{

using namespace onlinehost;

namespace
{

/// The platform waits this much longer than the HTTP object and the command, so that their messages name the reason of
/// a time-out.
constexpr std::chrono::seconds kPlatformGrace{1};

/// A named pipe would hang the HTTP thread, which no signal and no time limit would end.
void RequireRegularFile(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
    {
        throw Error("\"" + Printable(path) + "\" is not a regular file" + (error ? ": " + error.message() : ""));
    }
}

} // namespace

void AddLoginOptions(CLI::App& command, LoginOptions& options)
{
    const auto text = [&command](const char* name, std::string& value, const char* type, const char* help)
    { return command.add_option(name, value, help)->type_name(type); };

    text("--server", options.server, "ADDRESS", "Server address")->capture_default_str();
    text("--company", options.company, "ID", "Company id")->check(NumberCheck("company id"))->capture_default_str();
    text("--device", options.device, "ID", "Device id")->capture_default_str();
    text(
        "--mutex", options.mutex, "TAG",
        "Tag for mutual exclusion: only one device of a user with the same tag is logged in; by default the device id");
    text("--token", options.token, "TOKEN", "Login token; it appears in the log")->capture_default_str();
    text("--appid", options.appid, "ID", "Application id")->capture_default_str();
    text("--type", options.type, "NUMBER", "Terminal type")->check(NumberCheck("terminal type"))->capture_default_str();
    command.add_option("--timeout", options.timeout, "Seconds to wait for each answer")
        ->check(CLI::Range(1u, 86400u))
        ->type_name("SECONDS")
        ->capture_default_str();
    text("--ca-file", options.caFile, "FILE", "Authorities to trust for an HTTPS server, PEM")
        ->check(OptionCheck(RequireRegularFile));
    text("--module", options.module, "FILE", "The module's file; by default the one beside the program");
    text("--log", options.log, "FILE", "File for the log of module and host");
    text("--log-level", options.logLevel, "LEVEL", "info, trace, warning, error, fatal or off")
        ->check(OptionCheck(ParseLogLevel))
        ->capture_default_str();
}

onlinemanager::LoginParam ToLoginParam(const LoginOptions& options)
{
    onlinemanager::LoginParam param;
    param.companyid = ParseNumber(options.company, "company id");
    param.mutex = options.mutex;
    param.terminal = static_cast<quenda::TerminalType>(ParseNumber(options.type, "terminal type"));
    param.deviceid = options.device;
    param.appid = options.appid;
    param.token = options.token;
    param.server = options.server;
    return param;
}

platform::PlatformOptions ToPlatformOptions(const LoginOptions& options)
{
    platform::PlatformOptions limits;
    limits.httpTimeLimit = options.TimeLimit() + kPlatformGrace;
    limits.loginTimeLimit = limits.httpTimeLimit;
    return limits;
}

LogCenter::Options ToLogOptions(const LoginOptions& options)
{
    LogCenter::Options log;
    log.file = options.log;
    log.level = ParseLogLevel(options.logLevel);
    return log;
}

} // namespace host
