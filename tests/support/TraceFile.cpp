#include "tests/support/TraceFile.h"

#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <rapidjson/document.h>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>

namespace
{

const rapidjson::Value& Member(const rapidjson::Value& object, const char* name)
{
    const auto member = object.FindMember(name);
    if (member == object.MemberEnd())
    {
        throw std::runtime_error(std::string("a record lacks ") + name);
    }
    return member->value;
}

std::string TextMember(const rapidjson::Value& object, const char* name)
{
    return object.HasMember(name) ? object[name].GetString() : "";
}

std::string ToText(const rapidjson::Value& value)
{
    if (value.IsBool())
    {
        return value.GetBool() ? "true" : "false";
    }
    return value.IsString() ? value.GetString() : std::to_string(value.GetInt64());
}

TraceFile::Record ToRecord(const rapidjson::Value& value)
{
    TraceFile::Record record;
    record.phase = Member(value, "ph").GetString();
    record.name = TextMember(value, "name");
    record.category = TextMember(value, "cat");
    record.group = Member(value, "pid").GetInt();
    record.track = Member(value, "tid").GetInt();
    if (record.phase != "M")
    {
        record.time = Member(value, "ts").GetDouble();
    }
    if (value.HasMember("id"))
    {
        record.id = value["id"].GetUint64();
    }
    if (value.HasMember("args"))
    {
        for (const auto& argument : value["args"].GetObject())
        {
            record.arguments[argument.name.GetString()] = ToText(argument.value);
        }
    }
    return record;
}

/// The state of an arrow while its records are read.
struct Arrow
{
    std::string begin;
    std::string end;
    bool isEnded = false;
};

/// Walks through the records as a viewer does.
class Walk
{
public:
    void Take(const TraceFile::Record& record)
    {
        if (record.phase == "M")
        {
            return;
        }
        if (record.time < m_times[record.track])
        {
            Say("the time goes back at " + record.name);
        }
        m_times[record.track] = record.time;
        if (m_groups.try_emplace(record.track, record.group).first->second != record.group)
        {
            Say("track " + std::to_string(record.track) + " is in two groups");
        }

        std::vector<std::string>& slices = m_slices[record.track];
        if (record.phase == "B")
        {
            slices.push_back(record.name);
        }
        else if (record.phase == "E")
        {
            slices.empty() ? Say("an end without a beginning") : slices.pop_back();
        }
        else if (record.phase == "s" || record.phase == "t" || record.phase == "f")
        {
            TakeArrow(record, slices);
        }
        else if (record.phase != "i")
        {
            Say("a record of the unknown phase " + record.phase);
        }
    }

    void End()
    {
        for (const auto& [thread, slices] : m_slices)
        {
            if (!slices.empty())
            {
                Say(slices.back() + " has no end");
            }
        }
        for (const auto& [id, arrow] : m_arrows)
        {
            if (!arrow.isEnded)
            {
                Say("the arrow from " + arrow.begin + " has no end");
            }
        }
    }

    const std::vector<std::string>& Problems() const
    {
        return m_problems;
    }

    const std::map<uint64_t, Arrow>& Arrows() const
    {
        return m_arrows;
    }

private:
    void TakeArrow(const TraceFile::Record& record, const std::vector<std::string>& slices)
    {
        if (slices.empty())
        {
            Say("an arrow outside of every slice");
            return;
        }
        const auto [arrow, isNew] = m_arrows.try_emplace(record.id);
        if (isNew != (record.phase == "s") || arrow->second.isEnded)
        {
            Say("arrow " + std::to_string(record.id) + " is out of order");
        }
        if (isNew)
        {
            arrow->second.begin = slices.back();
        }
        if (record.phase == "f")
        {
            arrow->second.isEnded = true;
            arrow->second.end = slices.back();
        }
    }

    void Say(const std::string& problem)
    {
        m_problems.push_back(problem);
    }

    std::map<int, double> m_times;
    std::map<int, int> m_groups;
    std::map<int, std::vector<std::string>> m_slices;
    std::map<uint64_t, Arrow> m_arrows;
    std::vector<std::string> m_problems;
};

Walk WalkThrough(const std::vector<TraceFile::Record>& records)
{
    Walk walk;
    std::for_each(records.begin(), records.end(), [&](const TraceFile::Record& record) { walk.Take(record); });
    walk.End();
    return walk;
}

} // namespace

TraceFile::TraceFile(const std::filesystem::path& path)
{
    rapidjson::Document document;
    const std::string text = ReadFile(path);
    document.Parse<rapidjson::kParseValidateEncodingFlag>(text.data(), text.size());
    if (document.HasParseError() || !document.IsObject())
    {
        throw std::runtime_error("the trace is not JSON, at " + std::to_string(document.GetErrorOffset()));
    }
    for (const auto& record : Member(document, "traceEvents").GetArray())
    {
        m_records.push_back(ToRecord(record));
    }
}

std::vector<std::string> TraceFile::Problems() const
{
    std::vector<std::string> problems = WalkThrough(m_records).Problems();
    const std::map<int, std::string> tracks = Names("thread_name");
    const std::map<int, std::string> groups = Names("process_name");
    for (const Record& record : m_records)
    {
        if (record.phase != "M" && (!tracks.contains(record.track) || !groups.contains(record.group)))
        {
            problems.push_back("track " + std::to_string(record.track) + " or its group has no name");
            break;
        }
    }
    return problems;
}

size_t TraceFile::Count(const std::string& name) const
{
    return static_cast<size_t>(std::count_if(m_records.begin(), m_records.end(),
                                             [&name](const Record& record)
                                             { return record.phase == "B" && record.name == name; }));
}

std::vector<std::pair<std::string, std::string>> TraceFile::Arrows() const
{
    std::vector<std::pair<std::string, std::string>> ends;
    const Walk walk = WalkThrough(m_records);
    for (const auto& [id, arrow] : walk.Arrows())
    {
        ends.emplace_back(arrow.begin, arrow.end);
    }
    return ends;
}

std::map<int, std::string> TraceFile::Names(const char* what) const
{
    std::map<int, std::string> names;
    for (const Record& record : m_records)
    {
        if (record.phase == "M" && record.name == what)
        {
            names[record.name == "process_name" ? record.group : record.track] = record.arguments.at("name");
        }
    }
    return names;
}

std::string TraceFile::TrackName(const Record& record) const
{
    return Names("process_name").at(record.group) + "/" + Names("thread_name").at(record.track);
}

std::vector<std::string> TraceFile::Tracks() const
{
    std::vector<std::string> tracks;
    for (const Record& record : m_records)
    {
        if (record.phase == "M" && record.name == "thread_name")
        {
            tracks.push_back(TrackName(record));
        }
    }
    return tracks;
}

std::vector<std::string> TraceFile::Slices(const std::string& track) const
{
    std::vector<std::string> slices;
    std::string depth;
    for (const Record& record : m_records)
    {
        if (record.phase == "M" || TrackName(record) != track)
        {
            continue;
        }
        if (record.phase == "B" || record.phase == "i")
        {
            slices.push_back(depth + record.name);
        }
        if (record.phase == "B")
        {
            depth += '.';
        }
        else if (record.phase == "E" && !depth.empty())
        {
            depth.pop_back();
        }
    }
    return slices;
}

std::vector<std::string> DiagramProblems(const std::string& text)
{
    static const std::regex kParticipant(R"(    participant (P\d+) as (?:[^;#]|#\d+;)+)");
    static const std::regex kMessage(R"(    (P\d+)(->>|-x)(P\d+): (?:[^;#]|#\d+;)+)");
    static const std::regex kNote(R"(    Note over (P\d+)(?:,(P\d+))?: (?:[^;#]|#\d+;)+)");

    std::vector<std::string> problems;
    std::set<std::string> participants;
    std::istringstream stream(text);
    std::string line;
    if (!std::getline(stream, line) || line != "sequenceDiagram")
    {
        problems.push_back("it does not begin as a sequence diagram");
    }
    while (std::getline(stream, line))
    {
        std::smatch match;
        if (std::regex_match(line, match, kParticipant))
        {
            participants.insert(match[1]);
            continue;
        }
        const bool isMessage = std::regex_match(line, match, kMessage);
        if (!isMessage && !std::regex_match(line, match, kNote))
        {
            problems.push_back("not a statement: " + line);
            continue;
        }
        const std::string other = match[isMessage ? 3 : 2];
        if (!participants.contains(match[1]) || (!other.empty() && !participants.contains(other)))
        {
            problems.push_back("not a participant: " + line);
        }
    }
    if (text.size() > 50'000)
    {
        problems.push_back("it is too long for viewers");
    }
    return problems;
}
