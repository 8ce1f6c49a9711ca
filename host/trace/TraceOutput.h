#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace host
{

/// Writes a file from its beginning to its end. `Complete` reports whether everything was written.
class TraceOutput
{
public:
    /// `Error` naming `what` and the reason when the file cannot be created.
    TraceOutput(const std::filesystem::path& path, std::string what);
    ~TraceOutput();
    TraceOutput(const TraceOutput&) = delete;
    TraceOutput& operator=(const TraceOutput&) = delete;

    void Write(std::string_view text);

    /// Closes the file. `Error` with the file's name and the reason of the first failure when something could not be
    /// written.
    void Complete();

private:
    void NoteFailure(bool hasFailed);

    const std::filesystem::path m_path;
    const std::string m_what;
    std::FILE* m_file;
    int m_failure = 0; ///< `errno` of the first failure
};

} // namespace host
