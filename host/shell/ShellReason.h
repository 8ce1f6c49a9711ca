#pragma once

#include <string>
#include <string_view>
#include <thread>

namespace host
{

/// Why the module refused an operation.
///
/// An operation of the module answers only yes or no. When it refuses, the last line that it logs on the caller's
/// thread says why; some refusals log nothing but the line with which the operation begins, and give no reason. So the
/// reason is the last line of the calling thread, unless that line begins an operation. The words of the line do not
/// matter: they may hold texts of users.
class ShellReason
{
public:
    /// Uses the lines of the thread that calls this.
    ShellReason() : m_thread(std::this_thread::get_id()) {}

    /// [any] A line of the module's log, on the thread that logs it.
    void Note(std::string_view line);

    /// [host] The reason of the operation that was called last, safe to show; empty when it gave none. Forgets it: call
    /// this before an operation too, so that an older reason does not stay.
    std::string Take();

private:
    const std::thread::id m_thread;
    std::string m_last; ///< only on `m_thread`
};

} // namespace host
