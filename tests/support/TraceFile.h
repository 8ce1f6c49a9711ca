#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// A trace as a viewer reads it.
class TraceFile
{
public:
    struct Record
    {
        std::string phase;
        std::string name;
        std::string category;
        double time = 0;
        int group = 0;
        int track = 0;
        uint64_t id = 0;
        std::map<std::string, std::string> arguments;
    };

    /// Throws when the file is not a JSON document with the members of a trace.
    explicit TraceFile(const std::filesystem::path& path);

    const std::vector<Record>& Records() const
    {
        return m_records;
    }

    /// The faults of the trace, in words: slices that do not balance, times that go back, arrows without an end, groups
    /// and tracks without a name, a track in two groups. Empty when there are none.
    std::vector<std::string> Problems() const;

    /// The number of slices with this name.
    size_t Count(const std::string& name) const;

    /// The names of the slices in which each arrow begins and ends.
    std::vector<std::pair<std::string, std::string>> Arrows() const;

    /// The tracks as "group/track", in their order.
    std::vector<std::string> Tracks() const;

    /// The slices and marks on such a track, in the order of their beginning, each with one dot for every slice around
    /// it.
    std::vector<std::string> Slices(const std::string& track) const;

private:
    /// Names of groups or tracks by their numbers.
    std::map<int, std::string> Names(const char* what) const;
    std::string TrackName(const Record& record) const;

    std::vector<Record> m_records;
};

/// The faults of a Mermaid sequence diagram, in words. Empty when there are none.
std::vector<std::string> DiagramProblems(const std::string& text);
