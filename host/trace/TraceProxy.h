#pragma once

#include "avcore/IZolConnection.h"
#include "avcore/IZolMdsClient.h"
#include "avcore/IZolOnline.h"
#include "avcore/IZolTMsg.h"
#include "common/frameworksdk/IHttpClient.h"
#include "host/trace/Trace.h"
#include "host/trace/TraceArguments.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IPaasMdsClient.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IPaasTMsg.h"
#include "onlinemanager/IReconnection.h"
#include "onlinemanager/IUserOnline.h"

#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeindex>
#include <utility>

namespace host
{

/// The recording object that stands in front of an object with this interface. It records each call and passes it on.
template <typename Interface>
class Traced;

/// The interfaces whose objects are replaced by `Traced` objects in every argument that points to them.
template <typename Interface, typename... Listed>
inline constexpr bool kIsListed = (std::is_same_v<Interface, Listed> || ...);
template <typename Interface>
inline constexpr bool kIsTraced =
    kIsListed<Interface, IHttpClient, IHttpResponseNotify, onlinemanager::IMeetingTunnel,
              onlinemanager::IMeetingTunnelNotify, onlinemanager::IPaasMdsClient, onlinemanager::IPaasMdsClientNotify,
              onlinemanager::IPaasOnline, onlinemanager::IPaasOnlineNotify, onlinemanager::IPaasTMsg,
              onlinemanager::IReconnectionStrategy, onlinemanager::IUserOnline, onlinemanager::IUserOnlineNotify,
              avcore::IZolConnectionListener, avcore::IZolHttp, avcore::IZolMdsClient, avcore::IZolMdsClientListener,
              avcore::IZolOnline, avcore::IZolOnlineListener, avcore::IZolTMsg, avcore::IZolTMsgListener>;

/// The state that the recording objects of one component, or of one connection, share.
class TraceContext
{
public:
    TraceContext(Trace& trace, uint32_t component, uint32_t connection = 0, bool isHosts = false)
        : m_trace(trace),
          m_component(component),
          m_connection(connection),
          m_isHosts(isHosts)
    {
    }

    /// The recording object of an object; made when there is none yet, null for null. Recording objects have no state
    /// of their own, so one may serve all objects that live at the same address one after the other.
    template <typename Interface>
    Interface* Of(Interface* target)
    {
        if (target == nullptr)
        {
            return nullptr;
        }
        const std::lock_guard lock(m_mutex);
        void*& traced = m_traced[{typeid(Interface), target}];
        if (traced == nullptr)
        {
            traced = static_cast<Interface*>(&m_trace.Keep<Traced<Interface>>(*this, *target));
        }
        return static_cast<Interface*>(traced);
    }

    TraceCall MakeCall(Crossing crossing, const char* name, const TraceArguments& arguments, const void* receiver) const
    {
        if (m_isHosts)
        {
            crossing = crossing == Crossing::PlatformCall ? Crossing::HostPlatformCall : Crossing::HostPlatformEvent;
        }
        return {crossing, m_component, name, arguments, m_connection, receiver};
    }

    Trace& GetTrace() const
    {
        return m_trace;
    }

private:
    Trace& m_trace;
    const uint32_t m_component;
    const uint32_t m_connection;
    const bool m_isHosts; ///< the host uses the connection itself
    std::mutex m_mutex;
    std::map<std::pair<std::type_index, void*>, void*> m_traced;
};

/// Passes one argument on unchanged.
template <typename Parameter>
class TracePassed
{
public:
    TracePassed(TraceContext& /*context*/, Parameter value) : m_value(std::forward<Parameter>(value)) {}

    Parameter Get()
    {
        return std::forward<Parameter>(m_value);
    }

    void Return(TraceSpan& /*span*/, const char* /*name*/) {}

private:
    Parameter m_value;
};

/// A pointer to an object that is replaced.
template <typename Interface>
requires kIsTraced<Interface>
class TracePassed<Interface*>
{
public:
    TracePassed(TraceContext& context, Interface* value) : m_value(context.Of(value)) {}

    Interface* Get()
    {
        return m_value;
    }

    void Return(TraceSpan& /*span*/, const char* /*name*/) {}

private:
    Interface* const m_value;
};

/// An output argument for an object that is replaced. An argument that the operation does not write stays unchanged.
template <typename Interface>
requires kIsTraced<Interface>
class TracePassed<Interface**>
{
public:
    TracePassed(TraceContext& context, Interface** out) : m_context(context), m_out(out) {}

    Interface** Get()
    {
        return m_out != nullptr ? &m_value : nullptr;
    }

    void Return(TraceSpan& /*span*/, const char* /*name*/)
    {
        if (m_value != Untouched())
        {
            *m_out = m_context.Of(m_value);
        }
    }

private:
    /// An address that no object of the interface has.
    static Interface* Untouched()
    {
        static char place;
        return reinterpret_cast<Interface*>(&place);
    }

    TraceContext& m_context;
    Interface** const m_out;
    Interface* m_value = Untouched();
};

/// An output argument for an id, which is recorded with the result.
template <>
class TracePassed<unsigned*>
{
public:
    TracePassed(TraceContext& /*context*/, unsigned* value) : m_value(value) {}

    unsigned* Get()
    {
        return m_value;
    }

    void Return(TraceSpan& span, const char* name)
    {
        if (m_value != nullptr && !span.IsFailure())
        {
            span.Output(name, int64_t{*m_value});
        }
    }

private:
    unsigned* const m_value;
};

/// Base of the recording objects. `kWay` is the direction of the interface's calls. The context and the target must
/// outlive its use.
template <typename Interface, Crossing kWay>
class TraceProxy : public Interface
{
public:
    TraceProxy(TraceContext& context, Interface& target) : m_context(context), m_target(target) {}

protected:
    TraceSpan Record(const char* name, const TraceArguments& arguments = {})
    {
        return {m_context.GetTrace(), m_context.MakeCall(kWay, name, arguments, &m_target)};
    }

    /// Records a call of `operation` and passes it on. `names` are the names of the arguments; an argument with an
    /// empty name is not recorded.
    template <typename Result, typename Owner, typename... Parameters, size_t kCount>
    Result Forward(Result (Owner::*operation)(Parameters...), const char* name, const char* const (&names)[kCount],
                   std::type_identity_t<Parameters>... values)
    {
        static_assert(sizeof...(Parameters) == kCount, "each argument needs a name");
        TraceArguments arguments;
        size_t index = 0;
        (Append(arguments, names[index++], values), ...);
        TraceSpan span = Record(name, arguments);
        std::tuple<TracePassed<Parameters>...> passed(
            TracePassed<Parameters>(m_context, std::forward<Parameters>(values))...);
        return std::apply(
            [&](auto&... each) -> Result
            {
                const auto finish = [&]
                {
                    size_t place = 0;
                    (each.Return(span, names[place++]), ...);
                };
                if constexpr (std::is_void_v<Result>)
                {
                    (m_target.*operation)(each.Get()...);
                    finish();
                }
                else
                {
                    Result result = span.Result((m_target.*operation)(each.Get()...));
                    finish();
                    return result;
                }
            },
            passed);
    }

    /// The same for an operation without arguments.
    template <typename Result, typename Owner>
    Result Forward(Result (Owner::*operation)(), const char* name)
    {
        TraceSpan span = Record(name);
        if constexpr (std::is_void_v<Result>)
        {
            (m_target.*operation)();
        }
        else
        {
            return span.Result((m_target.*operation)());
        }
    }

    TraceContext& m_context;
    Interface& m_target;
};

} // namespace host
