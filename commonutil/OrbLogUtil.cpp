#include "commonutil/OrbLogUtil.h"

#include "common/frameworksdk/wframelog.h"

void* g_onlinemanager_log = nullptr;

namespace commonutil
{

WBASELIB::WRelaxed<ILogMgr*> OrbLogUtil::m_model_log_mrg;
WBASELIB::WRelaxed<int64_t> OrbLogUtil::m_logger_id;

bool OrbLogUtil::Init(IUnknown* factory, const char* name, int mode)
{
    if (m_model_log_mrg != nullptr && m_logger_id != 0)
    {
        return true;
    }
    if (factory == nullptr)
    {
        return false;
    }
    ILogMgr* manager = nullptr;
    int64_t loggerId = 0;
    const HRESULT hr = FWInitKXLogger2(static_cast<IComponentFactory*>(factory), name, mode, &manager, &loggerId);
    m_model_log_mrg = manager;
    m_logger_id = loggerId;
    return hr >= 0;
}

void OrbLogUtil::Release(bool release_logger)
{
    m_model_log_mrg = nullptr;
    const int64_t loggerId = m_logger_id;
    if (loggerId != 0 && release_logger)
    {
        FWReleaseKXLogger2(loggerId);
    }
    m_logger_id = 0;
}

} // namespace commonutil

namespace Quenda
{

namespace
{

ILogMessage* CreateLine(const char* file, int line)
{
    ILogMgr* const manager = commonutil::OrbLogUtil::m_model_log_mrg;
    const int64_t loggerId = commonutil::OrbLogUtil::m_logger_id;
    if (manager == nullptr || loggerId == 0 || manager->GetLoggerLevel(loggerId) >= int32_t{LOG_LEVEL_WARNING})
    {
        return nullptr;
    }
    return manager->CreateMessage(loggerId, LOG_LEVEL_TRACE, file, line);
}

} // namespace

LogMessage::LogMessage(const char* file, int line) : m_message(CreateLine(file, line)) {}

LogMessage::~LogMessage()
{
    if (m_message != nullptr)
    {
        m_message->Release();
    }
}

void LogWrapper::Fill(LogMessage& message, const char* format, ...)
{
    if (message.m_message == nullptr)
    {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    try
    {
        message.m_message->Append(format, arguments);
    }
    catch (...)
    {
        // A line that cannot be written never fails the operation that it tells of.
    }
    va_end(arguments);
}

void LogWrapper::Fill(LogMessage& message, const wchar_t* format, ...)
{
    if (message.m_message == nullptr)
    {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    try
    {
        message.m_message->AppendWide(format, arguments);
    }
    catch (...)
    {
        // As above.
    }
    va_end(arguments);
}

} // namespace Quenda
