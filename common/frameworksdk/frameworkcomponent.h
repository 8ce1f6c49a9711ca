#pragma once

#include "common/frameworksdk/IComponentFactory.h"

#include <cstddef>

/// The module's entry: the exported functions, and the creation of components from the template table.
///
/// The host loads the module, looks up `FMDll` and calls it with a table whose size field is set. It then uses the four
/// functions of the table:
///
///     FMDllTable table;
///     table.m_Size = sizeof(FMDllTable);
///     if (fmdll(&table) == S_OK)
///     {
///         table.m_lpfnCreateComponent(onlinemanager::CLSID_OnlineManager, onlinemanager::IID_OnlineManager, nullptr,
///                                     factory, &component);
///     }
///
/// Every exported function has an unmangled name, so the host may also look it up by that name. None of them throws.
/// Call them on the control thread.

namespace FRAMEWORKSDK
{
class CFrameUnknown;
}

/// Creates a component. Returns the new object with a count of 0, or null. `*hr` receives the result; when it is
/// negative, `CPDllCreateComponent2` destroys the returned object.
using LPFNNewComponent = FRAMEWORKSDK::CFrameUnknown* (*)(IUnknown* outer, IComponentFactory* factory, int32_t* hr);

/// One row of the module's template table. The table is constant and lives as long as the module is loaded.
struct ComponentObject
{
    const char* m_Name;
    const CLSID* m_ClsID;       ///< a row with null is skipped
    const GUID* m_CategoryID;   ///< the id of the component's main interface
    LPFNNewComponent m_lpfnNew; ///< a row with null is skipped
};
static_assert(sizeof(ComponentObject) == 32);

/// [host] Exported as `WDllGetInfo`. Writes the version words of the module: 0x01000001, 1 and 0. Returns 0. The first
/// two pointers may be null, `info3` must not be.
using LPFNDllGetInfo = HRESULT (*)(uint32_t* info1, uint32_t* info2, uint32_t* info3);

/// [host] Exported as `WDllGetComponentObject`. Writes the address of the template table and the number of its rows.
/// Returns 0. Each pointer may be null.
using LPFNDllGetComponentObject = HRESULT (*)(ComponentObject** templates, uint32_t* count);

/// [host] Control thread. Exported as `WDllCanUnloadNow`. 0 when the module has no object and may be unloaded, 1 when
/// it has one. Every call detaches the module from its logger, also a call that returns 1; the next creation attaches
/// it again. Before it unloads the module, the host must also wait until no notification is running (see
/// `IPaasOnline::TriggerNotify`).
using LPFNDllCanUnloadNow = HRESULT (*)();

/// [host] Control thread. Exported as `WDllCreateComponent`. Attaches the module to its logger, creates the component
/// `clsid` and writes its interface `iid` to `*out`. The caller holds the only reference. Results and the reference of
/// `factory` as for `CPDllCreateComponent2`.
using LPFNDllCreateComponent = HRESULT (*)(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                           IComponentFactory* factory, void** out);

/// The module's functions. `FMDll` writes the four pointers.
struct FMDllTable
{
    uint32_t m_Size; ///< bytes; the host must set it to 40 before the call
    uint32_t m_Padding;
    LPFNDllGetInfo m_lpfnGetInfo;
    LPFNDllGetComponentObject m_lpfnGetComponentObject;
    LPFNDllCanUnloadNow m_lpfnCanUnloadNow;
    LPFNDllCreateComponent m_lpfnCreateComponent;
};
static_assert(sizeof(FMDllTable) == 40);
static_assert(offsetof(FMDllTable, m_lpfnGetInfo) == 8 && offsetof(FMDllTable, m_lpfnGetComponentObject) == 16);
static_assert(offsetof(FMDllTable, m_lpfnCanUnloadNow) == 24 && offsetof(FMDllTable, m_lpfnCreateComponent) == 32);

/// [host] Fills the table and returns 0. `E_POINTER` for a null table. `E_FAIL` for a size other than 40; the table is
/// then unchanged.
using LPFNFMDll = HRESULT (*)(FMDllTable* table);

#define FRAMEWORK_EXPORT extern "C" __attribute__((visibility("default")))

/// [host] Control thread. Does what `CPDllCreateComponent2` does, with the module's own table.
FRAMEWORK_EXPORT HRESULT CPDllCreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                              IComponentFactory* factory, void** out);

/// [host] Control thread. Creates the component of the first row whose class id equals `clsid`, and asks it for `iid`.
///
/// The online manager takes over one reference of `factory`, which must not be null. The host adds that reference
/// before the call. The last column says who holds it afterwards.
///
/// | Result | Condition | Reference of `factory` |
/// |---|---|---|
/// | 0 | the component was created | the component's; it releases the reference when it is destroyed |
/// | `E_POINTER` | `out` is null; `*out` is not written | the caller's |
/// | `E_FAIL` | the table is empty or has no such class; `*out` is not written | the caller's |
/// | `E_OUTOFMEMORY` | the row's function returned null without a reason | the caller's |
/// | the code of the row's function | it is negative; a returned object is destroyed | as that function says |
/// | `E_FAIL` | of the online manager, for a null `factory` | there is none |
/// | `E_NOINTERFACE`, null in `*out` | the component lacks the interface and is destroyed | released |
///
/// `outer` is the controlling object of an aggregate, or null. With an `outer`, ask for `IID_IUnknown`: that is the new
/// object's own, non-delegating interface, and the caller must hold it as long as the aggregate lives. Any other
/// interface of the component is one whose references are counted by `outer`. Nothing then holds the new object: it is
/// destroyed before the call returns, the reference of `factory` with it. The result is 0, and one
/// reference has been added to `outer`, but `*out` points to the destroyed object and must not be used.
FRAMEWORK_EXPORT HRESULT CPDllCreateComponent2(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                               IComponentFactory* factory, void** out, ComponentObject* table,
                                               int count);

/// [host] 0 when the module has no object, else 1. Unlike `FMDllTable::m_lpfnCanUnloadNow` it does not detach the
/// logger.
FRAMEWORK_EXPORT HRESULT CPDllCanUnloadNow();

/// [any] Writes the interface `itf` to `*out`, adds a reference to it (slot 1) and returns 0. `E_POINTER` for a null
/// `out`.
FRAMEWORK_EXPORT HRESULT GetComponentInterface(void* itf, void** out);

/// The module's own template table, defined beside its entry functions.
extern ComponentObject g_ComponentTemplates[];
extern uint32_t g_cComponentTemplates;
