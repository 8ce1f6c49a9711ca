#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The payloads: JSON, so that an operator can read the traffic of a backplane. Texts of users travel byte for byte,
/// also when they are not UTF-8. `Decode` returns nothing for an unexpected payload.
namespace platform
{

/// The state of one terminal. The topic names its user and device.
///
/// Every session has an id, and each of its connections to the backplane has a newer epoch. Id and epoch identify late
/// messages of an older session and the late will of an older connection.
struct PresenceRecord
{
    bool online = false;
    bool force = false; ///< the login was forced: it displaces an older one with the same tag
    uint64_t epoch = 0;
    std::string sessionId;
    std::string mutex;
    std::string custom;
    std::string ext;

    std::string Encode() const;
    static std::optional<PresenceRecord> Decode(std::string_view payload);
};

/// A session in a group. The topic names its user and session id.
struct MemberRecord
{
    bool present = false;
    uint64_t epoch = 0;
    std::string presenceTopic; ///< presence topic of the terminal; empty when this record is the will of its connection

    std::string Encode() const;
    static std::optional<MemberRecord> Decode(std::string_view payload);
};

/// A message to a user, a terminal or a group.
struct PostRecord
{
    enum class Kind
    {
        Invite,
        Cancel,
        Accept,
        Decline,
        Answered, ///< to the invitee's other terminals: the invitation is closed
        Message,
        Command, ///< from the monitoring service to a terminal
        Report,  ///< from a terminal to the monitoring service
    };

    Kind kind = Kind::Message;
    std::string serial;      ///< unique, so that a receiver recognises a repetition
    std::string from;        ///< the sending user; for `Answered` the inviter
    std::string fromSession; ///< the sending session
    std::string replyTopic;  ///< of an invitation: topic of its answers
    uint32_t id = 0;         ///< of the invitation or the message
    std::string code;        ///< of an invitation
    std::string text;

    std::string Encode() const;
    static std::optional<PostRecord> Decode(std::string_view payload);
};

} // namespace platform
