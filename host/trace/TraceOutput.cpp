#include "host/trace/TraceOutput.h"

#include "onlinehost/Error.h"
#include "onlinehost/Text.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace host
{

using namespace onlinehost;

TraceOutput::TraceOutput(const std::filesystem::path& path, std::string what)
    : m_path(path),
      m_what(std::move(what)),
      m_file(std::fopen(path.c_str(), "wb"))
{
    if (m_file == nullptr)
    {
        const std::string reason = std::strerror(errno);
        throw Error("the " + m_what + " cannot be written: " + Printable(path.string()) + ": " + reason);
    }
}

TraceOutput::~TraceOutput()
{
    if (m_file != nullptr)
    {
        std::fclose(m_file);
    }
}

void TraceOutput::Write(std::string_view text)
{
    NoteFailure(std::fwrite(text.data(), 1, text.size(), m_file) != text.size());
}

void TraceOutput::Complete()
{
    NoteFailure(std::fclose(std::exchange(m_file, nullptr)) != 0);
    if (m_failure != 0)
    {
        throw Error("the " + m_what + " could not be written: " + Printable(m_path.string()) + ": " +
                    std::strerror(m_failure));
    }
}

void TraceOutput::NoteFailure(bool hasFailed)
{
    if (hasFailed && m_failure == 0)
    {
        m_failure = errno;
    }
}

} // namespace host
