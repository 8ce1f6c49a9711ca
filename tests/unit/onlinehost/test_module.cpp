// A module for tests of the loader. A definition at compile time chooses its fault.
#include "common/frameworksdk/frameworkcomponent.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT int SomeFunction();
int SomeFunction()
{
    return 1;
}

#ifdef TEST_MODULE_ENTRY_IS_DATA

EXPORT int FMDll;
int FMDll = 1;

#elif !defined(TEST_MODULE_NO_ENTRY)

namespace
{

constexpr CLSID kClassId{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

ComponentObject components[] = {
    {"First", &kClassId, &IID_IUnknown, nullptr},
    {nullptr, nullptr, nullptr, nullptr},
};

HRESULT GetInfo(uint32_t* info1, uint32_t* info2, uint32_t* info3)
{
    *info1 = 11;
    *info2 = 12;
    return *info3 == 0 ? S_OK : E_FAIL;
}

HRESULT GetComponentObject(ComponentObject** rows, uint32_t* count)
{
    *rows = components;
    *count = 2;
    return S_OK;
}

HRESULT CanUnloadNow()
{
#ifdef TEST_MODULE_STAYS_IN_USE
    return 1;
#else
    return S_OK;
#endif
}

HRESULT CreateComponent(const CLSID&, const IID& iid, IUnknown*, IComponentFactory* factory, void** out)
{
#ifdef TEST_MODULE_CREATES_NOTHING
    static_cast<void>(out);
    if (iid == IID_IUnknown)
    {
        return E_FAIL;
    }
    factory->Release(); // as by the destructor of a component that lacks the interface
    return E_NOINTERFACE;
#else
    static_cast<void>(iid);
    *out = factory;
    return S_OK;
#endif
}

} // namespace

EXPORT HRESULT FMDll(FMDllTable* table);
HRESULT FMDll(FMDllTable* table)
{
    table->m_lpfnGetInfo = GetInfo;
    table->m_lpfnGetComponentObject = GetComponentObject;
    table->m_lpfnCanUnloadNow = CanUnloadNow;
    table->m_lpfnCreateComponent = CreateComponent;
#ifdef TEST_MODULE_REFUSES
    return E_FAIL;
#endif
#ifdef TEST_MODULE_LEAVES_OUT
    table->m_lpfnCreateComponent = nullptr;
#endif
    return S_OK;
}

#endif
