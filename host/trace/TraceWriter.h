#pragma once

#include "host/trace/TraceCall.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace host
{

using TraceTime = std::chrono::duration<double, std::micro>; ///< since the beginning of the recording

/// Writes records of the trace-event format that Perfetto and about:tracing open.
///
/// Knows tracks, slices, marks and arrows, but not their meaning. The caller must keep the order: times never go back,
/// and each slice ends on its track before the slices around it. Not for several threads at once.
class TraceWriter
{
public:
    /// A line of the viewer. The viewer shows the tracks of one group together under the group's name.
    struct Track
    {
        uint32_t group;
        uint32_t number; ///< unique over all groups
    };

    enum class Arrow : char
    {
        Begin = 's',
        Step = 't',
        End = 'f',
    };

    /// `Error` when the file cannot be written.
    explicit TraceWriter(const std::filesystem::path& path);
    ~TraceWriter();
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    /// The viewer orders groups by their numbers.
    void NameGroup(uint32_t group, const std::string& name);
    void NameTrack(const Track& track, const std::string& name);

    void Begin(TraceTime time, const Track& track, const std::string& name, const char* category,
               const TraceArguments& arguments);
    /// Ends the slice that was begun last on the track.
    void End(TraceTime time, const Track& track, const TraceResult& result);
    /// A moment in time.
    void Mark(TraceTime time, const Track& track, const std::string& name, const char* category);
    /// A point of arrow `id`, in the slice that is open on the track.
    void Point(TraceTime time, const Track& track, Arrow part, uint64_t id);

    /// Completes the document and closes the file. `Error` when something could not be written.
    void Complete();

private:
    struct File;
    const std::unique_ptr<File> m_file;
};

} // namespace host
