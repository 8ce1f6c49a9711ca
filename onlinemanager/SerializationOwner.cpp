#include "onlinemanager/SerializationOwner.h"

#include "onlinemanager/JsonSerialization.h"

namespace onlinemanager
{

bool SerializationOwner::CheckSerialization()
{
    const WBASELIB::WAutoLock guard(&m_serialization_lock);
    if (m_serialization == nullptr)
    {
        m_serialization = std::make_shared<JsonSerialization>();
    }
    return m_serialization != nullptr;
}

} // namespace onlinemanager
