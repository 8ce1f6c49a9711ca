#pragma once

#include "host/trace/Trace.h"

#include <map>
#include <mutex>
#include <string>

namespace host
{

/// Base of the objects that stand between two others and record what passes. `Context` has the members `trace` and
/// `device`; it and the target outlive the proxy's use.
template <typename Interface, typename Context>
class TraceProxy : public Interface
{
public:
    TraceProxy(Context& context, Interface& target) : m_context(context), m_target(target) {}

protected:
    ~TraceProxy() = default;

    TraceSpan Record(Crossing crossing, const char* name, TraceArguments arguments = {}, size_t answers = 0)
    {
        return {m_context.trace, crossing, m_context.device, name, arguments, answers};
    }

    Context& m_context;
    Interface& m_target;
};

/// Finds the proxy of an object, or makes it. Proxies hold no state of their own, so one serves whatever object comes to
/// live at the same address later.
template <typename Interface, typename Proxy, typename Context>
class TraceProxies
{
public:
    explicit TraceProxies(Context& context) : m_context(context) {}

    /// Null for null.
    Interface* Of(Interface* target)
    {
        if (target == nullptr)
        {
            return nullptr;
        }
        const std::lock_guard lock(m_mutex);
        Proxy*& proxy = m_proxies[target];
        if (proxy == nullptr)
        {
            proxy = &m_context.trace.template Keep<Proxy>(m_context, *target);
        }
        return proxy;
    }

private:
    Context& m_context;
    std::mutex m_mutex;
    std::map<Interface*, Proxy*> m_proxies;
};

} // namespace host
