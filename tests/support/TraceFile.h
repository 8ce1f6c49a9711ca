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
        int thread = 0;
        uint64_t id = 0;
        std::map<std::string, std::string> arguments;
    };

    /// Throws when it is not the JSON document that it should be.
    explicit TraceFile(const std::filesystem::path& path);

    const std::vector<Record>& Records() const
    {
        return m_records;
    }

    /// What is wrong with it, in words: slices that do not balance, times that go back, arrows without an end, tracks
    /// without a name. Empty when it is good.
    std::vector<std::string> Problems() const;

    /// How many slices have this name.
    size_t Count(const std::string& name) const;

    /// The names of the slices in which each arrow begins and ends.
    std::vector<std::pair<std::string, std::string>> Arrows() const;

    std::map<int, std::string> ThreadNames() const;

private:
    std::vector<Record> m_records;
};

/// What is wrong with a Mermaid sequence diagram. Empty when it is good.
std::vector<std::string> DiagramProblems(const std::string& text);
