#pragma once

#include "common/wbaselib/wtypes.h"

#include <condition_variable>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace checks
{

/// The name under which the calling thread stands in journals. A thread without a name is one of the module's own:
/// "module".
void NameThread(const char* name);

struct JournalEntry
{
    std::string thread;
    std::string text;
};

/// What crossed the module's boundary, one line of text each, in the order of its happening. Used by every thread.
class Journal
{
public:
    /// Appends one line made of `parts`.
    template <typename... Parts>
    void Add(const Parts&... parts)
    {
        std::ostringstream text;
        (text << ... << parts);
        Append(text.str());
    }

    /// Everything so far; the journal is empty afterwards.
    std::vector<JournalEntry> Take();

    void Clear();

    /// How many lines contain `part`.
    size_t Count(std::string_view part) const;

    /// Waits until `count` lines contain `part`; false when that does not come to pass in half a minute.
    bool Await(std::string_view part, size_t count = 1) const;

    /// Orders everything that this thread has done before what other threads do behind a call of theirs.
    void Synchronise() const;

private:
    void Append(std::string text);
    size_t CountLocked(std::string_view part) const;

    mutable std::mutex m_mutex; ///< guards what is below
    mutable std::condition_variable m_added;
    std::vector<JournalEntry> m_entries;
};

/// A log line of a unit of the module as the journal has it: LogLine("PaasOnlineImp", "Login()").
std::string LogLine(std::string_view unit, std::string_view text);

/// The text of a pointer that may be null, in quotes; `null` without them.
std::string Quoted(const char* text);

/// The name of an identifier that both sides know, else its text.
std::string NameOf(const GUID& id);

} // namespace checks
