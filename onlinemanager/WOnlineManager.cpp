#include "onlinemanager/WOnlineManager.h"

#include "commonutil/OrbLogUtil.h"
#include "onlinemanager/OnlineManager.h"

ComponentObject g_ComponentTemplates[] = {
    // The category is the id of the component's main interface: hosts search the table for an interface.
    {"OnlineManager2", &onlinemanager::CLSID_OnlineManager, &onlinemanager::IID_OnlineManager,
     &onlinemanager::OnlineManager::CreateInstance},
};
uint32_t g_cComponentTemplates = 1;

HRESULT FMDll(FMDllTable* table)
{
    if (table == nullptr)
    {
        return E_POINTER;
    }
    if (table->m_Size != sizeof(FMDllTable))
    {
        return E_FAIL;
    }
    table->m_lpfnGetInfo = &WDllGetInfo;
    table->m_lpfnGetComponentObject = &WDllGetComponentObject;
    table->m_lpfnCanUnloadNow = &WDllCanUnloadNow;
    table->m_lpfnCreateComponent = &WDllCreateComponent;
    return S_OK;
}

HRESULT WDllGetInfo(uint32_t* info1, uint32_t* info2, uint32_t* info3)
{
    if (info1 != nullptr)
    {
        *info1 = 0x01000001;
    }
    if (info2 != nullptr)
    {
        *info2 = 1;
    }
    if (*info3 != 0)
    {
        *info3 = 0;
    }
    return S_OK;
}

HRESULT WDllGetComponentObject(ComponentObject** templates, uint32_t* count)
{
    if (templates != nullptr)
    {
        *templates = g_ComponentTemplates;
    }
    if (count != nullptr)
    {
        *count = g_cComponentTemplates;
    }
    return S_OK;
}

HRESULT WDllCreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, IComponentFactory* factory, void** out)
{
    commonutil::OrbLogUtil::Init(factory, "OnlineManager", 1);
    return CPDllCreateComponent2(clsid, iid, outer, factory, out, g_ComponentTemplates,
                                 static_cast<int>(g_cComponentTemplates));
}

HRESULT WDllCanUnloadNow()
{
    const HRESULT value = CPDllCanUnloadNow();
    ORB_LOG("WDllCanUnloadNow :%d.", value);
    if (value >= 0)
    {
        // On purpose also while objects are alive: a host asks shortly before it unloads the module, and then ends its
        // log service.
        commonutil::OrbLogUtil::Release(false);
    }
    return value;
}
