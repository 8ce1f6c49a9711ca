#include "host/trace/TraceWriter.h"

#include "host/trace/TraceOutput.h"

#include <array>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace host
{

namespace
{

constexpr size_t kLongestText = 300;
constexpr int kDecimalPlaces = 3; // of microseconds
constexpr size_t kLargestBuffer = 65'536;

} // namespace

struct TraceWriter::File
{
    explicit File(const std::filesystem::path& path) : output(path, "trace")
    {
        json.SetMaxDecimalPlaces(kDecimalPlaces);
    }

    void Text(const std::string& text)
    {
        json.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }

    void Member(const char* key, const std::string& text)
    {
        json.Key(key);
        Text(text);
    }

    /// Begins a record; the caller adds to it and ends the object.
    void Start(const char* phase, const Track& track)
    {
        json.StartObject();
        json.Key("ph");
        json.String(phase);
        json.Key("pid");
        json.Uint(track.group);
        json.Key("tid");
        json.Uint(track.number);
    }

    void Start(const char* phase, const Track& track, TraceTime time)
    {
        Start(phase, track);
        json.Key("ts");
        json.Double(time.count());
    }

    /// A record about a track or a group, with one argument.
    template <typename WriteValue>
    void Describe(const Track& track, const char* what, const char* key, WriteValue writeValue)
    {
        Start("M", track);
        Member("name", what);
        json.Key("args");
        json.StartObject();
        json.Key(key);
        writeValue();
        json.EndObject();
        EndRecord();
    }

    void Value(const TraceArgument& argument)
    {
        json.Key(argument.name);
        if (const bool* const flag = std::get_if<bool>(&argument.value))
        {
            json.Bool(*flag);
        }
        else if (const int64_t* const number = std::get_if<int64_t>(&argument.value))
        {
            json.Int64(*number);
        }
        else
        {
            Text(Shorten(ValueText(argument.value), kLongestText));
        }
    }

    /// Ends a record.
    void EndRecord()
    {
        json.EndObject();
        if (buffer.GetSize() > kLargestBuffer)
        {
            WriteBuffer();
        }
    }

    void WriteBuffer()
    {
        output.Write({buffer.GetString(), buffer.GetSize()});
        buffer.Clear();
    }

    TraceOutput output;
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> json{buffer};
};

TraceWriter::TraceWriter(const std::filesystem::path& path) : m_file(std::make_unique<File>(path))
{
    auto& json = m_file->json;
    json.StartObject();
    json.Key("displayTimeUnit");
    json.String("ms");
    json.Key("traceEvents");
    json.StartArray();
}

TraceWriter::~TraceWriter() = default;

void TraceWriter::NameGroup(uint32_t group, const std::string& name)
{
    m_file->Describe({group, 0}, "process_name", "name", [&] { m_file->Text(Shorten(name, kLongestText)); });
    m_file->Describe({group, 0}, "process_sort_index", "sort_index", [&] { m_file->json.Uint(group); });
}

void TraceWriter::NameTrack(const Track& track, const std::string& name)
{
    m_file->Describe(track, "thread_name", "name", [&] { m_file->Text(Shorten(name, kLongestText)); });
}

void TraceWriter::Begin(TraceTime time, const Track& track, const std::string& name, const char* category,
                        const TraceArguments& arguments)
{
    m_file->Start("B", track, time);
    m_file->Member("name", Shorten(name, kLongestText));
    m_file->Member("cat", category);
    m_file->json.Key("args");
    m_file->json.StartObject();
    for (const TraceArgument& argument : arguments)
    {
        m_file->Value(argument);
    }
    m_file->json.EndObject();
    m_file->EndRecord();
}

void TraceWriter::End(TraceTime time, const Track& track, const TraceResult& result)
{
    m_file->Start("E", track, time);
    if (!result.text.empty() || !result.outputs.empty())
    {
        m_file->json.Key("args");
        m_file->json.StartObject();
        if (!result.text.empty())
        {
            m_file->Member("result", Shorten(result.text, kLongestText));
        }
        for (const TraceArgument& output : result.outputs)
        {
            m_file->Value(output);
        }
        m_file->json.EndObject();
    }
    m_file->EndRecord();
}

void TraceWriter::Mark(TraceTime time, const Track& track, const std::string& name, const char* category)
{
    m_file->Start("i", track, time);
    m_file->Member("name", Shorten(name, kLongestText));
    m_file->Member("cat", category);
    m_file->Member("s", "t");
    m_file->EndRecord();
}

void TraceWriter::Point(TraceTime time, const Track& track, Arrow part, uint64_t id)
{
    const std::array<char, 2> phase{static_cast<char>(part), '\0'};
    m_file->Start(phase.data(), track, time);
    m_file->Member("name", "answer");
    m_file->Member("cat", "answer");
    m_file->json.Key("id");
    m_file->json.Uint64(id);
    if (part == Arrow::End)
    {
        // The arrow ends in the open slice, not in the next one.
        m_file->Member("bp", "e");
    }
    m_file->EndRecord();
}

void TraceWriter::Complete()
{
    m_file->json.EndArray();
    m_file->json.EndObject();
    m_file->WriteBuffer();
    m_file->output.Complete();
}

} // namespace host
