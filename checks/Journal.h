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

/// Sets the name of the calling thread in journals. A thread without a name is one that the module has started; its
/// name is "module".
void NameThread(const char* name);

struct JournalEntry
{
    std::string thread;
    std::string text;
};

/// The calls across the module's boundary in their order, one line of text for each. All operations are [any].
class Journal
{
public:
    /// Appends one line that consists of `parts`.
    template <typename... Parts>
    void Add(const Parts&... parts)
    {
        std::ostringstream text;
        (text << ... << parts);
        Append(text.str());
    }

    /// Returns all lines and clears the journal.
    std::vector<JournalEntry> Take();

    void Clear();

    /// The number of lines that contain `part`.
    size_t Count(std::string_view part) const;

    /// Waits until `count` lines contain `part`; false after 30 s without them.
    bool Await(std::string_view part, size_t count = 1) const;

    /// Everything that this thread has done before the call happens before everything that another thread does after
    /// its next call of the journal.
    void Synchronise() const;

private:
    void Append(std::string text);
    size_t CountLocked(std::string_view part) const;

    mutable std::mutex m_mutex; ///< guards the members below
    mutable std::condition_variable m_added;
    std::vector<JournalEntry> m_entries;
};

/// The journal's line for a log line of a source file of the module: LogLine("PaasOnlineImp", "Login()").
std::string LogLine(std::string_view unit, std::string_view text);

/// The text in quotes; `null` without quotes for a null pointer.
std::string Quoted(const char* text);

/// The name of an identifier of the interfaces; the text of any other identifier.
std::string NameOf(const GUID& id);

} // namespace checks
