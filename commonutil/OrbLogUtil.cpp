#include "commonutil/OrbLogUtil.h"

#include "common/frameworksdk/wframelog.h"
#include "common/wbaselib/wrelaxed.h"

void* g_onlinemanager_log = nullptr;

namespace commonutil
{

using WBASELIB::RelaxedLoad;
using WBASELIB::RelaxedStore;

ILogMgr* OrbLogUtil::m_model_log_mrg = nullptr;
int64_t OrbLogUtil::m_logger_id = 0;

bool OrbLogUtil::Init(IUnknown* factory, const char* name, int mode)
{
    ILogMgr* manager = RelaxedLoad(m_model_log_mrg);
    int64_t loggerId = RelaxedLoad(m_logger_id);
    if (manager != nullptr && loggerId != 0)
    {
        return true;
    }
    if (factory == nullptr)
    {
        return false;
    }
    const HRESULT hr = FWInitKXLogger2(static_cast<IComponentFactory*>(factory), name, mode, &manager, &loggerId);
    RelaxedStore(m_model_log_mrg, manager);
    RelaxedStore(m_logger_id, loggerId);
    return hr >= 0;
}

void OrbLogUtil::Release(bool release_logger)
{
    RelaxedStore(m_model_log_mrg, nullptr);
    const int64_t loggerId = RelaxedLoad(m_logger_id);
    if (loggerId != 0 && release_logger)
    {
        FWReleaseKXLogger2(loggerId);
    }
    RelaxedStore(m_logger_id, 0);
}

} // namespace commonutil

namespace Quenda
{

namespace
{

ILogMessage* CreateLine(const char* file, int line)
{
    ILogMgr* const manager = WBASELIB::RelaxedLoad(commonutil::OrbLogUtil::m_model_log_mrg);
    const int64_t loggerId = WBASELIB::RelaxedLoad(commonutil::OrbLogUtil::m_logger_id);
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
        // A log line that cannot be written must not make the operation fail.
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
        // The same.
    }
    va_end(arguments);
}

} // namespace Quenda
