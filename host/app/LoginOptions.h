#pragma once

#include "onlinehost/LogCenter.h"
#include "onlinemanager/IPaasOnline.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace CLI
{
class App;
}

namespace host
{

/// The options of the commands whose user says how to log in.
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

/// Of user 0; the mutual-exclusion tag is empty when none was given.
onlinemanager::LoginParam ToLoginParam(const LoginOptions& options);

onlinehost::LogCenter::Options ToLogOptions(const LoginOptions& options);

} // namespace host
