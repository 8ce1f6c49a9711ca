#include "bench/Pairs.h"
#include "onlinemanager/JsonSerialization.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <ctime>
#include <utility>

namespace bench
{

namespace
{

using onlinemanager::AudioQualityData;
using onlinemanager::AVQualityInfo;
using onlinemanager::InviteData;
using onlinemanager::JsonSerialization;
using onlinemanager::VideoQualityData;

constexpr auto kTerminal = static_cast<quenda::TerminalType>(3);
constexpr char kName[] = "Zo\u00eb Ann\u00e9";
constexpr unsigned kStreams = 50; // of one report: sent and received, audio and video

class Writer : public rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::ASCII<>>
{
public:
    using rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::ASCII<>>::Writer;

    void Text(const char* key, const std::string& text)
    {
        Key(key);
        String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }

    void Number(const char* key, unsigned value)
    {
        Key(key);
        Uint(value);
    }
};

/// The text that `write(Writer&)` writes without the module.
template <typename Write>
std::string WriteDirectly(Write write)
{
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    write(writer);
    return std::string(buffer.GetString(), buffer.GetSize());
}

template <typename Params>
std::string WriteMessage(const char* method, Params params)
{
    return WriteDirectly(
        [&](Writer& writer)
        {
            writer.StartObject();
            writer.Text("version", "1.0");
            writer.Key("method");
            writer.String(method);
            writer.Key("params");
            writer.StartObject();
            params(writer);
            writer.EndObject();
            writer.EndObject();
        });
}

InviteData Invitation()
{
    InviteData data;
    data.inviteCode = 7;
    data.roomCreateTime = 1600000000;
    data.roomCompanyId = 1001;
    data.calloutType = 1;
    data.meetingId = 880012;
    data.userId = 52011;
    data.userName = kName;
    data.terminal = "pc";
    return data;
}

std::string WriteInvitation(const InviteData& data)
{
    return WriteMessage("InviteUser",
                        [&](Writer& writer)
                        {
                            writer.Number("inviteCode", data.inviteCode);
                            writer.Number("roomCreateTime", static_cast<unsigned>(data.roomCreateTime));
                            writer.Number("roomCompanyId", data.roomCompanyId);
                            writer.Number("proxyUserId", data.proxyUserId);
                            writer.Number("calloutType", data.calloutType);
                            writer.Number("meetingId", data.meetingId);
                            writer.Key("isForce");
                            writer.Bool(data.isForce);
                            writer.Key("inviter");
                            writer.StartObject();
                            writer.Number("userId", data.userId);
                            writer.Text("userName", data.userName);
                            writer.Text("terminal", data.terminal);
                            writer.EndObject();
                        });
}

std::string WriteAccept()
{
    return WriteMessage("AcceptInvite", [](Writer& writer) { writer.Text("terminal", std::to_string(kTerminal)); });
}

std::string WriteReject()
{
    return WriteMessage("RejectInvite",
                        [](Writer& writer)
                        {
                            writer.Text("terminal", std::to_string(kTerminal));
                            writer.Number("mode", 1);
                        });
}

std::string WriteLoginExt()
{
    return WriteDirectly(
        [](Writer& writer)
        {
            writer.StartObject();
            writer.Number("tt", kTerminal);
            writer.EndObject();
        });
}

std::shared_ptr<AudioQualityData> AudioStream(unsigned number)
{
    return std::make_shared<AudioQualityData>(AudioQualityData{.userId = 52011 + number,
                                                               .userName = kName,
                                                               .protocol = "udp",
                                                               .bitrate = "32",
                                                               .pktlr = "0.5",
                                                               .rtt = "42",
                                                               .jitter = "6"});
}

std::shared_ptr<VideoQualityData> VideoStream(unsigned number)
{
    return std::make_shared<VideoQualityData>(VideoQualityData{.userId = 52011 + number,
                                                               .mediaId = 1,
                                                               .userName = kName,
                                                               .protocol = "udp",
                                                               .bitrate = "800",
                                                               .resolve = "1280x720",
                                                               .framerate = "25",
                                                               .pktlr = "0.5",
                                                               .rtt = "42",
                                                               .jitter = "6"});
}

std::shared_ptr<AVQualityInfo> Report()
{
    auto info = std::make_shared<AVQualityInfo>();
    info->avQualityLevel = 2;
    info->userId = 52011;
    info->roomId = 880012;
    info->groupId = "g1";
    info->appId = "a1";
    info->sendAudio.push_back(AudioStream(0));
    info->sendVideo.push_back(VideoStream(1));
    for (unsigned number = 2; number < kStreams; number += 2)
    {
        info->receiveAudio.push_back(AudioStream(number));
        info->receiveVideo.push_back(VideoStream(number + 1));
    }
    return info;
}

template <typename Data>
std::string WriteReport(const char* subType, const char* name, const AVQualityInfo& info, Data data)
{
    return WriteDirectly(
        [&](Writer& writer)
        {
            writer.StartObject();
            writer.Number("msgType", 1138);
            writer.Number("msgSeq", 0);
            writer.Key("msgData");
            writer.StartObject();
            writer.Text("subType", subType);
            writer.Key("data");
            writer.StartObject();
            writer.Text("name", name);
            writer.Key("timestamp");
            writer.Int64(std::time(nullptr));
            data(writer);
            writer.EndObject();
            writer.Key("labels");
            writer.StartObject();
            writer.Number("userId", info.userId);
            writer.Number("roomId", info.roomId);
            writer.Text("groupId", info.groupId);
            writer.Text("appId", info.appId);
            writer.EndObject();
            writer.EndObject();
            writer.EndObject();
        });
}

std::string WriteOverview(const AVQualityInfo& info)
{
    return WriteReport("overview", "pc.avQuality.overview", info,
                       [&](Writer& writer)
                       {
                           writer.Key("fields");
                           writer.StartObject();
                           writer.Number("avQualityLevel", static_cast<unsigned>(info.avQualityLevel));
                           writer.EndObject();
                       });
}

void WriteAudio(Writer& writer, const char* name, const std::list<std::shared_ptr<AudioQualityData>>& streams)
{
    writer.Key(name);
    writer.StartArray();
    for (const auto& stream : streams)
    {
        writer.StartObject();
        writer.Number("userId", stream->userId);
        writer.Text("userName", stream->userName);
        writer.Text("protocol", stream->protocol);
        writer.Text("bitrate", stream->bitrate);
        writer.Text("pktlr", stream->pktlr);
        writer.Text("rtt", stream->rtt);
        writer.Text("jitter", stream->jitter);
        writer.EndObject();
    }
    writer.EndArray();
}

void WriteVideo(Writer& writer, const char* name, const std::list<std::shared_ptr<VideoQualityData>>& streams)
{
    writer.Key(name);
    writer.StartArray();
    for (const auto& stream : streams)
    {
        writer.StartObject();
        writer.Number("userId", stream->userId);
        writer.Number("mediaId", stream->mediaId);
        writer.Text("userName", stream->userName);
        writer.Text("protocol", stream->protocol);
        writer.Text("bitrate", stream->bitrate);
        writer.Text("resolve", stream->resolve);
        writer.Text("framerate", stream->framerate);
        writer.Text("pktlr", stream->pktlr);
        writer.Text("rtt", stream->rtt);
        writer.Text("jitter", stream->jitter);
        writer.EndObject();
    }
    writer.EndArray();
}

std::string WriteDetail(const AVQualityInfo& info)
{
    return WriteReport("detail", "pc.avQuality.detail", info,
                       [&](Writer& writer)
                       {
                           WriteAudio(writer, "sendAudio", info.sendAudio);
                           WriteAudio(writer, "receiveAudio", info.receiveAudio);
                           WriteVideo(writer, "sendVideo", info.sendVideo);
                           WriteVideo(writer, "receiveVideo", info.receiveVideo);
                       });
}

/// Runs `format()`. Its text must have the length of the text of `other()`; the texts may differ, because each holds a
/// time.
template <typename Format, typename Other>
void RunFormat(benchmark::State& state, Format format, Other other)
{
    if (format().size() != other().size())
    {
        state.SkipWithError("the module and the floor write different texts");
        return;
    }
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(format());
    }
}

/// A formatting operation with the direct writer as its floor; `Operation` has the static functions `Module` and
/// `Direct`.
template <typename Operation>
void AddFormat(const char* subject)
{
    AddPair(
        subject, [](benchmark::State& state) { RunFormat(state, Operation::Module, Operation::Direct); },
        [](benchmark::State& state) { RunFormat(state, Operation::Direct, Operation::Module); });
}

JsonSerialization& Json()
{
    static JsonSerialization json;
    return json;
}

struct FormatInvite
{
    inline static const InviteData data = Invitation();
    static std::string Module()
    {
        return Json().FormatInviteUserMsg(data);
    }
    static std::string Direct()
    {
        return WriteInvitation(data);
    }
};

struct FormatAccept
{
    static std::string Module()
    {
        return Json().FormatAcceptInviteMsg(kTerminal);
    }
    static std::string Direct()
    {
        return WriteAccept();
    }
};

struct FormatReject
{
    static std::string Module()
    {
        return Json().FormatRejectInviteMsg(kTerminal, 1);
    }
    static std::string Direct()
    {
        return WriteReject();
    }
};

struct FormatLoginExt
{
    static std::string Module()
    {
        return Json().FormatLoginExtInfo(kTerminal);
    }
    static std::string Direct()
    {
        return WriteLoginExt();
    }
};

struct FormatOverview
{
    inline static const std::shared_ptr<AVQualityInfo> info = Report();
    static std::string Module()
    {
        return Json().FormatAvQualityOverview(info);
    }
    static std::string Direct()
    {
        return WriteOverview(*info);
    }
};

struct FormatDetail
{
    inline static const std::shared_ptr<AVQualityInfo> info = Report();
    static std::string Module()
    {
        return Json().FormatAvQualityDetail(info);
    }
    static std::string Direct()
    {
        return WriteDetail(*info);
    }
};

/// The floor of reading `json`.
void BareParse(benchmark::State& state, const std::string& json)
{
    for (auto _ : state)
    {
        rapidjson::Document document;
        document.Parse(json.data(), json.size());
        benchmark::DoNotOptimize(document.HasParseError());
    }
}

const std::string kLoginExt = R"({"tt":3})";
const std::string kMdsCommand = R"({"message":{"command":"subscribe_av_quality","data":{"subType":"overview"}}})";

const std::string& InvitationText()
{
    static const std::string text = WriteInvitation(Invitation());
    return text;
}

void ParseInvite(benchmark::State& state)
{
    InviteData data;
    for (auto _ : state)
    {
        Json().ParseInviteUserMsg(InvitationText(), &data);
    }
    if (data.userName != Invitation().userName)
    {
        state.SkipWithError("the invitation was not read");
    }
}

void ParseLoginExt(benchmark::State& state)
{
    uint32_t type = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(type = Json().ParseLoginExtInfo(kLoginExt));
    }
    if (type != kTerminal)
    {
        state.SkipWithError("the terminal type was not read");
    }
}

void ParseMds(benchmark::State& state)
{
    std::string command;
    std::string subType;
    for (auto _ : state)
    {
        Json().ParseMdsClientInfo(kMdsCommand, command, subType);
    }
    if (command != "subscribe_av_quality" || subType != "overview")
    {
        state.SkipWithError("the command was not read");
    }
}

} // namespace

void AddJsonBenchmarks()
{
    AddFormat<FormatInvite>("json_format_invite");
    AddFormat<FormatAccept>("json_format_accept");
    AddFormat<FormatReject>("json_format_reject");
    AddFormat<FormatLoginExt>("json_format_login_ext");
    AddFormat<FormatOverview>("json_format_overview");
    AddFormat<FormatDetail>("json_format_detail_50_streams");
    AddPair("json_parse_invite", ParseInvite, [](benchmark::State& state) { BareParse(state, InvitationText()); });
    AddPair("json_parse_login_ext", ParseLoginExt, [](benchmark::State& state) { BareParse(state, kLoginExt); });
    AddPair("json_parse_mds_command", ParseMds, [](benchmark::State& state) { BareParse(state, kMdsCommand); });
}

} // namespace bench
