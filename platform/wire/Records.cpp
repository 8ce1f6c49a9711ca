#include "platform/wire/Records.h"

#include <array>
#include <limits>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace platform
{

namespace
{

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

constexpr std::array<std::string_view, 8> kKindNames{"invite",   "cancel",  "accept",  "decline",
                                                     "answered", "message", "command", "report"};

/// Room for a usual record, so that decoding one allocates no memory.
class Reader
{
public:
    /// A payload may come from any client, nested to any depth, so the parser does not recurse.
    explicit Reader(std::string_view payload)
        : m_allocator(m_memory.data(), m_memory.size()),
          m_stackAllocator(m_stack.data(), m_stack.size()),
          m_document(&m_allocator, kStackCapacity, &m_stackAllocator)
    {
        m_document.Parse<rapidjson::kParseIterativeFlag>(payload.data(), payload.size());
    }

    bool IsObject() const
    {
        return !m_document.HasParseError() && m_document.IsObject();
    }

    std::string Text(const char* name) const
    {
        const auto member = m_document.FindMember(name);
        if (member == m_document.MemberEnd() || !member->value.IsString())
        {
            return {};
        }
        return {member->value.GetString(), member->value.GetStringLength()};
    }

    bool Flag(const char* name) const
    {
        const auto member = m_document.FindMember(name);
        return member != m_document.MemberEnd() && member->value.IsTrue();
    }

    std::optional<uint64_t> Number(const char* name) const
    {
        const auto member = m_document.FindMember(name);
        if (member == m_document.MemberEnd() || !member->value.IsUint64())
        {
            return std::nullopt;
        }
        return member->value.GetUint64();
    }

private:
    static constexpr size_t kStackCapacity = 512;
    using Allocator = rapidjson::MemoryPoolAllocator<>;

    std::array<char, 2048> m_memory;
    std::array<char, 1024> m_stack;
    Allocator m_allocator;
    Allocator m_stackAllocator;
    rapidjson::GenericDocument<rapidjson::UTF8<>, Allocator, Allocator> m_document;
};

/// Epochs above this leave no room for a newer one, so no platform has made them.
constexpr uint64_t kGreatestEpoch = std::numeric_limits<uint64_t>::max() / 2;

std::optional<uint64_t> ReadEpoch(const Reader& reader)
{
    const std::optional<uint64_t> epoch = reader.Number("epoch");
    return epoch && *epoch <= kGreatestEpoch ? epoch : std::nullopt;
}

void WriteText(Writer& writer, const char* name, const std::string& text)
{
    if (!text.empty())
    {
        writer.Key(name);
        writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
}

void WriteFlag(Writer& writer, const char* name, bool flag)
{
    if (flag)
    {
        writer.Key(name);
        writer.Bool(flag);
    }
}

void WriteNumber(Writer& writer, const char* name, uint64_t number)
{
    writer.Key(name);
    writer.Uint64(number);
}

template <typename Members>
std::string WriteObject(Members members)
{
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    members(writer);
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

} // namespace

std::string PresenceRecord::Encode() const
{
    return WriteObject(
        [this](Writer& writer)
        {
            WriteFlag(writer, "online", online);
            WriteFlag(writer, "force", force);
            WriteNumber(writer, "epoch", epoch);
            WriteText(writer, "session", sessionId);
            WriteText(writer, "mutex", mutex);
            WriteText(writer, "custom", custom);
            WriteText(writer, "ext", ext);
        });
}

std::optional<PresenceRecord> PresenceRecord::Decode(std::string_view payload)
{
    const Reader reader(payload);
    if (!reader.IsObject())
    {
        return std::nullopt;
    }
    const std::optional<uint64_t> epoch = ReadEpoch(reader);
    if (!epoch)
    {
        return std::nullopt;
    }
    PresenceRecord record;
    record.online = reader.Flag("online");
    record.force = reader.Flag("force");
    record.epoch = *epoch;
    record.sessionId = reader.Text("session");
    record.mutex = reader.Text("mutex");
    record.custom = reader.Text("custom");
    record.ext = reader.Text("ext");
    return record;
}

std::string MemberRecord::Encode() const
{
    return WriteObject(
        [this](Writer& writer)
        {
            WriteFlag(writer, "present", present);
            WriteNumber(writer, "epoch", epoch);
            WriteText(writer, "presence", presenceTopic);
        });
}

std::optional<MemberRecord> MemberRecord::Decode(std::string_view payload)
{
    const Reader reader(payload);
    if (!reader.IsObject())
    {
        return std::nullopt;
    }
    const std::optional<uint64_t> epoch = ReadEpoch(reader);
    if (!epoch)
    {
        return std::nullopt;
    }
    return MemberRecord{reader.Flag("present"), *epoch, reader.Text("presence")};
}

std::string PostRecord::Encode() const
{
    return WriteObject(
        [this](Writer& writer)
        {
            writer.Key("kind");
            const std::string_view name = kKindNames[static_cast<size_t>(kind)];
            writer.String(name.data(), static_cast<rapidjson::SizeType>(name.size()));
            WriteText(writer, "serial", serial);
            WriteText(writer, "from", from);
            WriteText(writer, "session", fromSession);
            WriteText(writer, "reply", replyTopic);
            WriteNumber(writer, "id", id);
            WriteText(writer, "code", code);
            WriteText(writer, "text", text);
        });
}

std::optional<PostRecord> PostRecord::Decode(std::string_view payload)
{
    const Reader reader(payload);
    if (!reader.IsObject())
    {
        return std::nullopt;
    }
    const std::string kindName = reader.Text("kind");
    const std::optional<uint64_t> id = reader.Number("id");
    if (!id || *id > std::numeric_limits<uint32_t>::max())
    {
        return std::nullopt;
    }
    for (size_t i = 0; i < kKindNames.size(); ++i)
    {
        if (kKindNames[i] == kindName)
        {
            PostRecord record;
            record.kind = static_cast<Kind>(i);
            record.serial = reader.Text("serial");
            record.from = reader.Text("from");
            record.fromSession = reader.Text("session");
            record.replyTopic = reader.Text("reply");
            record.id = static_cast<uint32_t>(*id);
            record.code = reader.Text("code");
            record.text = reader.Text("text");
            return record;
        }
    }
    return std::nullopt;
}

} // namespace platform
