#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "common/frameworksdk/ILogCenter.h"
#include "common/frameworksdk/frameworkcomponent.h"

/// The framework's loggers, exported for hosts and plug-ins. A host must call these functions on its control thread: no
/// lock protects them from each other. They return 0 or another code of success, and `E_FAIL` for a missing argument.
///
/// The first family ("KX") uses the host's log center. The first logger opened acquires the center, the last one closed
/// releases it. The second family opens the older interface-based logger.

/// Opens the logger `szLogName` at the log center of `pFactory`. Writes the log manager, without a reference, to
/// `*pLogMgr` and the logger's id to `*pLogId`. When the center refuses, it returns `E_INVALIDARG`, writes null to
/// `*pLogMgr` and releases the center. When the factory has no log center, it returns the host's code.
FRAMEWORK_EXPORT HRESULT FWInitKXLogger2(IComponentFactory* pFactory, const char* szLogName, int32_t nMode,
                                         ILogMgr** pLogMgr, int64_t* pLogId);

/// Does the same for the framework's default logger. `E_FAIL` also when the default logger is open.
FRAMEWORK_EXPORT HRESULT FWInitKXLogger(IComponentFactory* pFactory, const char* szLogName, int32_t nMode);

/// Closes a logger and releases one reference of the center. With the id 0 it closes no logger. Always 0.
FRAMEWORK_EXPORT HRESULT FWReleaseKXLogger2(int64_t nLogId);

/// Closes the default logger. Always 0.
FRAMEWORK_EXPORT HRESULT FWReleaseKXLogger();

/// Registers a writer with a logger of the center. Returns the center's result.
FRAMEWORK_EXPORT HRESULT FWAddLogWriter(IComponentFactory* pFactory, const char* szLogName,
                                        Quenda::ILogWriter* pLogWriter);

/// Removes a writer from a logger of the center. Returns the center's result.
FRAMEWORK_EXPORT HRESULT FWRemoveLogWriter(IComponentFactory* pFactory, const char* szLogName,
                                           Quenda::ILogWriter* pLogWriter);

/// Creates an interface-based logger in `*pFrameLog`; the caller owns its reference. Returns the host's code when the
/// factory has no allocator or the allocator fails.
FRAMEWORK_EXPORT HRESULT FWInitExLogger(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel,
                                        int32_t nMode, IWLog** pFrameLog);

/// Does the same, with a choice of encryption.
FRAMEWORK_EXPORT HRESULT FWInitExLogger2(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel,
                                         int32_t nMode, BOOL bEncrypt, IWLog** pFrameLog);

/// Releases a logger; null is allowed. Always 0.
FRAMEWORK_EXPORT HRESULT FWReleaseExLogger(IWLog* pFrameLog);

/// Creates the framework's default interface-based logger. Returns 0 and does nothing when that logger exists.
FRAMEWORK_EXPORT HRESULT FWInitLogger(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel,
                                      int32_t nMode);

/// Does the same, with a choice of encryption.
FRAMEWORK_EXPORT HRESULT FWInitLogger2(IComponentFactory* pFactory, const wchar_t* wszLogName, int32_t nLevel,
                                       int32_t nMode, BOOL bEncrypt);

/// Releases the default interface-based logger. Always 0.
FRAMEWORK_EXPORT HRESULT FWReleaseLogger();

extern ILogCenter* g_kx_log_center;  ///< all loggers that the framework opened share it
extern int64_t g_kx_logger_id_count; ///< loggers that are open
extern ILogMgr* g_kx_log_mgr;        ///< of the default logger
extern int64_t g_kx_logger_id;       ///< of the default logger
extern IWLog* g_pFrameLog;           ///< the default interface-based logger
