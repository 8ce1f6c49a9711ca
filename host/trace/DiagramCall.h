#pragma once

#include "host/trace/TraceCall.h"
#include "host/trace/TraceNames.h"
#include "host/trace/TraceWriter.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace host
{

/// One arrow of a diagram: a call with the calls inside it, or several equal calls.
class DiagramCall
{
public:
    using Calls = std::vector<std::unique_ptr<DiagramCall>>;

    DiagramCall(const TraceCall& call, TraceTime time);

    /// A call inside this one begins. The result is valid until its end.
    DiagramCall* BeginInside(const TraceCall& call, TraceTime time);
    /// The call ends, or one more listener has handled its event.
    void End(const TraceResult& result, TraceTime time);

    /// Whether `other` is the same event for another listener; then that listener is added.
    bool TakeListener(const TraceCall& other);

    /// Whether both can be one arrow: the same calls inside each other, with the same codes and results.
    bool IsAlike(const DiagramCall& other) const;
    /// Adds an equal call that came later.
    void Add(DiagramCall& later);

    /// Whether both calls are about users, and no user is in both. Then their order does not matter.
    bool IsAboutOthersThan(const DiagramCall& other) const;
    /// Whether the call, or one inside it, is about one of the subjects.
    bool IsAbout(const std::vector<TraceSubject>& subjects) const;
    /// Whether the host only reads from the module.
    bool IsRead() const;
    /// Whether the call is an action of the host. Later events may be its consequences.
    bool IsAction() const;
    /// Whether the call may go to several listeners, one after the other.
    bool HasListeners() const;
    bool IsFailure() const
    {
        return m_isFailure;
    }

    Crossing Way() const
    {
        return m_crossing;
    }
    uint32_t Component() const
    {
        return m_component;
    }
    /// Interface and operation.
    const char* Name() const
    {
        return m_name;
    }
    const Calls& Inside() const
    {
        return m_inside;
    }

    /// The number of calls, those inside included.
    size_t CountCalls() const;

    /// "Login(user 2, force=true)", with outputs, result and number.
    std::string Text() const;
    /// "0.012 s"; for several calls the times of the first and the last.
    std::string TimeText() const;

private:
    void SettleLast();
    void NoteUsers();
    void NoteUsersOf(const DiagramCall& other);

    const Crossing m_crossing;
    const uint32_t m_component;
    const uint32_t m_connection;
    const char* const m_name;
    const TraceTime m_begin;
    TraceTime m_end;
    size_t m_count = 1;
    TraceArguments m_arguments;
    TraceArguments m_outputs;
    TraceArguments m_lastArguments; ///< of the last of several calls
    TraceArguments m_lastOutputs;
    std::string m_result; ///< empty when it says no more than success
    bool m_isFailure = false;
    Calls m_inside;
    std::set<const void*> m_listeners;
    std::set<std::string> m_users; ///< users of the call
    bool m_isAboutMany = false;    ///< the call has more users than `m_users` holds
};

/// "0.012"
std::string SecondsText(TraceTime time);

} // namespace host
