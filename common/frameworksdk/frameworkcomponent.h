#pragma once

#include "common/frameworksdk/IComponentFactory.h"

#include <cstddef>

/// The module's entry: what a host finds in the shared object, and the creation of components from the template table.
///
/// A host opens the module, looks up `FMDll`, calls it with a table whose size field is set, and from then on works through
/// the four functions of the table:
///
///     FMDllTable table;
///     table.m_Size = sizeof(FMDllTable);
///     if (fmdll(&table) == S_OK)
///     {
///         table.m_lpfnCreateComponent(onlinemanager::CLSID_OnlineManager, onlinemanager::IID_OnlineManager, nullptr,
///                                     factory, &component);
///     }
///
/// Every exported function has an unmangled name and may be looked up by that name as well. None of them throws.
/// They are called on the host's control thread.

namespace FRAMEWORKSDK
{
class CFrameUnknown;
}

/// Makes a component. Returns the new object with a count of 0, or null; `hr` receives the reason. A negative `*hr` makes a
/// returned object void.
using LPFNNewComponent = FRAMEWORKSDK::CFrameUnknown* (*)(IUnknown* outer, IComponentFactory* factory, int32_t* hr);

/// One row of the module's template table. The table is constant and lives as long as the module is loaded.
struct ComponentObject
{
    const char* m_Name;
    const CLSID* m_ClsID;       ///< null disables the row
    const GUID* m_CategoryID;   ///< the id of the component's main interface
    LPFNNewComponent m_lpfnNew; ///< null disables the row
};
static_assert(sizeof(ComponentObject) == 32);

/// Version words of the module: 0x01000001, 1 and 0. The first two pointers may be null; `info3` may not.
using LPFNDllGetInfo = HRESULT (*)(uint32_t* info1, uint32_t* info2, uint32_t* info3);

/// The template table and the number of its rows; either pointer may be null.
using LPFNDllGetComponentObject = HRESULT (*)(ComponentObject** templates, uint32_t* count);

/// 0 = no object of the module lives, it may be unloaded; 1 = some do. Every call detaches the module from its logger, also
/// one that answers 1: logging goes on at the next creation. Before the unloading a host also waits until no notification
/// is running any more (see `IPaasOnline::TriggerNotify`).
using LPFNDllCanUnloadNow = HRESULT (*)();

/// Creates the component `clsid` and hands out its interface `iid`, the caller holding the only reference.
/// `factory` may be null for modules whose components do without; the online manager does not. The component takes over
/// one reference of `factory`: add one before the call. (When nothing is created, the reference stays the caller's.)
/// Results as of `CPDllCreateComponent2`.
using LPFNDllCreateComponent = HRESULT (*)(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                           IComponentFactory* factory, void** out);

/// The module's functions as `FMDll` writes them.
struct FMDllTable
{
    uint32_t m_Size; ///< set by the host to 40 before the call
    uint32_t m_Padding;
    LPFNDllGetInfo m_lpfnGetInfo;
    LPFNDllGetComponentObject m_lpfnGetComponentObject;
    LPFNDllCanUnloadNow m_lpfnCanUnloadNow;
    LPFNDllCreateComponent m_lpfnCreateComponent;
};
static_assert(sizeof(FMDllTable) == 40);
static_assert(offsetof(FMDllTable, m_lpfnGetInfo) == 8 && offsetof(FMDllTable, m_lpfnGetComponentObject) == 16);
static_assert(offsetof(FMDllTable, m_lpfnCanUnloadNow) == 24 && offsetof(FMDllTable, m_lpfnCreateComponent) == 32);

/// [host] Fills the table. `E_POINTER` for a null table; `E_FAIL`, the table untouched, for a size other than 40.
using LPFNFMDll = HRESULT (*)(FMDllTable* table);

#define FRAMEWORK_EXPORT extern "C" __attribute__((visibility("default")))

/// [host] Creates from the module's own table; otherwise as `CPDllCreateComponent2`.
FRAMEWORK_EXPORT HRESULT CPDllCreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                              IComponentFactory* factory, void** out);

/// [host] Creates the component of the first enabled row whose class id equals `clsid`, and asks it for `iid`.
///
/// | Result | When |
/// |---|---|
/// | `E_POINTER` | `out` is null |
/// | `E_FAIL` | the table is empty or has no such class |
/// | `E_OUTOFMEMORY` | the row's function made nothing and gave no reason |
/// | the row's reason | it is negative; an object that was made all the same is destroyed |
/// | `E_NOINTERFACE`, null in `*out` | the component lacks the interface; it is destroyed |
FRAMEWORK_EXPORT HRESULT CPDllCreateComponent2(const CLSID& clsid, const IID& iid, IUnknown* outer,
                                               IComponentFactory* factory, void** out, ComponentObject* table,
                                               int count);

/// [host] 0 when no object of the module lives, else 1. Unlike `WDllCanUnloadNow` it leaves the logger alone.
FRAMEWORK_EXPORT HRESULT CPDllCanUnloadNow();

/// [any] Stores the interface `itf` in `*out` and adds a reference to it (slot 1). `E_POINTER` for a null `out`.
FRAMEWORK_EXPORT HRESULT GetComponentInterface(void* itf, void** out);

/// The module's own template table, defined beside its entry functions.
extern ComponentObject g_ComponentTemplates[];
extern uint32_t g_cComponentTemplates;
