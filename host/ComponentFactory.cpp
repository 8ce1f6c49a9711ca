#include "host/ComponentFactory.h"

#include "host/LogCenter.h"
#include "platform/Platform.h"

namespace host
{

ComponentFactory::ComponentFactory(platform::Platform& platform, LogCenter& logCenter)
    : m_platform(platform),
      m_logCenter(logCenter)
{
}

HRESULT ComponentFactory::QueryInterface(const GUID& iid, void** out)
{
    return iid == IID_ILogCenter ? m_logCenter.QueryInterface(iid, out) : Counted::QueryInterface(iid, out);
}

HRESULT ComponentFactory::CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out)
{
    return m_platform.CreateComponent(clsid, iid, outer, out);
}

} // namespace host
