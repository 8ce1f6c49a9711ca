#pragma once

#include "common/wbaselib/wtypes.h"

/// # How to read the interface headers
///
/// Every operation begins with a tag that names its caller and the thread:
///
/// - `[host]`      The host calls it, on any thread of its own. Several host threads may call operations of one object
///                 at the same time. Where the text says "control thread", the host must call them from one thread, one
///                 after the other: creation, `Initialize`, `Destroy`, unloading.
/// - `[platform]`  The platform library calls it, on a thread of its own. The platform must not call it from inside an
///                 operation of its own that has not returned.
/// - `[http]`      The host's HTTP object calls it, on a thread of its own. The object must not call it from inside
///                 `IHttpClient::Request`.
/// - `[any]`       Every holder of the object may call it, on any thread, at any time, also from inside a notification.
///
/// A "notification" is a call of a listener that the host has registered.
///
/// The module holds no lock while it calls the host or the platform, with one exception: `IHttpClient::Request`. A
/// notification may therefore call any operation of the module, unless the text of that operation forbids it.
///
/// A pointer is borrowed for the duration of the call unless the text says that it is kept or owned. A pointer is not
/// null unless the text allows it. Texts are UTF-8 and end with a NUL.
///
/// An interface is the table of its virtual operations, in the order of declaration. It has a virtual destructor only
/// where one is declared. Do not add, remove or reorder operations: that breaks every binary built before.

inline constexpr IID IID_IUnknown{0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

/// The root of every component object. It counts references and gives access to the object's other interfaces.
///
/// The host, the platform and this module implement it for their own objects.
class IUnknown
{
public:
    /// [any] Writes the object's interface `iid` to `*out` and adds one reference. 0; `E_POINTER` for a null `out`;
    /// `E_NOINTERFACE`, with null in `*out`, when the object does not have the interface.
    virtual HRESULT QueryInterface(const GUID& iid, void** out) = 0;

    /// [any] Adds a reference. Returns the count. Use the result for diagnosis only: another thread may change the
    /// count at any time.
    virtual uint32_t AddRef() = 0;

    /// [any] Removes a reference. Returns 0 exactly when that was the last one and the object has been destroyed.
    virtual uint32_t Release() = 0;

protected:
    ~IUnknown() = default;
};
