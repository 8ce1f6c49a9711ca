#include "host/trace/TraceArguments.h"

#include "onlinehost/Text.h"

#include <algorithm>

namespace host
{

using namespace onlinehost;

using namespace avcore;
using namespace onlinemanager;

namespace
{

bool IsAddress(const std::string& text)
{
    return text.starts_with("http://") || text.starts_with("https://");
}

template <typename Ids, typename ToText>
void AppendList(TraceArguments& arguments, const char* name, const Ids& ids, ToText toText)
{
    if (*name == '\0')
    {
        return;
    }
    TraceList list{.size = ids.size()};
    for (size_t index = 0; index < std::min<size_t>(TraceList::kKept, ids.size()); ++index)
    {
        list.first.push_back(toText(ids[index]));
    }
    arguments.push_back({name, std::move(list)});
}

} // namespace

void Append(TraceArguments& arguments, const char* name, const char* text)
{
    Append(arguments, name, std::string(text != nullptr ? text : "(null)"));
}

void Append(TraceArguments& arguments, const char* name, const std::string& text)
{
    if (*name == '\0')
    {
        return;
    }
    const size_t query = IsAddress(text) ? text.find('?') : std::string::npos;
    arguments.push_back({name, query == std::string::npos ? text : text.substr(0, query) + "?..."});
}

void Append(TraceArguments& arguments, const char* name, const GUID& guid)
{
    if (*name != '\0')
    {
        arguments.push_back({name, GuidName(guid)});
    }
}

void Append(TraceArguments& arguments, const char* name, const std::vector<unsigned>& ids)
{
    AppendList(arguments, name, ids, [](unsigned id) { return std::to_string(id); });
}

void Append(TraceArguments& arguments, const char* name, const ZolTextList& ids)
{
    AppendList(arguments, name, ids, [](const ZolText& id) { return std::string(id.c_str()); });
}

void Append(TraceArguments& arguments, const char* /*name*/, const LoginParam& param)
{
    Append(arguments, "server", param.server);
    Append(arguments, "userid", param.userid);
    Append(arguments, "companyid", param.companyid);
    Append(arguments, "mutex", param.mutex);
    Append(arguments, "deviceid", param.deviceid);
    Append(arguments, "appid", param.appid);
}

void Append(TraceArguments& arguments, const char* /*name*/, const JoinData& data)
{
    // Hosts hand over pointers that may be null, and the module refuses them. The cast keeps the compiler from assuming
    // that the reference is never null.
    if (reinterpret_cast<uintptr_t>(&data) == 0)
    {
        return;
    }
    Append(arguments, "guid", data.guid);
    Append(arguments, "user_id", data.user_id);
}

void Append(TraceArguments& arguments, const char* /*name*/, const InviteData& data)
{
    Append(arguments, "userName", data.userName);
    Append(arguments, "meetingId", data.meetingId);
    Append(arguments, "inviteCode", data.inviteCode);
}

void Append(TraceArguments& arguments, const char* name, const std::shared_ptr<AVQualityInfo>& info)
{
    if (info == nullptr)
    {
        Append(arguments, name, "(null)");
        return;
    }
    Append(arguments, "userId", info->userId);
    Append(arguments, "avQualityLevel", info->avQualityLevel);
}

void Append(TraceArguments& arguments, const char* /*name*/, const ZolUserTerminalInfo& info)
{
    Append(arguments, "terminal", info.terminal);
    arguments.push_back({"status", MeaningOfStatus(info.status)});
    Append(arguments, "custom", info.custom);
    Append(arguments, "ext_info", info.ext_info);
}

void Append(TraceArguments& arguments, const char* /*name*/, const HttpRequest* request)
{
    Append(arguments, "method", request->method == kHttpMethodPost ? "POST" : "GET");
    Append(arguments, "url", request->url);
    Append(arguments, "body", request->body);
}

void Append(TraceArguments& arguments, const char* name, const WBASELIB::Vector<ZolUserInfo>& users)
{
    Append(arguments, name, users.size());
}

} // namespace host
