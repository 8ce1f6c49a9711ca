#pragma once

#include "host/console/ExitCode.h"
#include "onlinehost/Error.h"

#include <string>

namespace host
{

/// A command of the shell failed. Has the exit code with which a script ends.
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

    static constexpr int kSignalBase = 128; ///< plus the signal's number, as in other shells

private:
    int m_exitCode;
};

/// Commands are nested deeper than the shell allows. `fails` does not take this for the failure that it waits for: the
/// command at its end was never tried.
class ShellNestingFailure final : public ShellFailure
{
public:
    using ShellFailure::ShellFailure;
};

} // namespace host
