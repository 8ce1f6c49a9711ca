#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What travels in the payloads: JSON, as a reader of the backplane's traffic would want it. Texts of users are carried byte
/// for byte, also when they are not UTF-8. A payload that is not what it should be decodes to nothing.
namespace platform
{

/// The state of one terminal; its user and device stand in the topic.
///
/// Every session has an id, and every connection that it makes to the backplane a newer epoch, so that late messages of an
/// older session, or the late will of an older connection, are known for what they are.
struct PresenceRecord
{
    bool online = false;
    bool force = false; ///< the login was forced: it wins over an older one with the same tag
    uint64_t epoch = 0;
    std::string sessionId;
    std::string mutex;
    std::string custom;
    std::string ext;

    std::string Encode() const;
    static std::optional<PresenceRecord> Decode(std::string_view payload);
};

/// A session in a group; its user and session id stand in the topic.
struct MemberRecord
{
    bool present = false;
    uint64_t epoch = 0;
    std::string
        presenceTopic; ///< where the terminal's end is told; empty when this record is the connection's own will

    std::string Encode() const;
    static std::optional<MemberRecord> Decode(std::string_view payload);
};

/// What is sent to a user, to a terminal or to a group.
struct PostRecord
{
    enum class Kind
    {
        Invite,
        Cancel,
        Accept,
        Decline,
        Answered, ///< to the invitee's own terminals: the invitation is not open any more
        Message,
        Command, ///< of the monitoring service
        Report,  ///< to it
    };

    Kind kind = Kind::Message;
    std::string serial;      ///< different for every record, against double delivery
    std::string from;        ///< the sending user; in `Answered` the inviter
    std::string fromSession; ///< the sending session
    std::string replyTopic;  ///< of an invitation: where the answer goes
    uint32_t id = 0;         ///< of the invitation or the message
    std::string code;        ///< of an invitation
    std::string text;

    std::string Encode() const;
    static std::optional<PostRecord> Decode(std::string_view payload);
};

} // namespace platform
