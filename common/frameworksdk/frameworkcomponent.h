#pragma once

#include "common/frameworksdk/IComponentFactory.h"

#include <cstddef>

/// The entry of the module: its exported functions, and the creation of components from the template table.
///
/// A host opens the module, looks up `FMDll` and calls it with a table whose size field it has set. From then on it
/// calls the four functions of the table:
///
///     FMDllTable table;
///     table.m_Size = sizeof(FMDllTable);
///     if (fmdll(&table) == S_OK)
///     {
///         table.m_lpfnCreateComponent(onlinemanager::CLSID_OnlineManager, onlinemanager::IID_OnlineManager, nullptr,
///                                     factory, &component);
///     }
///
/// Every exported function has an unmangled name, by which a host may look it up too. None of them throws. A host must
/// call them on its control thread.

namespace FRAMEWORKSDK
{
class CFrameUnknown;
}

/// Makes a component. Returns the new object with a reference count of 0, or null, and writes the reason to `*hr`. With
/// a negative `*hr` the caller must delete a returned object.
using LPFNNewComponent = FRAMEWORKSDK::CFrameUnknown* (*)(IUnknown* outer, IComponentFactory* factory, int32_t* hr);

/// One row of the module's template table. The table does not change and exists as long as the module is loaded.
struct ComponentObject
{
    const char* m_Name;
    const CLSID* m_ClsID;       ///< null disables the row
    const GUID* m_CategoryID;   ///< the id of the component's main interface
    LPFNNewComponent m_lpfnNew; ///< null disables the row
};
static_assert(sizeof(ComponentObject) == 32);

/// Writes the version words of the module: 0x01000001, 1 and 0. The first two pointers may be null; `info3` must not be
/// null.
using LPFNDllGetInfo = HRESULT (*)(uint32_t* info1, uint32_t* info2, uint32_t* info3);

/// Writes the address of the template table and the number of its rows. Either pointer may be null.
using LPFNDllGetComponentObject = HRESULT (*)(ComponentObject** templates, uint32_t* count);

/// Returns 0 when no object of the module is alive: the host may then unload the module. Returns 1 otherwise. Every
/// call detaches the module from its logger, also a call that returns 1; the next creation attaches it again. Before
/// the unloading a host must also wait until no notification is running (see `IPaasOnline::TriggerNotify`).
using LPFNDllCanUnloadNow = HRESULT (*)();

/// Creates the component `clsid` and writes its interface `iid` to `*out`; the caller owns the only reference. The
/// online manager needs a `factory`; components of other modules may work without one.
///
/// The component takes over one reference of `factory`: add one before the call. After `E_NOINTERFACE` that reference
/// is released as well, because the component existed for a moment. After every other failure it still belongs to the
/// caller.
///
/// Inside an aggregate (`outer` is not null) ask for `IID_IUnknown` only. Any other interface adds its reference to
/// `outer`, so the new object loses its last own reference and is destroyed, and `*out` points to a destroyed object.
///
/// The results are those of `CPDllCreateComponent2`.
using LPFNDllCreateComponent = HRESULT (*)(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                           IComponentFactory* factory, void** out);

/// The functions of the module, as `FMDll` writes them.
struct FMDllTable
{
    uint32_t m_Size; ///< the host must set it to 40 before the call
    uint32_t m_Padding;
    LPFNDllGetInfo m_lpfnGetInfo;
    LPFNDllGetComponentObject m_lpfnGetComponentObject;
    LPFNDllCanUnloadNow m_lpfnCanUnloadNow;
    LPFNDllCreateComponent m_lpfnCreateComponent;
};
static_assert(sizeof(FMDllTable) == 40);
static_assert(offsetof(FMDllTable, m_lpfnGetInfo) == 8 && offsetof(FMDllTable, m_lpfnGetComponentObject) == 16);
static_assert(offsetof(FMDllTable, m_lpfnCanUnloadNow) == 24 && offsetof(FMDllTable, m_lpfnCreateComponent) == 32);

/// [host] Fills the table. `E_POINTER` for a null table. `E_FAIL` for a size other than 40; the table is then
/// unchanged.
using LPFNFMDll = HRESULT (*)(FMDllTable* table);

#define FRAMEWORK_EXPORT extern "C" __attribute__((visibility("default")))

/// [host] `CPDllCreateComponent2` with the module's own table.
FRAMEWORK_EXPORT HRESULT CPDllCreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                              IComponentFactory* factory, void** out);

/// [host] Creates the component of the first enabled row whose class id is `clsid`, and asks it for `iid`.
///
/// | Result | When |
/// |---|---|
/// | `E_POINTER` | `out` is null |
/// | `E_FAIL` | the table is empty or does not contain the class |
/// | `E_OUTOFMEMORY` | the row's function returned null without a negative reason |
/// | the negative reason of the row's function | that function failed; an object that it returned nevertheless is destroyed |
/// | `E_NOINTERFACE`, null in `*out` | the component does not have the interface; the component is destroyed |
FRAMEWORK_EXPORT HRESULT CPDllCreateComponent2(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                               IComponentFactory* factory, void** out, ComponentObject* table,
                                               int count);

/// [host] Returns 0 when no object of the module is alive, else 1. Unlike `WDllCanUnloadNow` it does not touch the
/// logger.
FRAMEWORK_EXPORT HRESULT CPDllCanUnloadNow();

/// [any] Stores the interface `itf` in `*out` and adds a reference to it (slot 1). `E_POINTER` for a null `out`.
FRAMEWORK_EXPORT HRESULT GetComponentInterface(void* itf, void** out);

/// The module's own template table. The file that defines the module's entry functions defines it too.
extern ComponentObject g_ComponentTemplates[];
extern uint32_t g_cComponentTemplates;
