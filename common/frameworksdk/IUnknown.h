#pragma once

#include "common/wbaselib/wtypes.h"

/// # How to read the interface headers
///
/// Every operation names who calls it and on which thread, with one of four tags:
///
/// - `[host]`      the host application, on any thread of its own. Operations of one object may run on several host threads
///                 at once unless the text says "control thread": then the host calls them from one thread, one after the
///                 other (creation, `Initialize`, `Destroy`, unloading).
/// - `[platform]`  the platform library, on a thread of its own, never from inside a call that it is serving.
/// - `[http]`      the host's HTTP object, on a thread of its own, never from inside `IHttpClient::Request`.
/// - `[any]`       whoever holds the object, on any thread, at any time, also from inside a notification.
///
/// The module calls the host and the platform without holding a lock (the one exception stands in IHttpClient.h), so a
/// notification may call any operation of the module again unless that operation forbids it.
///
/// Pointers that pass are borrowed for the duration of the call unless the text says that they are kept or owned. Texts are
/// UTF-8 and NUL-terminated. A pointer is never null unless the text allows it.
///
/// Slots: an interface is the table of its virtual operations in the order of declaration. None of them has a virtual
/// destructor unless it is declared. Adding, removing or reordering an operation breaks every binary that is out there.

inline constexpr IID IID_IUnknown{0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

/// The root of every component object: asks for another interface of the same object and counts references.
///
/// Implemented by the host, by the platform and by this module, each for its own objects.
class IUnknown
{
public:
    /// [any] Hands out the interface `iid` in `*out` with one reference added.
    /// `E_POINTER` when `out` is null; `E_NOINTERFACE`, with null in `*out`, when the object does not have the interface.
    virtual HRESULT QueryInterface(const GUID& iid, void** out) = 0;

    /// [any] Adds a reference. The result is for diagnosis: another thread may have changed the count meanwhile.
    virtual uint32_t AddRef() = 0;

    /// [any] Gives a reference back; the last one destroys the object. 0 exactly when it did.
    virtual uint32_t Release() = 0;

protected:
    ~IUnknown() = default;
};
