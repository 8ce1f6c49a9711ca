#include "host/trace/Trace.h"

#include "host/trace/SequenceDiagram.h"
#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <rapidjson/filewritestream.h>
#include <rapidjson/writer.h>
#include <unistd.h>

namespace host
{

using namespace onlinehost;

namespace
{

constexpr size_t kLongestText = 300;
constexpr size_t kRepetitionsShown = 4; // of one call of one component, in the diagram

struct Way
{
    const char* category;
    const char* from; ///< null: the module
    const char* to;
    const char* thread; ///< what a thread is called on which such a call comes first
};

constexpr char kHost[] = "Host";
constexpr char kPlatform[] = "Platform";
constexpr char kHttp[] = "HTTP";

Way WayOf(Crossing crossing)
{
    switch (crossing)
    {
    case Crossing::HostCall:
        return {"host call", kHost, nullptr, "host"};
    case Crossing::Notification:
        return {"notification", nullptr, kHost, "notification"};
    case Crossing::PlatformCall:
        return {"platform call", nullptr, kPlatform, "module"};
    case Crossing::PlatformEvent:
        return {"platform event", kPlatform, nullptr, "platform"};
    case Crossing::HttpRequest:
        return {"http", kPlatform, nullptr, "platform HTTP"};
    case Crossing::HttpCall:
        return {"http", nullptr, kHttp, "module"};
    case Crossing::HttpEvent:
        return {"http", kHttp, nullptr, "HTTP"};
    }
    return {"call", kHost, nullptr, "host"};
}

std::string Shorten(std::string_view text)
{
    const std::string shown = Printable(text);
    return shown.size() <= kLongestText ? shown : shown.substr(0, CutLength(shown, kLongestText)) + "...";
}

std::string ToText(const TraceArgument& argument)
{
    std::string text(argument.name);
    text += '=';
    if (const bool* const flag = std::get_if<bool>(&argument.value))
    {
        return text + (*flag ? "true" : "false");
    }
    if (const int64_t* const number = std::get_if<int64_t>(&argument.value))
    {
        return text + std::to_string(*number);
    }
    return text + Shorten(std::get<std::string>(argument.value));
}

std::FILE* OpenFor(const std::filesystem::path& path, const char* what)
{
    if (path.empty())
    {
        return nullptr;
    }
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
    {
        throw Error(std::string("the ") + what + " cannot be written: " + Printable(path.string()) + ": " +
                    std::strerror(errno));
    }
    return file;
}

struct FileCloser
{
    void operator()(std::FILE* file) const
    {
        std::fclose(file);
    }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Closes the file and finds out whether everything that was written has arrived.
void Complete(File& file, const char* what)
{
    if (file == nullptr)
    {
        return;
    }
    std::FILE* const raw = file.release();
    const bool failed = std::ferror(raw) != 0;
    if (std::fclose(raw) != 0 || failed)
    {
        throw Error(std::string("the ") + what + " could not be written: " + std::strerror(errno));
    }
}

int ThreadId()
{
    thread_local const int id = gettid();
    return id;
}

using Output = rapidjson::Writer<rapidjson::FileWriteStream>;

} // namespace

std::string TraceText(const char* text)
{
    return text != nullptr ? text : "(null)";
}

std::string TraceUrl(const char* url)
{
    const std::string text = TraceText(url);
    const size_t query = text.find('?');
    return query == std::string::npos ? text : text.substr(0, query) + "?...";
}

/// Everything below is done under the lock, the reading of the clock too: so the times never go back, on no track.
struct Trace::State
{
    struct Frame
    {
        std::string from;
        std::string to;
        bool isDrawn = false;
        uint64_t arrow = 0; ///< to be ended by the first notification inside; 0 for none
        std::string key{};  ///< not empty: if there is no such notification, the arrow goes on waiting under it
    };
    using Track = std::vector<Frame>;

    explicit State(const Options& options)
        : file(OpenFor(options.file, "trace")),
          diagramFile(OpenFor(options.diagram, "diagram"))
    {
        if (file != nullptr)
        {
            stream = std::make_unique<rapidjson::FileWriteStream>(file.get(), buffer, sizeof(buffer));
            output = std::make_unique<Output>(*stream);
            output->SetMaxDecimalPlaces(3);
            output->StartObject();
            output->Key("displayTimeUnit");
            output->String("ms");
            output->Key("traceEvents");
            output->StartArray();
            StartRecord("M", "process_name", nullptr, ThreadId());
            WriteNameArgument("onlinehost");
        }
    }

    void WriteText(const std::string& text)
    {
        output->String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }

    /// Begins a record; the caller adds to it and ends the object.
    void StartRecord(const char* phase, const char* name, const char* category, int thread)
    {
        const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
        output->StartObject();
        output->Key("ph");
        output->String(phase);
        if (name != nullptr)
        {
            output->Key("name");
            output->String(name);
        }
        if (category != nullptr)
        {
            output->Key("cat");
            output->String(category);
        }
        output->Key("ts");
        output->Double(time.count());
        output->Key("pid");
        output->Int(process);
        output->Key("tid");
        output->Int(thread);
    }

    void WriteNameArgument(const char* name)
    {
        output->Key("args");
        output->StartObject();
        output->Key("name");
        output->String(name);
        output->EndObject();
        output->EndObject();
    }

    /// The calling thread's track; a new one gets a name after what is recorded first on it.
    Track& TrackOf(int thread, const char* name)
    {
        const auto [track, isNew] = tracks.try_emplace(thread);
        if (isNew && output != nullptr)
        {
            StartRecord("M", "thread_name", nullptr, thread);
            WriteNameArgument(thread == process ? "main" : name);
        }
        return track->second;
    }

    void WriteArrow(const char* phase, uint64_t id, int thread)
    {
        if (output == nullptr)
        {
            return;
        }
        StartRecord(phase, "answer", "answer", thread);
        output->Key("id");
        output->Uint64(id);
        if (*phase == 'f')
        {
            // It ends in the slice that is open, not in the next one.
            output->Key("bp");
            output->String("e");
        }
        output->EndObject();
    }

    void WriteBegin(const char* name, const char* category, const std::string& device, TraceArguments arguments,
                    int thread)
    {
        if (output == nullptr)
        {
            return;
        }
        StartRecord("B", name, category, thread);
        output->Key("args");
        output->StartObject();
        output->Key("device");
        WriteText(Shorten(device));
        for (const TraceArgument& argument : arguments)
        {
            output->Key(argument.name);
            WriteValue(argument);
        }
        output->EndObject();
        output->EndObject();
    }

    void WriteValue(const TraceArgument& argument)
    {
        if (const bool* const flag = std::get_if<bool>(&argument.value))
        {
            output->Bool(*flag);
        }
        else if (const int64_t* const number = std::get_if<int64_t>(&argument.value))
        {
            output->Int64(*number);
        }
        else
        {
            WriteText(Shorten(std::get<std::string>(argument.value)));
        }
    }

    void WriteEnd(const std::string& result, int thread)
    {
        if (output == nullptr)
        {
            return;
        }
        StartRecord("E", nullptr, nullptr, thread);
        if (!result.empty())
        {
            output->Key("args");
            output->StartObject();
            output->Key("result");
            WriteText(Shorten(result));
            output->EndObject();
        }
        output->EndObject();
    }

    void EndFrame(Track& track, const std::string& result, int thread)
    {
        const Frame frame = std::move(track.back());
        track.pop_back();
        if (frame.arrow != 0 && frame.key.empty())
        {
            WriteArrow("f", frame.arrow, thread);
        }
        WriteEnd(result, thread);
        if (frame.isDrawn && !result.empty())
        {
            diagram.Answer(frame.to, frame.from, result);
        }
    }

    /// Whether a call is drawn: inside another one as that one is, otherwise unless it was drawn often enough.
    bool Draw(const Track& track, const std::string& device, const char* name)
    {
        if (diagramFile == nullptr)
        {
            return false;
        }
        if (!track.empty())
        {
            return track.back().isDrawn;
        }
        const bool isDrawn = ++drawn[device + ' ' + name] <= kRepetitionsShown;
        if (!isDrawn)
        {
            diagram.Repetition(name);
        }
        return isDrawn;
    }

    std::vector<uint64_t> Begin(const Way& way, const std::string& device, const char* name, TraceArguments arguments,
                                size_t answers)
    {
        const std::lock_guard lock(mutex);
        if (isClosed)
        {
            return {};
        }
        const int thread = ThreadId();
        Track& track = TrackOf(thread, way.thread);

        std::vector<uint64_t> arrows(answers);
        for (uint64_t& arrow : arrows)
        {
            arrow = ++lastArrow;
        }
        // An arrow begins in the slice that is open: in the host's call if this is one that the module makes for it.
        const bool isInside = !track.empty();
        const auto beginArrows = [&]
        { std::for_each(arrows.begin(), arrows.end(), [&](uint64_t arrow) { WriteArrow("s", arrow, thread); }); };
        if (isInside)
        {
            beginArrows();
        }
        WriteBegin(name, way.category, device, arguments, thread);
        if (!isInside)
        {
            beginArrows();
        }
        if (isInside && way.to == kHost)
        {
            Notify(track.back(), thread);
        }

        const std::string module = "Module of " + device;
        Frame frame{way.from != nullptr ? way.from : module, way.to != nullptr ? way.to : module,
                    Draw(track, device, name)};
        if (frame.isDrawn)
        {
            std::string text = std::string(name) + "(";
            const char* separator = "";
            for (const TraceArgument& argument : arguments)
            {
                text += separator + ToText(argument);
                separator = ", ";
            }
            diagram.Message(frame.from, frame.to, text + ")");
        }
        track.push_back(std::move(frame));
        return arrows;
    }

    /// A notification is made inside of an event.
    void Notify(Frame& event, int thread)
    {
        if (event.arrow == 0)
        {
            return;
        }
        WriteArrow("f", std::exchange(event.arrow, 0), thread);
        if (!event.key.empty())
        {
            Find(event.key, true);
        }
    }

    void End(const std::vector<uint64_t>& arrows, const std::string& result)
    {
        const std::lock_guard lock(mutex);
        if (isClosed)
        {
            return;
        }
        const int thread = ThreadId();
        for (const uint64_t arrow : arrows)
        {
            WriteArrow("f", arrow, thread);
        }
        EndFrame(tracks[thread], result, thread);
    }

    void Announce(const std::string& key, uint64_t arrow)
    {
        const std::lock_guard lock(mutex);
        if (!isClosed)
        {
            awaited[key].push_back(arrow);
        }
    }

    /// The oldest arrow whose end is known by `key`, 0 for none.
    uint64_t Find(const std::string& key, bool take)
    {
        const auto found = awaited.find(key);
        if (found == awaited.end())
        {
            return 0;
        }
        const uint64_t arrow = found->second.front();
        if (take)
        {
            found->second.pop_front();
            Forget(found);
        }
        return arrow;
    }

    void Withdraw(const std::string& key)
    {
        const std::lock_guard lock(mutex);
        const auto found = awaited.find(key);
        if (isClosed || found == awaited.end())
        {
            return;
        }
        // The one announced last is the caller's.
        WriteArrow("f", found->second.back(), ThreadId());
        found->second.pop_back();
        Forget(found);
    }

    void Forget(std::map<std::string, std::deque<uint64_t>>::iterator arrows)
    {
        if (arrows->second.empty())
        {
            awaited.erase(arrows);
        }
    }

    enum class Part
    {
        Step, ///< of what leads to the answer
        Answer,
        SharedAnswer, ///< if a notification is made of it
    };

    void Continue(const std::string& key, Part part)
    {
        const std::lock_guard lock(mutex);
        if (isClosed)
        {
            return;
        }
        const uint64_t arrow = Find(key, part == Part::Answer);
        if (arrow == 0)
        {
            return;
        }
        const int thread = ThreadId();
        Frame& frame = tracks[thread].back();
        WriteArrow("t", arrow, thread);
        if (part != Part::Step)
        {
            frame.arrow = arrow;
            frame.key = part == Part::SharedAnswer ? key : "";
        }
    }

    bool IsOutermost()
    {
        const std::lock_guard lock(mutex);
        return !isClosed && tracks[ThreadId()].size() == 1;
    }

    void Moment(const char* category, const std::string& text)
    {
        const std::lock_guard lock(mutex);
        if (isClosed || output == nullptr)
        {
            return;
        }
        const int thread = ThreadId();
        TrackOf(thread, "module");
        StartRecord("i", Shorten(text).c_str(), category, thread);
        output->Key("s");
        output->String("t");
        output->EndObject();
    }

    void EndEverything()
    {
        for (auto& [thread, track] : tracks)
        {
            while (!track.empty())
            {
                EndFrame(track, "", thread);
            }
        }
        if (awaited.empty())
        {
            return;
        }
        // Arrows that no notification has answered must end somewhere all the same.
        const int thread = ThreadId();
        TrackOf(thread, "host");
        WriteBegin("no notification", "end of the trace", "all", {}, thread);
        for (const auto& [key, arrows] : awaited)
        {
            for (const uint64_t arrow : arrows)
            {
                WriteArrow("f", arrow, thread);
            }
        }
        WriteEnd("", thread);
        awaited.clear();
    }

    void Close()
    {
        const std::lock_guard lock(mutex);
        if (std::exchange(isClosed, true))
        {
            return;
        }
        EndEverything();
        if (output != nullptr)
        {
            output->EndArray();
            output->EndObject();
            stream->Flush();
        }
        if (diagramFile != nullptr)
        {
            const std::string text = diagram.Text();
            std::fwrite(text.data(), 1, text.size(), diagramFile.get());
        }
        Complete(file, "trace");
        Complete(diagramFile, "diagram");
    }

    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    const int process = getpid();
    std::mutex mutex;
    bool isClosed = false;
    File file;
    File diagramFile;
    char buffer[65536];
    std::unique_ptr<rapidjson::FileWriteStream> stream;
    std::unique_ptr<Output> output; ///< null when only the diagram is wanted
    SequenceDiagram diagram;
    std::map<int, Track> tracks;
    std::map<std::string, std::deque<uint64_t>> awaited; ///< arrows by what their answer is known by
    std::map<std::string, size_t> drawn;                 ///< calls in the diagram
    uint64_t lastArrow = 0;
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
        // Whoever wants to know closes the trace himself.
    }
}

void Trace::Close()
{
    m_state->Close();
}

void Trace::Moment(const char* category, const std::string& text)
{
    m_state->Moment(category, text);
}

void Trace::Own(std::shared_ptr<void> object)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->kept.push_back(std::move(object));
}

TraceSpan::TraceSpan(Trace& trace, Crossing crossing, const std::string& device, const char* name,
                     TraceArguments arguments, size_t answers)
    : m_state(*trace.m_state),
      m_arrows(m_state.Begin(WayOf(crossing), device, name, arguments, answers))
{
}

TraceSpan::~TraceSpan()
{
    m_state.End(m_arrows, m_result);
}

void TraceSpan::WillBeAnswered(const std::string& key)
{
    if (!m_arrows.empty())
    {
        m_state.Announce(key, m_arrows.back());
        m_arrows.pop_back();
    }
}

void TraceSpan::WillNotBeAnswered(const std::string& key)
{
    m_state.Withdraw(key);
}

void TraceSpan::BelongsTo(const std::string& key)
{
    m_state.Continue(key, Trace::State::Part::Step);
}

void TraceSpan::Answers(const std::string& key)
{
    m_state.Continue(key, Trace::State::Part::Answer);
}

void TraceSpan::MayAnswer(const std::string& key)
{
    m_state.Continue(key, Trace::State::Part::SharedAnswer);
}

void TraceSpan::AnswersIfOutermost(const std::string& key)
{
    if (m_state.IsOutermost())
    {
        Answers(key);
    }
}

} // namespace host
