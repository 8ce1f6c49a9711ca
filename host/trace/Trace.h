#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace host
{

/// How a call crosses the boundary of the module.
enum class Crossing
{
    HostCall,      ///< from the host
    Notification,  ///< to the host
    PlatformCall,  ///< to the platform
    PlatformEvent, ///< from the platform
    HttpRequest,   ///< from the platform, which asks for something over HTTP
    HttpCall,      ///< to the HTTP object
    HttpEvent,     ///< from the HTTP object
};

struct TraceArgument
{
    const char* name;
    std::variant<bool, int64_t, std::string> value;
};
using TraceArguments = std::initializer_list<TraceArgument>;

/// A text of a caller, which may be null.
std::string TraceText(const char* text);

/// The same for an address, of which the query is left out: tokens are in it, and traces are passed around.
std::string TraceUrl(const char* url);

/// Records what crosses the boundary of the module.
///
/// The trace is a file of the trace-event format that Perfetto and about:tracing open: a track for each thread, each call a
/// slice on it, and arrows from a call to the notification that answers it. The diagram is the same as a Mermaid sequence
/// diagram, of which calls that repeat many times are left out. Counting of references is not recorded, nor are questions
/// for the level of the log.
///
/// Who wants to be recorded goes through the objects of host/TraceModule.h and host/TracePlatform.h; who does not pays
/// nothing. Everything may be called from any thread.
class Trace
{
public:
    struct Options
    {
        std::filesystem::path file;    ///< empty: no trace
        std::filesystem::path diagram; ///< empty: no diagram
    };

    /// `Error` when a file cannot be written.
    explicit Trace(const Options& options);
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    /// Ends what is open and completes the files; nothing is recorded any more. `Error` when they could not be written.
    void Close();

    /// A moment on the track of the calling thread, such as a line of the log.
    void Moment(const char* category, const std::string& text);

    /// Makes an object that lives as long as the trace. Objects that stand between two others may be in use to the last
    /// moment, on any thread, so none of them goes earlier.
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

    std::unique_ptr<State> m_state;
};

/// One call across the boundary, from its beginning to its end on one thread.
class TraceSpan
{
public:
    /// `device` names the component. `answers` is how many later answers the call hopes for.
    TraceSpan(Trace& trace, Crossing crossing, const std::string& device, const char* name, TraceArguments arguments,
              size_t answers = 0);
    ~TraceSpan();
    TraceSpan(const TraceSpan&) = delete;
    TraceSpan& operator=(const TraceSpan&) = delete;

    /// One of the answers will be known by `key`. Answers that were not announced do not come.
    void WillBeAnswered(const std::string& key);
    /// The announced answer does not come.
    void WillNotBeAnswered(const std::string& key);

    /// This event belongs to the call whose answer is known by `key`, but is not its answer yet.
    void BelongsTo(const std::string& key);
    /// This event is the answer; the first notification made inside it is where the arrow ends, or the event itself.
    void Answers(const std::string& key);
    /// The same for an event that several listeners get: it is the answer for the one that makes a notification of it.
    void MayAnswer(const std::string& key);
    /// The same, unless this call was made inside another one.
    void AnswersIfOutermost(const std::string& key);

    /// Records what the call returned and passes it on.
    template <typename T>
    T Result(T value)
    {
        if constexpr (std::is_same_v<T, bool>)
        {
            m_result = value ? "true" : "false";
        }
        else if constexpr (std::is_integral_v<T>)
        {
            m_result = std::to_string(value);
        }
        else
        {
            m_result = value;
        }
        return value;
    }

private:
    Trace::State& m_state;
    std::vector<uint64_t> m_arrows; ///< begun and not announced, the last first
    std::string m_result;
};

} // namespace host
