#include "common/frameworksdk/frameworkcomponent.h"

#include "common/frameworksdk/frameunknown.h"
#include "common/wbaselib/wrelaxed.h"

#include <algorithm>

using FRAMEWORKSDK::CFrameBaseObject;
using FRAMEWORKSDK::CFrameUnknown;

HRESULT CPDllCreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, IComponentFactory* factory,
                             void** out)
{
    return CPDllCreateComponent2(clsid, iid, outer, factory, out, g_ComponentTemplates,
                                 static_cast<int>(g_cComponentTemplates));
}

HRESULT CPDllCreateComponent2(const CLSID& clsid, const IID& iid, IUnknown* outer, IComponentFactory* factory,
                              void** out, ComponentObject* table, int count)
{
    if (out == nullptr)
    {
        return E_POINTER;
    }
    HRESULT hr = E_FAIL;
    if (count < 1 || table == nullptr)
    {
        return hr;
    }
    ComponentObject* const end = table + count;
    const ComponentObject* const row = std::find_if(
        table, end,
        [&clsid](const ComponentObject& candidate)
        { return candidate.m_ClsID != nullptr && candidate.m_lpfnNew != nullptr && *candidate.m_ClsID == clsid; });
    if (row == end)
    {
        return hr;
    }
    CFrameUnknown* const object = row->m_lpfnNew(outer, factory, &hr);
    if (object == nullptr)
    {
        return hr < 0 ? hr : E_OUTOFMEMORY;
    }
    if (hr < 0)
    {
        delete object;
        return hr;
    }
    object->NonDelegatingAddRef();
    hr = object->NonDelegatingQueryInterface(iid, out);
    object->NonDelegatingRelease();
    return hr;
}

HRESULT CPDllCanUnloadNow()
{
    return WBASELIB::RelaxedLoad(CFrameBaseObject::m_cObjects) == 0 ? 0 : 1;
}

HRESULT GetComponentInterface(void* itf, void** out)
{
    if (out == nullptr)
    {
        return E_POINTER;
    }
    *out = itf;
    static_cast<IUnknown*>(itf)->AddRef();
    return S_OK;
}
