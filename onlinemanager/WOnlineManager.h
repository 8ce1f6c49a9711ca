#pragma once

#include "common/frameworksdk/frameworkcomponent.h"

/// The module's entry functions; common/frameworksdk/frameworkcomponent.h describes them.

FRAMEWORK_EXPORT HRESULT FMDll(FMDllTable* table);
FRAMEWORK_EXPORT HRESULT WDllGetInfo(uint32_t* info1, uint32_t* info2, uint32_t* info3);
FRAMEWORK_EXPORT HRESULT WDllGetComponentObject(ComponentObject** templates, uint32_t* count);
FRAMEWORK_EXPORT HRESULT WDllCreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                             IComponentFactory* factory, void** out);
FRAMEWORK_EXPORT HRESULT WDllCanUnloadNow();
