#pragma once

#include "host/trace/TraceCall.h"

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace host
{

/// Matches answers to calls: says in which slices the arrows begin, pass and end.
///
/// An arrow stands for one answer that the platform or the HTTP object has to give to a call of the module. It begins
/// in the slice in which the module made the call: the host's operation, or the platform's event that the module was
/// serving. It passes through the events that belong to it and ends in the first notification that the module makes of
/// the answer, or in the event itself when it makes none. Knows operations by their names and writes nothing. Not for
/// several threads at once.
class TraceFlows
{
public:
    enum class Part
    {
        Begin,
        Step,
        End,
    };
    struct Point
    {
        Part part;
        uint64_t arrow;
    };
    using Points = std::vector<Point>;

    /// The state of a call under way.
    struct Frame
    {
        std::vector<uint64_t> begun{}; ///< arrows of the answers that the call waits for
        uint64_t answer = 0;           ///< to be ended by the first notification inside; 0 for none
        std::string shared{};          ///< not empty: without such a notification the arrow waits on under this key
    };

    /// The arrow points of a call's beginning.
    struct Beginning
    {
        Points around{}; ///< in the slice around the call, before the call's own begins
        Points inside{}; ///< in the call's own slice
    };

    /// A call begins; `outer` is the frame of the call around it on the same thread, null for none.
    Beginning Begin(const TraceCall& call, Frame& frame, Frame* outer);

    /// The call ends; the points stand in its slice.
    Points End(const TraceCall& call, const TraceResult& result, Frame& frame);

    /// Ends the arrows whose answers have not come.
    Points Close();

private:
    struct Rule;
    static const Rule* RuleOf(const char* name);

    std::vector<std::string> Keys(const Rule& rule, const TraceCall& call, const TraceArguments& outputs) const;
    uint64_t Find(const std::string& key, bool take);
    void Answer(const Rule& rule, const TraceCall& call, Frame& frame, bool isOutermost, Points& points);
    void Await(const Rule& rule, const std::string& key, uint64_t arrow, Points& points);
    bool Withdraw(const std::string& key, uint64_t arrow);

    std::map<std::string, std::deque<uint64_t>> m_awaited; ///< arrows by the keys of their answers
    std::set<std::string> m_early;                         ///< answers that came before their calls returned
    std::map<uint32_t, std::string> m_users;               ///< by connection
    uint64_t m_lastArrow = 0;
};

} // namespace host
