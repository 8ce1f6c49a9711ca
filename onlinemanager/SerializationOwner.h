#pragma once

#include "common/wbaselib/wlock.h"
#include "onlinemanager/ISerialization.h"

#include <memory>

namespace onlinemanager
{

/// A service that formats or parses payloads. It owns a serializer, which the first call of `CheckSerialization` makes. The
/// source file of the serializer defines that operation.
class SerializationOwner
{
protected:
    ~SerializationOwner() = default;

    /// [any] Makes the serializer unless it exists. True: `m_serialization` is set and does not change any more.
    bool CheckSerialization();

    std::shared_ptr<ISerialization> m_serialization;

private:
    WBASELIB::WLock m_serialization_lock; ///< held while the serializer is made
};

} // namespace onlinemanager
