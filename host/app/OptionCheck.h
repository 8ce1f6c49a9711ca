#pragma once

#include "host/console/Wording.h"
#include "onlinehost/Error.h"

#include <CLI/CLI.hpp>
#include <string>

namespace host
{

/// Turns a reader that throws `Error` into a check of an option.
template <typename Reader>
CLI::Validator OptionCheck(Reader read)
{
    return CLI::Validator(
        [read](const std::string& text) -> std::string
        {
            try
            {
                read(text);
                return {};
            }
            catch (const onlinehost::Error& error)
            {
                return error.what();
            }
        },
        "");
}

inline CLI::Validator NumberCheck(const char* what)
{
    return OptionCheck([what](const std::string& text) { ParseNumber(text, what); });
}

} // namespace host
