#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace host
{

/// The help of a command, as wide as the terminal.
class HelpFormatter final : public CLI::Formatter
{
public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

} // namespace host
