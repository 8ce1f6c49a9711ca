#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "common/frameworksdk/ILogCenter.h"
#include "common/frameworksdk/frameworkcomponent.h"

/// The framework's loggers, exported for hosts and plug-ins. All of them are called on the host's control thread and are
/// not guarded against each other. Results: 0 or a code of success; `E_FAIL` for a missing argument.
///
/// The first family ("KX") works over the host's log center, which is acquired by the first logger opened and dropped when
/// the last one is closed. The second family opens the older interface-based logger.

/// Opens the logger `szLogName` at the log center of `pFactory`; `*pLogMgr` and `*pLogId` receive what log lines need. The
/// manager is borrowed. `E_INVALIDARG`, null in `*pLogMgr` and the center dropped, when the center refuses; the host's code
/// when the factory has no log center.
FRAMEWORK_EXPORT HRESULT FWInitKXLogger2(IComponentFactory* pFactory, const char* szLogName, int32_t nMode,
                                         ILogMgr** pLogMgr, int64_t* pLogId);

/// The same for the framework's default logger. `E_FAIL` too when there is one already.
FRAMEWORK_EXPORT HRESULT FWInitKXLogger(IComponentFactory* pFactory, const char* szLogName, int32_t nMode);

/// Closes a logger (0: none) and gives back one reference of the center. Always 0.
FRAMEWORK_EXPORT HRESULT FWReleaseKXLogger2(int64_t nLogId);

/// Closes the default logger. Always 0.
FRAMEWORK_EXPORT HRESULT FWReleaseKXLogger();

/// Registers a writer with a logger of the center. The center's result.
FRAMEWORK_EXPORT HRESULT FWAddLogWriter(IComponentFactory* pFactory, const char* szLogName,
                                        Quenda::ILogWriter* pLogWriter);

/// Takes it away again.
FRAMEWORK_EXPORT HRESULT FWRemoveLogWriter(IComponentFactory* pFactory, const char* szLogName,
                                           Quenda::ILogWriter* pLogWriter);

/// Creates an interface-based logger in `*pFrameLog`, the caller holding its reference. The host's code when the factory
/// has no allocator or the allocator fails.
FRAMEWORK_EXPORT HRESULT FWInitExLogger(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel,
                                        int32_t nMode, IWLog** pFrameLog);

/// The same with a choice of encryption.
FRAMEWORK_EXPORT HRESULT FWInitExLogger2(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel,
                                         int32_t nMode, BOOL bEncrypt, IWLog** pFrameLog);

/// Releases it; null is allowed. Always 0.
FRAMEWORK_EXPORT HRESULT FWReleaseExLogger(IWLog* pFrameLog);

/// Creates the framework's default interface-based logger; 0 without doing anything when there is one.
FRAMEWORK_EXPORT HRESULT FWInitLogger(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel,
                                      int32_t nMode);

/// The same with a choice of encryption.
FRAMEWORK_EXPORT HRESULT FWInitLogger2(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel,
                                       int32_t nMode, BOOL bEncrypt);

/// Releases the default interface-based logger. Always 0.
FRAMEWORK_EXPORT HRESULT FWReleaseLogger();

extern ILogCenter* g_kx_log_center;  ///< shared by all loggers that the framework opened
extern int64_t g_kx_logger_id_count; ///< loggers opened and not yet closed
extern ILogMgr* g_kx_log_mgr;        ///< of the default logger
extern int64_t g_kx_logger_id;       ///< of the default logger
extern IWLog* g_pFrameLog;           ///< the default interface-based logger
