#pragma once

#include <filesystem>
#include <string>

/// A temporary folder, which the destructor removes with its content.
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

    /// Writes a file in the folder and returns its path.
    std::filesystem::path Write(const std::string& name, const std::string& content) const;

private:
    std::filesystem::path m_path;
};

std::string ReadFile(const std::filesystem::path& path);
