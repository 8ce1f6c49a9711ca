#pragma once

#include "avcore/ZolTypes.h"
#include "common/frameworksdk/IHttpClient.h"
#include "host/trace/TraceCall.h"
#include "host/trace/TraceNames.h"
#include "onlinemanager/AVQualityInfo.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/InviteData.h"

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

/// How arguments of each type are recorded. An argument with an empty name is not recorded, and a token never is.

namespace host
{

/// Texts and pointers may be null. The query of an address is left out, because it contains tokens and users share
/// traces.
void Append(TraceArguments& arguments, const char* name, const char* text);
void Append(TraceArguments& arguments, const char* name, const std::string& text);
void Append(TraceArguments& arguments, const char* name, const GUID& guid);
void Append(TraceArguments& arguments, const char* name, const std::vector<unsigned>& ids);
void Append(TraceArguments& arguments, const char* name, const avcore::ZolTextList& ids);

/// Records: each becomes several arguments under names of their own.
void Append(TraceArguments& arguments, const char* name, const onlinemanager::LoginParam& param);
void Append(TraceArguments& arguments, const char* name, const onlinemanager::JoinData& data);
void Append(TraceArguments& arguments, const char* name, const onlinemanager::InviteData& data);
void Append(TraceArguments& arguments, const char* name, const std::shared_ptr<onlinemanager::AVQualityInfo>& info);
void Append(TraceArguments& arguments, const char* name, const avcore::ZolUserTerminalInfo& info);
void Append(TraceArguments& arguments, const char* name, const HttpRequest* request);

/// Records the number of users.
void Append(TraceArguments& arguments, const char* name, const WBASELIB::Vector<avcore::ZolUserInfo>& users);

/// These are not recorded: functions of the caller, output arguments, and opaque values.
inline void Append(TraceArguments& /*arguments*/, const char* /*name*/, unsigned* /*id*/) {}
template <typename Signature>
void Append(TraceArguments& /*arguments*/, const char* /*name*/, const std::function<Signature>& /*function*/)
{
}
inline void Append(TraceArguments& /*arguments*/, const char* /*name*/, const avcore::ZolTextPairList& /*results*/) {}
inline void Append(TraceArguments& /*arguments*/, const char* /*name*/,
                   const WBASELIB::Vector<avcore::ZolMediaInfo>& /*media*/)
{
}

/// Numbers, flags and codes. For a pointer to another object, whether it is null.
template <typename T>
void Append(TraceArguments& arguments, const char* name, const T& value)
{
    if (*name == '\0')
    {
        return;
    }
    if constexpr (std::is_same_v<T, bool>)
    {
        arguments.push_back({name, value});
    }
    else if constexpr (std::is_enum_v<T>)
    {
        arguments.push_back({name, MeaningOf(value)});
    }
    else if constexpr (std::is_integral_v<T>)
    {
        arguments.push_back({name, static_cast<int64_t>(value)});
    }
    else
    {
        static_assert(std::is_pointer_v<T>, "an argument of this type needs a way to be recorded");
        arguments.push_back({name, std::string(value != nullptr ? "given" : "(null)")});
    }
}

} // namespace host
