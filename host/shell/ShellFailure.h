#pragma once

#include "host/console/ExitCode.h"
#include "onlinehost/Error.h"

#include <string>

namespace host
{

/// A command of the shell that did not come out, and what a script ends with for it.
class ShellFailure : public onlinehost::Error
{
public:
    ShellFailure(int exitCode, const std::string& text) : onlinehost::Error(text), m_exitCode(exitCode) {}

    int Code() const
    {
        return m_exitCode;
    }

    /// Whether a signal ended the command.
    bool IsInterruption() const
    {
        return m_exitCode > kSignalBase;
    }

    static constexpr int kSignalBase = 128; ///< plus the signal's number, as shells do it

private:
    int m_exitCode;
};

} // namespace host
