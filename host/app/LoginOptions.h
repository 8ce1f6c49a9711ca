#pragma once

#include "onlinehost/LogCenter.h"
#include "onlinemanager/IPaasOnline.h"
#include "platform/PlatformOptions.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace CLI
{
class App;
}

namespace host
{

/// The options of the commands that log in.
struct LoginOptions
{
    std::string module;
    std::string server = "tcp:in-process";
    std::string company = "1";
    std::string device = "pc";
    std::string mutex;
    std::string token = "token";
    std::string appid = "onlinehost";
    std::string type = "1";
    uint32_t timeout = 10;
    std::string caFile;
    std::string log;
    std::string logLevel = "trace";

    std::chrono::seconds TimeLimit() const
    {
        return std::chrono::seconds(timeout);
    }
};

/// The options must live until the command has run.
void AddLoginOptions(CLI::App& command, LoginOptions& options);

/// The parameters of a login of user 0. The mutual-exclusion tag is empty without `--mutex`.
onlinemanager::LoginParam ToLoginParam(const LoginOptions& options);

/// The time limits of the platform that follow from `--timeout`.
platform::PlatformOptions ToPlatformOptions(const LoginOptions& options);

onlinehost::LogCenter::Options ToLogOptions(const LoginOptions& options);

} // namespace host
