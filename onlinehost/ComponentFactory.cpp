#include "onlinehost/ComponentFactory.h"

#include "onlinehost/LogCenter.h"

#include <utility>

namespace onlinehost
{

ComponentFactory::ComponentFactory(CreatePlatformObject create, LogCenter& logCenter)
    : m_create(std::move(create)),
      m_logCenter(logCenter)
{
}

HRESULT ComponentFactory::QueryInterface(const GUID& iid, void** out)
{
    return iid == IID_ILogCenter ? m_logCenter.QueryInterface(iid, out) : Counted::QueryInterface(iid, out);
}

HRESULT ComponentFactory::CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out)
{
    return m_create(clsid, iid, outer, out);
}

} // namespace onlinehost
