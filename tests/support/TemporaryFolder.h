#pragma once

#include <filesystem>
#include <string>

/// A folder of the test's own, gone with the object.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const
    {
        return m_path / name;
    }

    /// Writes a file in it and returns where it is.
    std::filesystem::path Write(const std::string& name, const std::string& content) const;

private:
    std::filesystem::path m_path;
};

std::string ReadFile(const std::filesystem::path& path);
