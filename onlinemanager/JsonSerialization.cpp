#include "onlinemanager/JsonSerialization.h"

#include "commonutil/StringUtil.h"
#include "onlinemanager/SerializationOwner.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <ctime>

namespace onlinemanager
{

namespace
{

using Allocator = rapidjson::Document::AllocatorType;
using rapidjson::Document;
using rapidjson::StringRef;
using rapidjson::Value;
using AsciiWriter = rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF8<>, rapidjson::ASCII<>>;

/// Refers to `text`, which must outlive the document.
Value::StringRefType Ref(const std::string& text)
{
    return StringRef(text.data(), text.size());
}

/// Memory of one document. The first 4 kilobytes lie on the thread's stack: few documents need more, and an allocation
/// on the heap takes longer than to read or build the document.
struct DocumentMemory
{
    char buffer[4096];
    Allocator allocator{buffer, sizeof(buffer)};
};

/// A parsed text. The root is null when the text is not JSON.
class ParsedText
{
public:
    /// Parses without recursion, because another client's text may be nested deeper than the stack allows.
    explicit ParsedText(const std::string& json)
    {
        m_document.Parse<rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag>(json.data(), json.size());
    }

    const Value& Root() const
    {
        return m_document;
    }

private:
    static constexpr size_t kStackCapacity = 512;

    DocumentMemory m_memory;
    rapidjson::GenericDocument<rapidjson::UTF8<>, Allocator, Allocator> m_document{&m_memory.allocator, kStackCapacity,
                                                                                   &m_memory.allocator};
};

const Value* FindMember(const Value& object, const char* name)
{
    if (!object.IsObject())
    {
        return nullptr;
    }
    const auto member = object.FindMember(name);
    return member != object.MemberEnd() ? &member->value : nullptr;
}

const Value* FindObject(const Value& object, const char* name)
{
    const Value* const value = FindMember(object, name);
    return value != nullptr && value->IsObject() ? value : nullptr;
}

template <typename Number>
void ReadNumber(const Value& object, const char* name, Number* out)
{
    const Value* const value = FindMember(object, name);
    if (value != nullptr && value->IsUint())
    {
        *out = static_cast<Number>(value->GetUint());
    }
}

void ReadTerminatedText(const Value& object, const char* name, std::string* out)
{
    const Value* const value = FindMember(object, name);
    if (value != nullptr && value->IsString())
    {
        *out = value->GetString();
    }
}

void ReadText(const Value& object, const char* name, std::string* out)
{
    const Value* const value = FindMember(object, name);
    if (value != nullptr && value->IsString())
    {
        out->assign(value->GetString(), value->GetStringLength());
    }
}

/// Replaces every byte that is not part of a UTF-8 character by U+FFFD.
std::string RepairUtf8(const char* text, size_t length)
{
    using Utf8 = rapidjson::UTF8<>;
    std::string repaired;
    const std::string source(text, length); // the decoder needs a terminator
    for (size_t position = 0; position < length;)
    {
        rapidjson::StringStream stream(source.c_str() + position);
        unsigned codepoint = 0;
        const bool valid = Utf8::Decode(stream, &codepoint);
        const size_t used = valid ? stream.Tell() : 1;
        repaired.append(valid ? source.substr(position, used) : "\xEF\xBF\xBD");
        position += used;
    }
    return repaired;
}

/// Writes texts that are not UTF-8 as well, which the plain writer refuses.
class RepairingWriter : public AsciiWriter
{
public:
    using AsciiWriter::AsciiWriter;

    bool String(const char* text, rapidjson::SizeType length, bool /*copy*/ = false)
    {
        const std::string repaired = RepairUtf8(text, length);
        return AsciiWriter::String(repaired.data(), static_cast<rapidjson::SizeType>(repaired.size()));
    }

    bool Key(const char* text, rapidjson::SizeType length, bool copy = false)
    {
        return String(text, length, copy);
    }
};

template <typename JsonWriter>
bool Write(const Document& document, std::string* out)
{
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    const bool complete = document.Accept(writer);
    out->assign(buffer.GetString(), buffer.GetSize());
    return complete;
}

/// Fills `document` with a report to the monitoring service; `data` holds the measured values.
void FillQualityReport(Document& document, const char* subType, Value& data, const AVQualityInfo& info)
{
    Allocator& allocator = document.GetAllocator();
    Value labels(rapidjson::kObjectType);
    labels.AddMember("userId", info.userId, allocator);
    labels.AddMember("roomId", info.roomId, allocator);
    labels.AddMember("groupId", Ref(info.groupId), allocator);
    labels.AddMember("appId", Ref(info.appId), allocator);

    Value msgData(rapidjson::kObjectType);
    msgData.AddMember("subType", StringRef(subType), allocator);
    msgData.AddMember("data", data, allocator);
    msgData.AddMember("labels", labels, allocator);

    document.SetObject();
    document.AddMember("msgType", 1138u, allocator);
    document.AddMember("msgSeq", 0u, allocator);
    document.AddMember("msgData", msgData, allocator);
}

Value DataPoint(const char* name, Allocator& allocator)
{
    Value data(rapidjson::kObjectType);
    data.AddMember("name", StringRef(name), allocator);
    data.AddMember("timestamp", static_cast<int64_t>(std::time(nullptr)), allocator);
    return data;
}

/// Adds `list` to `target` as an array `name`; `fill(object, element)` adds the members of one element. Adds nothing
/// for an empty list.
template <typename List, typename Fill>
void AddStreams(const List& list, const std::string& name, Allocator& allocator, Value& target, Fill fill)
{
    if (list.empty())
    {
        return;
    }
    Value streams(rapidjson::kArrayType);
    streams.Reserve(static_cast<rapidjson::SizeType>(list.size()), allocator);
    for (const auto& element : list)
    {
        Value stream(rapidjson::kObjectType);
        fill(stream, *element);
        streams.PushBack(stream, allocator);
    }
    target.AddMember(Value(name.c_str(), static_cast<rapidjson::SizeType>(name.size()), allocator), streams, allocator);
}

} // namespace

JsonSerialization::JsonSerialization()
    : m_version_key("version"),
      m_method_key("method"),
      m_params_key("params"),
      m_terminal_type_key("tt"),
      m_version("1.0")
{
}

std::string JsonSerialization::FormatInviteUserMsg(const InviteData& data)
{
    DocumentMemory memory;
    Document document = BasicDocument("InviteUser", &memory.allocator);
    Allocator& allocator = document.GetAllocator();
    Value inviter(rapidjson::kObjectType);
    inviter.AddMember("userId", data.userId, allocator);
    inviter.AddMember("userName", Ref(data.userName), allocator);
    inviter.AddMember("terminal", Ref(data.terminal), allocator);

    Value& params = document[m_params_key.c_str()];
    params.AddMember("inviteCode", data.inviteCode, allocator);
    // Cut to 32 bits on purpose: other clients read this member as a 32-bit number and ignore a larger one.
    params.AddMember("roomCreateTime", static_cast<uint32_t>(data.roomCreateTime), allocator);
    params.AddMember("roomCompanyId", data.roomCompanyId, allocator);
    params.AddMember("proxyUserId", data.proxyUserId, allocator);
    params.AddMember("calloutType", uint32_t{data.calloutType}, allocator);
    params.AddMember("meetingId", data.meetingId, allocator);
    params.AddMember("isForce", data.isForce, allocator);
    params.AddMember("inviter", inviter, allocator);
    return ToString(document);
}

InviteData* JsonSerialization::ParseInviteUserMsg(const std::string& json, InviteData* out)
{
    const ParsedText text(json);
    if (out == nullptr || DocumentMethodCompare(text.Root(), "InviteUser") != 0)
    {
        return out;
    }
    const Value* const params = FindObject(text.Root(), m_params_key.c_str());
    if (params == nullptr)
    {
        return out;
    }
    ReadNumber(*params, "inviteCode", &out->inviteCode);
    ReadNumber(*params, "roomCreateTime", &out->roomCreateTime);
    ReadNumber(*params, "roomCompanyId", &out->roomCompanyId);
    ReadNumber(*params, "proxyUserId", &out->proxyUserId);
    ReadNumber(*params, "calloutType", &out->calloutType);
    ReadNumber(*params, "meetingId", &out->meetingId);
    const Value* const isForce = FindMember(*params, "isForce");
    out->isForce = isForce != nullptr && isForce->IsTrue();
    if (const Value* const inviter = FindObject(*params, "inviter"))
    {
        ReadNumber(*inviter, "userId", &out->userId);
        ReadTerminatedText(*inviter, "userName", &out->userName);
        ReadTerminatedText(*inviter, "terminal", &out->terminal);
    }
    return out;
}

// The terminal type is a text in the answers to an invitation and a number in the login extension, on purpose: other
// clients read both so.
std::string JsonSerialization::FormatAcceptInviteMsg(const quenda::TerminalType& terminalType)
{
    const std::string terminal = commonutil::ToAString(terminalType);
    DocumentMemory memory;
    Document document = BasicDocument("AcceptInvite", &memory.allocator);
    document[m_params_key.c_str()].AddMember("terminal", Ref(terminal), document.GetAllocator());
    return ToString(document);
}

std::string JsonSerialization::FormatRejectInviteMsg(const quenda::TerminalType& terminalType, int mode)
{
    const std::string terminal = commonutil::ToAString(terminalType);
    DocumentMemory memory;
    Document document = BasicDocument("RejectInvite", &memory.allocator);
    Value& params = document[m_params_key.c_str()];
    params.AddMember("terminal", Ref(terminal), document.GetAllocator());
    params.AddMember("mode", static_cast<uint32_t>(mode), document.GetAllocator());
    return ToString(document);
}

std::string JsonSerialization::FormatLoginExtInfo(const quenda::TerminalType& terminalType)
{
    DocumentMemory memory;
    Document document(rapidjson::kObjectType, &memory.allocator);
    document.AddMember(Ref(m_terminal_type_key), static_cast<uint32_t>(terminalType), document.GetAllocator());
    return ToString(document);
}

uint32_t JsonSerialization::ParseLoginExtInfo(const std::string& json)
{
    const ParsedText text(json);
    const Value* const value = FindMember(text.Root(), m_terminal_type_key.c_str());
    if (value == nullptr)
    {
        return 0;
    }
    if (value->IsUint())
    {
        return value->GetUint();
    }
    unsigned number = 0;
    if (value->IsString())
    {
        commonutil::ReadUserId(value->GetString(), &number);
    }
    return number;
}

std::string JsonSerialization::FormatAvQualityOverview(const std::shared_ptr<AVQualityInfo>& info)
{
    DocumentMemory memory;
    Allocator& allocator = memory.allocator;
    Document document(&allocator);
    Value data = DataPoint("pc.avQuality.overview", allocator);
    Value fields(rapidjson::kObjectType);
    fields.AddMember("avQualityLevel", static_cast<uint32_t>(info->avQualityLevel), allocator);
    data.AddMember("fields", fields, allocator);
    FillQualityReport(document, "overview", data, *info);
    return ToString(document);
}

std::string JsonSerialization::FormatAvQualityDetail(const std::shared_ptr<AVQualityInfo>& info)
{
    DocumentMemory memory;
    Allocator& allocator = memory.allocator;
    Document document(&allocator);
    Value data = DataPoint("pc.avQuality.detail", allocator);
    FormatAudioQuality(info->sendAudio, "sendAudio", allocator, data);
    FormatAudioQuality(info->receiveAudio, "receiveAudio", allocator, data);
    FormatVideoQuality(info->sendVideo, "sendVideo", allocator, data);
    FormatVideoQuality(info->receiveVideo, "receiveVideo", allocator, data);
    FillQualityReport(document, "detail", data, *info);
    return ToString(document);
}

void JsonSerialization::ParseTMsgInfo(const std::string& /*json*/) {}

void JsonSerialization::ParseMdsClientInfo(const std::string& json, std::string& command, std::string& subType)
{
    const ParsedText text(json);
    const Value* const message = FindObject(text.Root(), "message");
    if (message == nullptr)
    {
        return;
    }
    ReadText(*message, "command", &command);
    if (const Value* const data = FindObject(*message, "data"))
    {
        ReadText(*data, "subType", &subType);
    }
}

Document JsonSerialization::BasicDocument(const std::string& method, Allocator* memory)
{
    Document document(rapidjson::kObjectType, memory);
    Allocator& allocator = document.GetAllocator();
    document.AddMember(Ref(m_version_key), Ref(m_version), allocator);
    document.AddMember(Ref(m_method_key),
                       Value(method.c_str(), static_cast<rapidjson::SizeType>(method.size()), allocator), allocator);
    document.AddMember(Ref(m_params_key), Value(rapidjson::kObjectType), allocator);
    return document;
}

int JsonSerialization::DocumentMethodCompare(const Value& document, const std::string& method)
{
    const Value* const member = FindMember(document, m_method_key.c_str());
    if (member == nullptr || !member->IsString())
    {
        return -1;
    }
    return method.compare(0, method.size(), member->GetString(), member->GetStringLength());
}

std::string JsonSerialization::ToString(const Document& document)
{
    std::string text;
    if (!Write<AsciiWriter>(document, &text))
    {
        Write<RepairingWriter>(document, &text);
    }
    return text;
}

void JsonSerialization::FormatAudioQuality(const std::list<std::shared_ptr<AudioQualityData>>& list,
                                           const std::string& name, Allocator& allocator, Value& target)
{
    AddStreams(list, name, allocator, target,
               [&allocator](Value& stream, const AudioQualityData& data)
               {
                   stream.AddMember("userId", data.userId, allocator);
                   stream.AddMember("userName", Ref(data.userName), allocator);
                   stream.AddMember("protocol", Ref(data.protocol), allocator);
                   stream.AddMember("bitrate", Ref(data.bitrate), allocator);
                   stream.AddMember("pktlr", Ref(data.pktlr), allocator);
                   stream.AddMember("rtt", Ref(data.rtt), allocator);
                   stream.AddMember("jitter", Ref(data.jitter), allocator);
               });
}

void JsonSerialization::FormatVideoQuality(const std::list<std::shared_ptr<VideoQualityData>>& list,
                                           const std::string& name, Allocator& allocator, Value& target)
{
    AddStreams(list, name, allocator, target,
               [&allocator](Value& stream, const VideoQualityData& data)
               {
                   stream.AddMember("userId", data.userId, allocator);
                   stream.AddMember("mediaId", data.mediaId, allocator);
                   stream.AddMember("userName", Ref(data.userName), allocator);
                   stream.AddMember("protocol", Ref(data.protocol), allocator);
                   stream.AddMember("bitrate", Ref(data.bitrate), allocator);
                   stream.AddMember("resolve", Ref(data.resolve), allocator);
                   stream.AddMember("framerate", Ref(data.framerate), allocator);
                   stream.AddMember("pktlr", Ref(data.pktlr), allocator);
                   stream.AddMember("rtt", Ref(data.rtt), allocator);
                   stream.AddMember("jitter", Ref(data.jitter), allocator);
               });
}

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
