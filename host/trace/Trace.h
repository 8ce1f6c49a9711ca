#pragma once

#include "host/trace/TraceCall.h"
#include "host/trace/TraceDiagram.h"

#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace host
{

/// Records the calls across the boundary of the module.
///
/// The trace is a file of the trace-event format that Perfetto and about:tracing open: each component has a group of
/// tracks, one for each thread, each call is a slice, and arrows lead from calls to the notifications that answer them.
/// The diagram is a Mermaid sequence diagram for people. Counting of references is not recorded, nor are questions for
/// the level of the log.
///
/// `RecordComponent` puts recording objects around a component. Without a `Trace` no recording object stands between
/// the component and the host.
///
/// [any] Every operation may be called from any thread, also from inside a recorded call.
class Trace
{
public:
    struct Options
    {
        std::filesystem::path file{};    ///< empty: no trace
        std::filesystem::path diagram{}; ///< empty: no diagram
        DiagramChoice choice{};          ///< what the diagram shows
    };

    /// `Error` when a file cannot be written.
    explicit Trace(const Options& options);
    /// Closes the trace. Does not report a failure.
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    /// The number under which the calls of a new component on `device` are recorded.
    uint32_t AddComponent(const std::string& device);

    /// The number of a new connection of the platform.
    uint32_t AddConnection();

    /// Begins a chapter of the recording and ends the one before.
    void Chapter(const std::string& title);

    /// A moment on the track of the calling thread, such as a line of the log.
    void Moment(const char* category, const std::string& text);

    /// Completes the files: calls and chapters that are open end in them now, and nothing is recorded any more. May be
    /// called at any time, while calls are being recorded on other threads too; a second call does nothing. `Error`
    /// when a file could not be written, or when a chosen device was not recorded; both files are complete then as far
    /// as they can be.
    void Close();

    /// Makes an object that lives as long as the trace. Recording objects may be in use to the last moment, on any
    /// thread, so none of them goes earlier.
    template <typename T, typename... Arguments>
    T& Keep(Arguments&&... arguments)
    {
        auto object = std::make_shared<T>(std::forward<Arguments>(arguments)...);
        T& kept = *object;
        Own(std::move(object));
        return kept;
    }

private:
    friend class TraceSpan;
    struct State;

    void Own(std::shared_ptr<void> object);

    const std::unique_ptr<State> m_state;
};

/// One call across the boundary, from its beginning to its end on one thread.
class TraceSpan
{
public:
    /// Begins the call on the calling thread; the trace must outlive the span.
    TraceSpan(Trace& trace, const TraceCall& call);
    /// Ends the call.
    ~TraceSpan();
    TraceSpan(const TraceSpan&) = delete;
    TraceSpan& operator=(const TraceSpan&) = delete;

    /// Records what the operation wrote to an output argument.
    void Output(const char* name, TraceValue value);

    /// Records a result that says more than success or failure.
    void Answer(std::string text);
    /// Records that the operation failed; `text` gives the reason.
    void Fail(std::string text);

    /// Records what the operation returned and passes it on.
    template <typename T>
    T Result(T value)
    {
        if constexpr (std::is_same_v<T, bool>)
        {
            SetFlag(value);
        }
        else if constexpr (std::is_integral_v<T>)
        {
            SetNumber(static_cast<int64_t>(value));
        }
        else
        {
            Answer(value);
        }
        return value;
    }

    bool IsFailure() const
    {
        return m_result.isFailure;
    }

private:
    void SetFlag(bool value);
    void SetNumber(int64_t value);

    Trace::State& m_state;
    const char* const m_name;
    TraceResult m_result;
};

} // namespace host
