#include "host/trace/Trace.h"

#include "host/trace/TraceDiagram.h"
#include "host/trace/TraceFlows.h"
#include "host/trace/TraceNames.h"
#include "host/trace/TraceOutput.h"
#include "host/trace/TraceWriter.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <unistd.h>
#include <vector>

namespace host
{

using namespace onlinehost;

namespace
{

/// Groups of tracks. The components' come after these.
enum Group : uint32_t
{
    GROUP_CHAPTERS = 1, // viewers use 0 for themselves
    GROUP_PROGRAM = 2,  ///< calls and marks that belong to no component
    GROUP_COMPONENTS = 3,
};

/// Tracks without a thread.
constexpr int kChapters = 0;
constexpr int kUnanswered = -1;

/// The category of a crossing's slices, and the name of a thread whose first recorded call crosses so.
struct Way
{
    const char* category;
    const char* thread;
};

Way WayOf(Crossing crossing)
{
    switch (crossing)
    {
    case Crossing::HostCall:
        return {"host call", "host"};
    case Crossing::Notification:
        return {"notification", "notification"};
    case Crossing::PlatformCall:
        return {"platform call", "module"};
    case Crossing::PlatformEvent:
        return {"platform event", "platform"};
    case Crossing::HttpRequest:
        return {"http", "platform HTTP"};
    case Crossing::HttpCall:
        return {"http", "module"};
    case Crossing::HttpEvent:
        return {"http", "HTTP"};
    case Crossing::HostPlatformCall:
        return {"host's platform call", "host"};
    case Crossing::HostPlatformEvent:
        return {"host's platform event", "platform"};
    }
    return {"call", "host"};
}

int ThreadId()
{
    thread_local const int id = gettid();
    return id;
}

} // namespace

/// Every operation holds the lock, also while it reads the clock, so that the times of a track never go back.
struct Trace::State
{
    struct Frame
    {
        TraceCall call;
        TraceFlows::Frame flow{};
        DiagramCall* drawn = nullptr;
    };

    explicit State(const Options& options)
    {
        if (!options.file.empty())
        {
            writer = std::make_unique<TraceWriter>(options.file);
        }
        if (!options.diagram.empty())
        {
            diagramFile = std::make_unique<TraceOutput>(options.diagram, "diagram");
            diagram = std::make_unique<TraceDiagram>(options.choice);
        }
    }

    TraceTime Now() const
    {
        return std::chrono::steady_clock::now() - start;
    }

    /// The track of a thread in a group; a new one is named first.
    TraceWriter::Track TrackOf(uint32_t group, int thread, const char* name)
    {
        if (namedGroups.insert(group).second)
        {
            writer->NameGroup(group, GroupName(group));
        }
        const auto number = static_cast<uint32_t>(tracks.size() + 1);
        const auto [track, isNew] = tracks.try_emplace({group, thread}, TraceWriter::Track{group, number});
        if (isNew)
        {
            writer->NameTrack(track->second, thread == process ? "main" : name);
        }
        return track->second;
    }

    std::string GroupName(uint32_t group) const
    {
        switch (group)
        {
        case GROUP_CHAPTERS:
            return "chapters";
        case GROUP_PROGRAM:
            return "onlinehost";
        default:
            return components[group - GROUP_COMPONENTS];
        }
    }

    TraceWriter::Track TrackOf(const TraceCall& call, int thread)
    {
        return TrackOf(GROUP_COMPONENTS + call.component, thread, WayOf(call.crossing).thread);
    }

    void WritePoints(const TraceFlows::Points& points, const TraceWriter::Track& track, TraceTime now)
    {
        for (const TraceFlows::Point& point : points)
        {
            const auto arrow = point.part == TraceFlows::Part::Begin  ? TraceWriter::Arrow::Begin
                               : point.part == TraceFlows::Part::Step ? TraceWriter::Arrow::Step
                                                                      : TraceWriter::Arrow::End;
            writer->Point(now, track, arrow, point.arrow);
        }
    }

    uint32_t AddComponent(const std::string& device)
    {
        const std::lock_guard lock(mutex);
        const size_t number = ++namesakes[device];
        // A device may get a second component when its first one is gone; both have tracks of their own.
        components.push_back(number == 1 ? device : device + " (" + std::to_string(number) + ")");
        if (diagram != nullptr)
        {
            diagram->AddComponent(device);
        }
        return static_cast<uint32_t>(components.size() - 1);
    }

    void Begin(const TraceCall& call)
    {
        const std::lock_guard lock(mutex);
        if (isClosed)
        {
            return;
        }
        const TraceTime now = Now();
        const int thread = ThreadId();
        std::vector<Frame>& frames = threads[thread];
        Frame frame{call};
        if (writer != nullptr)
        {
            Write(frame, frames.empty() ? nullptr : &frames.back(), thread, now);
        }
        if (diagram != nullptr)
        {
            frame.drawn = diagram->Begin(thread, frames.empty() ? nullptr : frames.back().drawn, call, now);
        }
        frames.push_back(std::move(frame));
    }

    void Write(Frame& frame, Frame* outer, int thread, TraceTime now)
    {
        const TraceFlows::Beginning points =
            flows.Begin(frame.call, frame.flow, outer != nullptr ? &outer->flow : nullptr);
        if (outer != nullptr)
        {
            WritePoints(points.around, TrackOf(outer->call, thread), now);
        }
        const TraceWriter::Track track = TrackOf(frame.call, thread);
        writer->Begin(now, track, frame.call.name, WayOf(frame.call.crossing).category, frame.call.arguments);
        WritePoints(points.inside, track, now);
    }

    void End(const TraceResult& result)
    {
        const std::lock_guard lock(mutex);
        if (!isClosed)
        {
            EndFrame(ThreadId(), result);
        }
    }

    void EndFrame(int thread, const TraceResult& result)
    {
        const TraceTime now = Now();
        std::vector<Frame>& frames = threads[thread];
        Frame& frame = frames.back();
        if (writer != nullptr)
        {
            const TraceWriter::Track track = TrackOf(frame.call, thread);
            WritePoints(flows.End(frame.call, result, frame.flow), track, now);
            writer->End(now, track, result);
        }
        if (diagram != nullptr)
        {
            diagram->End(thread, frame.drawn, result, now);
        }
        frames.pop_back();
    }

    void Chapter(const std::string& title)
    {
        const std::lock_guard lock(mutex);
        if (isClosed)
        {
            return;
        }
        if (writer != nullptr)
        {
            EndChapter();
            writer->Begin(Now(), TrackOf(GROUP_CHAPTERS, kChapters, "chapters"), title, "chapter", {});
            isInChapter = true;
        }
        if (diagram != nullptr)
        {
            diagram->Chapter(title, Now());
        }
    }

    void EndChapter()
    {
        if (isInChapter)
        {
            writer->End(Now(), TrackOf(GROUP_CHAPTERS, kChapters, "chapters"), {});
            isInChapter = false;
        }
    }

    void Moment(const char* category, const std::string& text)
    {
        const std::lock_guard lock(mutex);
        if (isClosed || writer == nullptr)
        {
            return;
        }
        const int thread = ThreadId();
        const auto frames = threads.find(thread);
        const bool isInCall = frames != threads.end() && !frames->second.empty();
        writer->Mark(Now(),
                     isInCall ? TrackOf(frames->second.back().call, thread) : TrackOf(GROUP_PROGRAM, thread, "module"),
                     text, category);
    }

    void Close()
    {
        const std::lock_guard lock(mutex);
        if (isClosed)
        {
            return;
        }
        for (auto& [thread, frames] : threads)
        {
            while (!frames.empty())
            {
                EndFrame(thread, {});
            }
        }
        isClosed = true;
        std::optional<Error> failure;
        const auto attempt = [&failure](auto&& step)
        {
            try
            {
                step();
            }
            catch (const Error& error)
            {
                failure = failure ? failure : error;
            }
        };
        if (writer != nullptr)
        {
            attempt([this] { CompleteTrace(); });
        }
        if (diagram != nullptr)
        {
            attempt([this] { CompleteDiagram(); });
        }
        if (failure)
        {
            throw Error(*failure);
        }
    }

    void CompleteTrace()
    {
        EndChapter();
        const TraceFlows::Points points = flows.Close();
        if (!points.empty())
        {
            // An arrow must end in a slice.
            const TraceWriter::Track track = TrackOf(GROUP_PROGRAM, kUnanswered, "unanswered");
            const TraceTime now = Now();
            writer->Begin(now, track, "no answer", "end of the trace", {});
            WritePoints(points, track, now);
            writer->End(now, track, {});
        }
        writer->Complete();
    }

    void CompleteDiagram()
    {
        diagramFile->Write(diagram->Text());
        diagramFile->Complete();
        const std::vector<std::string> unknown = diagram->UnknownDevices();
        if (!unknown.empty())
        {
            std::string known;
            for (const std::string& device : diagram->Devices())
            {
                known += (known.empty() ? "" : ", ") + Printable(device);
            }
            throw Error("the diagram cannot show the device \"" + Printable(unknown.front()) +
                        "\": " + (known.empty() ? "no device was recorded" : "the recorded devices are " + known));
        }
    }

    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    const int process = getpid();
    std::atomic<uint32_t> lastConnection{0};
    std::mutex mutex;
    bool isClosed = false;
    bool isInChapter = false;
    std::unique_ptr<TraceWriter> writer; ///< null when only the diagram is wanted
    TraceFlows flows;
    std::unique_ptr<TraceDiagram> diagram; ///< null when only the trace is wanted
    std::unique_ptr<TraceOutput> diagramFile;
    std::vector<std::string> components; ///< names of their groups
    std::map<std::string, size_t> namesakes;
    std::set<uint32_t> namedGroups;
    std::map<std::pair<uint32_t, int>, TraceWriter::Track> tracks; ///< by group and thread
    std::map<int, std::vector<Frame>> threads;                     ///< calls under way
    std::vector<std::shared_ptr<void>> kept;
};

Trace::Trace(const Options& options) : m_state(std::make_unique<State>(options)) {}

Trace::~Trace()
{
    try
    {
        Close();
    }
    catch (const Error&)
    {
        // A host that needs the reason calls `Close` itself.
    }
}

uint32_t Trace::AddComponent(const std::string& device)
{
    return m_state->AddComponent(device);
}

uint32_t Trace::AddConnection()
{
    return ++m_state->lastConnection;
}

void Trace::Chapter(const std::string& title)
{
    m_state->Chapter(title);
}

void Trace::Moment(const char* category, const std::string& text)
{
    m_state->Moment(category, text);
}

void Trace::Close()
{
    m_state->Close();
}

void Trace::Own(std::shared_ptr<void> object)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->kept.push_back(std::move(object));
}

TraceSpan::TraceSpan(Trace& trace, const TraceCall& call) : m_state(*trace.m_state), m_name(call.name)
{
    m_state.Begin(call);
}

TraceSpan::~TraceSpan()
{
    m_state.End(m_result);
}

void TraceSpan::Output(const char* name, TraceValue value)
{
    m_result.outputs.push_back({name, std::move(value)});
}

void TraceSpan::Answer(std::string text)
{
    m_result.text = std::move(text);
    m_result.isPlain = false;
}

void TraceSpan::Fail(std::string text)
{
    m_result.text = std::move(text);
    m_result.isFailure = true;
}

void TraceSpan::SetFlag(bool value)
{
    m_result.text = value ? "true" : "false";
    m_result.isFailure = !value;
}

void TraceSpan::SetNumber(int64_t value)
{
    SetResult(m_result, m_name, value);
}

} // namespace host
