#include "onlinehost/LogWatch.h"

#include <utility>

namespace onlinehost
{

LogWatch::LogWatch(ILogCenter& center, const std::string& logger, OnLine onLine)
    : m_center(center),
      m_logger(logger),
      m_onLine(std::move(onLine))
{
    m_center.AddLogWriter(m_logger.c_str(), this);
}

LogWatch::~LogWatch()
{
    m_center.RemoveLogWriter(m_logger.c_str(), this);
}

void LogWatch::AppendLog(const char* text, unsigned int length, Quenda::LogLevel)
{
    m_onLine({text, length});
}

} // namespace onlinehost
