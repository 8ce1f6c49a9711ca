#include "common/frameworksdk/wframelog.h"

ILogCenter* g_kx_log_center = nullptr;
int64_t g_kx_logger_id_count = 0;
ILogMgr* g_kx_log_mgr = nullptr;
int64_t g_kx_logger_id = 0;
IWLog* g_pFrameLog = nullptr;

namespace
{

template <typename Interface>
HRESULT QueryFactory(IComponentFactory* factory, const IID& iid, Interface** out)
{
    void* found = nullptr;
    const HRESULT hr = factory->QueryInterface(iid, &found);
    if (hr < 0)
    {
        return hr;
    }
    *out = static_cast<Interface*>(found);
    return *out != nullptr ? hr : E_NOINTERFACE;
}

using WriterOperation = HRESULT (ILogCenter::*)(const char*, Quenda::ILogWriter*);

HRESULT ChangeLogWriter(IComponentFactory* factory, const char* name, Quenda::ILogWriter* writer,
                        WriterOperation operation)
{
    if (factory == nullptr || name == nullptr)
    {
        return E_FAIL;
    }
    ILogCenter* center = nullptr;
    HRESULT hr = QueryFactory(factory, IID_ILogCenter, &center);
    if (hr < 0)
    {
        return hr;
    }
    hr = (center->*operation)(name, writer);
    center->Release();
    return hr;
}

template <typename Create>
HRESULT CreateExLogger(IComponentFactory* factory, const wchar_t* name, Create create)
{
    if (factory == nullptr || name == nullptr)
    {
        return E_FAIL;
    }
    IWLogAllocator* allocator = nullptr;
    HRESULT hr = QueryFactory(factory, IID_IWLogAllocator, &allocator);
    if (hr < 0)
    {
        return hr;
    }
    hr = create(allocator);
    if (hr < 0)
    {
        return hr; // the reference of the allocator is not released, on purpose: hosts of this logger expect that
    }
    allocator->Release();
    return S_OK;
}

} // namespace

HRESULT FWInitKXLogger2(IComponentFactory* pFactory, const char* szLogName, int32_t nMode, ILogMgr** pLogMgr,
                        int64_t* pLogId)
{
    if (pFactory == nullptr || szLogName == nullptr || pLogMgr == nullptr || pLogId == nullptr)
    {
        return E_FAIL;
    }
    if (g_kx_log_center == nullptr)
    {
        const HRESULT hr = QueryFactory(pFactory, IID_ILogCenter, &g_kx_log_center);
        if (hr < 0)
        {
            return hr;
        }
    }
    *pLogMgr = g_kx_log_center->GetLogMgr();
    *pLogId = g_kx_log_center->OpenLogger(szLogName, nMode, 2, 0);
    if (*pLogId != 0)
    {
        ++g_kx_logger_id_count;
        return S_OK;
    }
    *pLogMgr = nullptr;
    g_kx_log_center->Release();
    g_kx_log_center = nullptr;
    return E_INVALIDARG;
}

HRESULT FWInitKXLogger(IComponentFactory* pFactory, const char* szLogName, int32_t nMode)
{
    if (g_kx_log_mgr != nullptr)
    {
        return E_FAIL;
    }
    return FWInitKXLogger2(pFactory, szLogName, nMode, &g_kx_log_mgr, &g_kx_logger_id);
}

HRESULT FWReleaseKXLogger2(int64_t nLogId)
{
    if (g_kx_log_center == nullptr)
    {
        return S_OK;
    }
    if (nLogId != 0)
    {
        g_kx_log_center->CloseLogger(nLogId);
        --g_kx_logger_id_count;
    }
    const uint32_t remaining = g_kx_log_center->Release();
    if (g_kx_logger_id_count > 0 && remaining != 0)
    {
        return S_OK;
    }
    g_kx_log_center = nullptr;
    g_kx_logger_id_count = 0;
    return S_OK;
}

HRESULT FWReleaseKXLogger()
{
    FWReleaseKXLogger2(g_kx_logger_id);
    g_kx_logger_id = 0;
    g_kx_log_mgr = nullptr;
    return S_OK;
}

HRESULT FWAddLogWriter(IComponentFactory* pFactory, const char* szLogName, Quenda::ILogWriter* pLogWriter)
{
    return ChangeLogWriter(pFactory, szLogName, pLogWriter, &ILogCenter::AddLogWriter);
}

HRESULT FWRemoveLogWriter(IComponentFactory* pFactory, const char* szLogName, Quenda::ILogWriter* pLogWriter)
{
    return ChangeLogWriter(pFactory, szLogName, pLogWriter, &ILogCenter::RemoveLogWriter);
}

HRESULT FWInitExLogger(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel, int32_t nMode,
                       IWLog** pFrameLog)
{
    return CreateExLogger(pFactory, wszLogName,
                          [=](IWLogAllocator* allocator)
                          { return allocator->CreateLog(wszLogName, nLevel, nMode, pFrameLog); });
}

HRESULT FWInitExLogger2(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel, int32_t nMode,
                        BOOL bEncrypt, IWLog** pFrameLog)
{
    return CreateExLogger(pFactory, wszLogName,
                          [=](IWLogAllocator* allocator)
                          { return allocator->CreateLog2(wszLogName, nLevel, nMode, bEncrypt, pFrameLog); });
}

HRESULT FWReleaseExLogger(IWLog* pFrameLog)
{
    if (pFrameLog != nullptr)
    {
        pFrameLog->Release();
    }
    return S_OK;
}

HRESULT FWInitLogger(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel, int32_t nMode)
{
    return g_pFrameLog == nullptr ? FWInitExLogger(pFactory, wszLogName, nLevel, nMode, &g_pFrameLog) : S_OK;
}

HRESULT FWInitLogger2(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel, int32_t nMode,
                      BOOL bEncrypt)
{
    return g_pFrameLog == nullptr ? FWInitExLogger2(pFactory, wszLogName, nLevel, nMode, bEncrypt, &g_pFrameLog) : S_OK;
}

HRESULT FWReleaseLogger()
{
    const HRESULT hr = FWReleaseExLogger(g_pFrameLog);
    g_pFrameLog = nullptr;
    return hr;
}
