#include "checks/Stage.h"

#include <cctype>

namespace checks
{

namespace
{

using onlinemanager::InviteData;

/// Lower-case letters in the \uXXXX escapes: the JSON writer may choose their case.
std::string WithSmallEscapes(std::string json)
{
    for (size_t position = 0; (position = json.find("\\u", position)) != std::string::npos; position += 6)
    {
        for (size_t index = position + 2; index < position + 6 && index < json.size(); ++index)
        {
            json[index] = static_cast<char>(std::tolower(static_cast<unsigned char>(json[index])));
        }
    }
    return json;
}

/// A logged-in user. The platform's calls for invitations and answers contain the JSON of the module.
struct Messages
{
    explicit Messages(CheckContext& check) : stage(check, Scene::LoggedIn), users(stage.Users())
    {
        users->AddNotify(&listener);
    }

    ~Messages()
    {
        users->RemoveAllNotify();
    }

    /// The JSON in the journal's line that contains `call`; empty if there is none. Clears the journal.
    std::string SentJson(const std::string& call)
    {
        for (const JournalEntry& entry : stage.journal.Take())
        {
            const size_t begin = entry.text.find('{');
            if (entry.text.find(call) != std::string::npos && begin != std::string::npos)
            {
                return WithSmallEscapes(entry.text.substr(begin, entry.text.rfind('}') + 1 - begin));
            }
        }
        return {};
    }

    std::string Invitation(const InviteData& data)
    {
        unsigned inviteId = 0;
        users->InviteUsers({7}, data, &inviteId);
        return SentJson("online1.InviteUsers(");
    }

    /// What the listener gets for an incoming invitation with this text.
    std::string Received(const std::string& json)
    {
        stage.journal.Clear();
        stage.Connection().online.InviteIncome("9", ++lastInviteId, "7", json.c_str());
        const std::string begin = "U.OnInviteIncome(9, " + std::to_string(lastInviteId) + ", ";
        for (const JournalEntry& entry : stage.journal.Take())
        {
            if (entry.text.starts_with(begin))
            {
                return entry.text.substr(begin.size(), entry.text.size() - begin.size() - 1);
            }
        }
        return "not reported";
    }

    /// The terminal type that the module reads from a terminal's extension text.
    unsigned TerminalType(const std::string& ext)
    {
        const unsigned user = ++lastUser;
        stage.Connection().online.UserTerminalStateChanged(std::to_string(user).c_str(), {"t", 1, "", ext});
        unsigned type = 0xFFFFFFFF;
        users->QueryUserStatus({user},
                               [&](const onlinemanager::UserOnlineInfo& info)
                               {
                                   if (info.terminals.size() == 1)
                                   {
                                       type = info.terminals[0].terminal_type;
                                   }
                               });
        return type;
    }

    Stage stage;
    onlinemanager::IUserOnline* users;
    UserNotify listener{stage.journal, "U"};
    unsigned lastInviteId = 0;
    unsigned lastUser = 1000;
};

InviteData FullInvitation()
{
    InviteData data;
    data.inviteCode = 7;
    data.roomCreateTime = 1600000000;
    data.roomCompanyId = 1001;
    data.isForce = false;
    data.proxyUserId = 0;
    data.calloutType = 1;
    data.meetingId = 880012;
    data.userId = 52011;
    data.userName = "Ann";
    data.terminal = "pc";
    return data;
}

/// An invitation as it arrives, with one member of "params" replaced by `member`; all others have the value 1.
std::string InvitationWith(const std::string& member)
{
    const std::string key = member.substr(0, member.find(':'));
    std::string params;
    for (const char* const name :
         {"inviteCode", "roomCreateTime", "roomCompanyId", "proxyUserId", "calloutType", "meetingId"})
    {
        const std::string quoted = '"' + std::string(name) + '"';
        params += (quoted == key ? member : quoted + ":1") + ",";
    }
    return R"({"version":"1.0","method":"InviteUser","params":{)" + params + R"("isForce":true}})";
}

/// A default invitation as the listener gets it, with one field replaced.
const std::string kNothing =
    R"({code=0 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name="" terminal=""})";

/// A command for the MDS client and the notifications of its listener.
struct Commands
{
    explicit Commands(CheckContext& check) : stage(check), mds(stage.Mds())
    {
        mds->AddNotify(&listener);
        mds->InitMdsClient();
    }

    ~Commands()
    {
        mds->RemoveAllNotify();
    }

    void ExpectHeard(const std::string& json, const std::vector<std::string>& heard, Where where = Where::Here())
    {
        stage.journal.Clear();
        stage.Connection().mds.MsgData(json.c_str());
        std::vector<std::string> lines = {LogLine("PaasMdsClientImp", "PaasTMsgImp::OnMdsMsgData msg:" + json + ".")};
        lines.insert(lines.end(), heard.begin(), heard.end());
        stage.ExpectJournal(lines, where);
    }

    Stage stage;
    onlinemanager::IPaasMdsClient* mds;
    MdsNotify listener{stage.journal, "M"};
};

} // namespace

CONTRACT_CHECK(Json, AnInvitationHasItsMembersInOrder,
               "Envelope and params are compact and in the order of the protocol.")
{
    Messages messages(check);
    check.ExpectEqual(R"({"version":"1.0","method":"InviteUser","params":{"inviteCode":7,"roomCreateTime":1600000000,)"
                      R"("roomCompanyId":1001,"proxyUserId":0,"calloutType":1,"meetingId":880012,"isForce":false,)"
                      R"("inviter":{"userId":52011,"userName":"Ann","terminal":"pc"}}})",
                      messages.Invitation(FullInvitation()), "the invitation");
}

CONTRACT_CHECK(Json, AnInvitationCarriesTheLargestValues, "Every number is written as an unsigned one.")
{
    Messages messages(check);
    InviteData data;
    data.inviteCode = 4294967295U;
    data.roomCreateTime = 4294967295U;
    data.roomCompanyId = 4294967295U;
    data.isForce = true;
    data.proxyUserId = 4294967295U;
    data.calloutType = 65535;
    data.meetingId = 4294967295U;
    data.userId = 4294967295U;
    check.ExpectEqual(
        R"({"version":"1.0","method":"InviteUser","params":{"inviteCode":4294967295,"roomCreateTime":4294967295,)"
        R"("roomCompanyId":4294967295,"proxyUserId":4294967295,"calloutType":65535,"meetingId":4294967295,)"
        R"("isForce":true,"inviter":{"userId":4294967295,"userName":"","terminal":""}}})",
        messages.Invitation(data), "the invitation");
}

CONTRACT_CHECK(Json, ARoomCreateTimeOf2To32Plus5IsWrittenAs5, "Only its low 32 bits are sent, on purpose.")
{
    Messages messages(check);
    InviteData data;
    data.roomCreateTime = 0x100000005;
    check.Expect(messages.Invitation(data).find(R"("roomCreateTime":5,)") != std::string::npos, "it is written as 5");
}

CONTRACT_CHECK(Json, TextBeyondAsciiIsEscaped, "Zo\u00eb is written with \\u00eb, a character above U+FFFF as a pair.")
{
    Messages messages(check);
    InviteData data;
    data.userName = "Zo\u00eb \U0001F600 \u4e2d";
    data.terminal = "\u00fc";
    const std::string json = messages.Invitation(data);
    check.Expect(json.find(R"("userName":"Zo\u00eb \ud83d\ude00 \u4e2d","terminal":"\u00fc")") != std::string::npos,
                 "the escapes stand in " + json);
}

CONTRACT_CHECK(Json, QuotesBackslashesAndControlCharactersAreEscaped, "The usual escapes of JSON.")
{
    Messages messages(check);
    InviteData data;
    data.userName = std::string("\"\\/\b\f\n\r\t\x01\x1f\x7f", 11);
    const std::string json = messages.Invitation(data);
    check.Expect(json.find(R"("userName":"\"\\/\b\f\n\r\t\u0001\u001f)"
                           "\x7f\",") != std::string::npos,
                 "the escapes stand in " + json);
}

CONTRACT_CHECK(Json, TextThatIsNotUtf8LosesNothingElse,
               "An invitation with such a name is sent with every other member unchanged.")
{
    Messages messages(check);
    for (const std::string& name : {std::string("A\xFF\xFE"), std::string("\xC3"), std::string("\xED\xA0\x80"),
                                    std::string("\xF0\x9F\x98"), std::string("\x80 Ann")})
    {
        InviteData data = FullInvitation();
        data.userName = name;
        const std::string json = messages.Invitation(data);
        check.Expect(json.ends_with(R"("terminal":"pc"}}})"), "the invitation is complete: " + json);
    }
}

CONTRACT_CHECK(Json, AnInvitationIsReadIntoEveryField, "Every field that the module writes can be read back.")
{
    Messages messages(check);
    InviteData data = FullInvitation();
    data.isForce = true;
    data.userName = "Zo\u00eb \"\U0001F600\"";
    check.ExpectEqual(TextOf(data), messages.Received(messages.Invitation(data)), "the invitation");
}

CONTRACT_CHECK(Json, ARoomCreateTimeOf4000000000IsReadAsSuch, "The 64-bit field takes any unsigned 32-bit number.")
{
    Messages messages(check);
    check.ExpectEqual(
        R"({code=1 time=4000000000 company=1 force=1 proxy=1 callout=1 meeting=1 user=0 name="" terminal=""})",
        messages.Received(InvitationWith(R"("roomCreateTime":4000000000)")), "the invitation");
}

CONTRACT_CHECK(Json, AnInvitationWithoutIsForceIsNotForced, "Anything but the literal true is false.")
{
    Messages messages(check);
    check.ExpectEqual(kNothing, messages.Received(R"({"method":"InviteUser","params":{}})"), "without the member");
    for (const char* const value : {"1", "\"true\"", "null", "false", "{}"})
    {
        check.ExpectEqual(
            kNothing, messages.Received(R"({"method":"InviteUser","params":{"isForce":)" + std::string(value) + "}}"),
            value);
    }
}

CONTRACT_CHECK(Json, ACalloutTypeThatIsNoUnsignedNumberIsLeftAlone,
               "With -1, 3.5 and values of other types it stays 0.")
{
    Messages messages(check);
    for (const char* const value : {"-1", "3.5", "\"1\"", "true", "null", "4294967296", "1e3", "[1]"})
    {
        check.ExpectEqual(R"({code=1 time=1 company=1 force=1 proxy=1 callout=0 meeting=1 user=0 name="" terminal=""})",
                          messages.Received(InvitationWith(R"("calloutType":)" + std::string(value))), value);
    }
}

CONTRACT_CHECK(Json, ACalloutTypeIsCutTo16Bits, "70000 is read as 4464.")
{
    Messages messages(check);
    check.ExpectEqual(R"({code=1 time=1 company=1 force=1 proxy=1 callout=4464 meeting=1 user=0 name="" terminal=""})",
                      messages.Received(InvitationWith(R"("calloutType":70000)")), "the invitation");
}

CONTRACT_CHECK(Json, NumbersThatDoNotFitLeaveTheirFieldsAlone, "The other numbers are still read.")
{
    Messages messages(check);
    const std::pair<const char*, const char*> fields[] = {{"inviteCode", "code"},
                                                          {"roomCreateTime", "time"},
                                                          {"roomCompanyId", "company"},
                                                          {"proxyUserId", "proxy"},
                                                          {"meetingId", "meeting"}};
    for (const auto& [member, field] : fields)
    {
        for (const char* const value : {"-1", "4294967296", "0.5", "\"1\"", "{}"})
        {
            std::string expected =
                R"({code=1 time=1 company=1 force=1 proxy=1 callout=1 meeting=1 user=0 name="" terminal=""})";
            const std::string whole = std::string(field) + "=1";
            expected.replace(expected.find(whole), whole.size(), std::string(field) + "=0");
            check.ExpectEqual(expected, messages.Received(InvitationWith('"' + std::string(member) + "\":" + value)),
                              std::string(member) + " of " + value);
        }
    }
}

CONTRACT_CHECK(Json, AnotherMethodIsNoInvitation,
               "For InviteUsers, a method that is not a string, or no method, the listener gets an empty invitation.")
{
    Messages messages(check);
    const std::string params = R"("params":{"inviteCode":1,"isForce":true})";
    for (const char* const method : {R"("method":"InviteUsers",)", R"("method":"inviteuser",)", R"("method":"",)",
                                     R"("method":1,)", R"("method":null,)", R"("method":["InviteUser"],)", ""})
    {
        check.ExpectEqual(kNothing, messages.Received("{" + std::string(method) + params + "}"), method);
    }
}

CONTRACT_CHECK(Json, TheVersionOfAnInvitationIsNotLookedAt, "Method and params are enough.")
{
    Messages messages(check);
    check.ExpectEqual(R"({code=1 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name="" terminal=""})",
                      messages.Received(R"({"params":{"inviteCode":1},"version":2,"method":"InviteUser"})"),
                      "the invitation");
}

CONTRACT_CHECK(Json, ParamsThatAreNoObjectAreNoInvitation, "The fields keep their defaults.")
{
    Messages messages(check);
    for (const char* const params : {"", R"(,"params":1)", R"(,"params":[])", R"(,"params":null)", R"(,"params":"x")"})
    {
        check.ExpectEqual(kNothing, messages.Received(R"({"method":"InviteUser")" + std::string(params) + "}"), params);
    }
}

CONTRACT_CHECK(Json, AnInviterIsReadMemberByMember,
               "Members of another type are ignored, and so is an inviter of another type.")
{
    Messages messages(check);
    const auto received = [&](const std::string& inviter)
    { return messages.Received(R"({"method":"InviteUser","params":{"inviter":)" + inviter + "}}"); };
    check.ExpectEqual(R"({code=0 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=5 name="" terminal=""})",
                      received(R"({"userId":5,"userName":1,"terminal":null})"), "only a user id");
    check.ExpectEqual(R"({code=0 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name="n" terminal="t"})",
                      received(R"({"userId":-5,"userName":"n","terminal":"t"})"), "no user id");
    for (const char* const inviter : {"[]", "1", "null", "\"n\"", "{}"})
    {
        check.ExpectEqual(kNothing, received(inviter), inviter);
    }
}

CONTRACT_CHECK(Json, ATextOfTheInviterEndsAtItsFirstNul, "An escaped NUL ends the text.")
{
    Messages messages(check);
    check.ExpectEqual(R"({code=0 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name="An" terminal=""})",
                      messages.Received(R"({"method":"InviteUser","params":{"inviter":{"userName":"An\u0000n",)"
                                        R"("terminal":"\u0000t"}}})"),
                      "the invitation");
}

CONTRACT_CHECK(
    Json, UnreadableTextIsReportedAsAnEmptyInvitation,
    "Other root values, truncated JSON and other text leave every field at its default; the listener is called.")
{
    Messages messages(check);
    for (const char* const text : {"", " ", "null", "1", "\"InviteUser\"", "[]", "[{}]", "{", "}", "{]", "nonsense",
                                   "\xFF\xFE", "{\"method\":\"InviteUser\",}", "{}{}", "// {}"})
    {
        check.ExpectEqual(kNothing, messages.Received(text), text);
    }
    const std::string whole = messages.Invitation(FullInvitation());
    for (size_t length = 0; length < whole.size(); ++length)
    {
        check.ExpectEqual(kNothing, messages.Received(whole.substr(0, length)),
                          "cut off after " + std::to_string(length) + " characters");
    }
    check.ExpectEqual(kNothing, messages.Received(whole + "x"), "with something behind it");
}

CONTRACT_CHECK(Json, DeepNestingIsReadAsAnEmptyMessage,
               "A thousand levels and many more, well-formed or not, are read as an empty message.")
{
    Messages messages(check);
    for (const size_t depth : {size_t{1000}, size_t{100000}})
    {
        for (const std::string& open : {std::string("["), std::string("{\"a\":"), std::string("[{\"a\":")})
        {
            std::string text;
            for (size_t level = 0; level < depth; ++level)
            {
                text += open;
            }
            check.ExpectEqual(kNothing, messages.Received(text), "an open text of " + std::to_string(depth));
            check.ExpectEqual(0, messages.TerminalType(text), "the terminal type of the same text");
        }
        const std::string nested = std::string(depth, '[') + std::string(depth, ']');
        check.ExpectEqual(R"({code=3 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name="" terminal=""})",
                          messages.Received(R"({"method":"InviteUser","x":)" + nested +
                                            R"(,"params":{"inviteCode":3,"inviter":)" + nested + "}}"),
                          "an invitation with such members");
    }
}

CONTRACT_CHECK(Json, AnAcceptCarriesTheTerminalAsText, "The terminal type is sent as decimal text.")
{
    Messages messages(check);
    messages.users->AcceptInvite(9, 1, true);
    check.ExpectEqual(R"({"version":"1.0","method":"AcceptInvite","params":{"terminal":"3"}})",
                      messages.SentJson("online1.AcceptInvite("), "the answer");
}

CONTRACT_CHECK(Json, ARejectCarriesTheTerminalAsTextAndTheModeAsANumber,
               "A plain decline has mode 17; a reason is written as an unsigned number, -1 as 4294967295.")
{
    Messages messages(check);
    messages.users->AcceptInvite(9, 1, false);
    check.ExpectEqual(R"({"version":"1.0","method":"RejectInvite","params":{"terminal":"3","mode":17}})",
                      messages.SentJson("online1.RejectInvite("), "the decline");
    for (const unsigned reason : {1U, 0U, 4294967295U})
    {
        messages.stage.Connection().online.InviteIncome("9", 100 + reason % 10, "7", "{}");
        messages.users->RejectAllInvite(static_cast<onlinemanager::RejectInvitationReason>(reason), {});
        check.ExpectEqual(R"({"version":"1.0","method":"RejectInvite","params":{"terminal":"3","mode":)" +
                              std::to_string(reason) + "}}",
                          messages.SentJson("online1.RejectInvite("), "the reject");
    }
}

CONTRACT_CHECK(Json, TheLoginExtensionCarriesTheTerminalAsANumber, "The text has a single member and no envelope.")
{
    Stage stage(check);
    for (const unsigned terminal : {3U, 0U, 4294967295U})
    {
        onlinemanager::LoginParam param = Stage::Param();
        param.terminal = static_cast<quenda::TerminalType>(terminal);
        stage.Session()->Login(param, false);
        check.ExpectEqual(1, stage.journal.Count("ext=\"{\"tt\":" + std::to_string(terminal) + "}\", force"),
                          "logins with this extension");
    }
}

CONTRACT_CHECK(Json, ATerminalTypeIsReadFromANumberOrFromDigits,
               "{\"tt\":\"12\"} is 12; the digits at the start of a text count.")
{
    Messages messages(check);
    const std::pair<const char*, unsigned> texts[] = {
        {R"({"tt":3})", 3},
        {R"({"tt":0})", 0},
        {R"({"tt":4294967295})", 4294967295U},
        {R"({"tt":"12"})", 12},
        {R"({"tt":"3x"})", 3},
        {R"({"tt":"007"})", 7},
        {R"({"a":1,"tt":5,"b":2})", 5},
        {R"({"tt":"1.9"})", 1},
        {R"({"tt":"2147483647"})", 2147483647U},
    };
    for (const auto& [text, type] : texts)
    {
        check.ExpectEqual(type, messages.TerminalType(text), text);
    }
}

CONTRACT_CHECK(Json, AnInvalidTerminalTypeIs0,
               "{\"tt\":\"a1\"}, {\"tt\":-2}, \"[]\", numbers too large, texts that are no JSON: all are 0.")
{
    Messages messages(check);
    for (const char* const text : {R"({"tt":"a1"})",
                                   R"({"tt":-2})",
                                   "[]",
                                   "",
                                   "{}",
                                   "{",
                                   R"({"tt")",
                                   R"({"tt":3)",
                                   R"({"tt":""})",
                                   R"({"tt":null})",
                                   R"({"tt":true})",
                                   R"({"tt":{}})",
                                   R"({"tt":[3]})",
                                   R"({"tt":4294967296})",
                                   R"({"tt":1.5})",
                                   R"({"tt":" 3"})",
                                   R"({"tt":"-3"})",
                                   R"({"TT":3})",
                                   "nonsense",
                                   "3",
                                   "\xFF"})
    {
        check.ExpectEqual(0, messages.TerminalType(text), text);
    }
}

CONTRACT_CHECK(Json, DigitsThatFitNoIntAreNoTerminalType, "They count as malformed, and no exception is thrown.")
{
    Messages messages(check);
    for (const char* const text :
         {R"({"tt":"2147483648"})", R"({"tt":"99999999999"})", R"({"tt":"99999999999999999999999999999999"})"})
    {
        check.ExpectEqual(0, messages.TerminalType(text), text);
    }
    check.ExpectEqual(0, messages.stage.journal.Count("exception left"), "exceptions that reached the platform");
}

CONTRACT_CHECK(Json, ACommandIsReadFromItsMessage,
               "Command and sub-type are read from the members that the service uses.")
{
    Commands commands(check);
    commands.ExpectHeard(R"({"message":{"command":"unsubscribe_av_quality","data":{"subType":"overview"}}})",
                         {"M.OnUnSubscribeAVQualityInfo()"});
    commands.ExpectHeard(R"({"message":{"data":{"subType":"detail"},"command":"subscribe_av_quality"},"x":[1,2]})",
                         {"M.OnSubscribeAVQualityInfo()"});
}

CONTRACT_CHECK(Json, ACommandThatIsNotAStringIsIgnored, "{\"message\":{\"command\":7}} does nothing.")
{
    Commands commands(check);
    for (const char* const text :
         {R"({"message":{"command":7}})", R"({"message":{"command":null,"data":{"subType":"all"}}})",
          R"({"message":{"data":{"subType":"all"}}})", R"({"message":{"command":["subscribe_av_quality"]}})"})
    {
        commands.ExpectHeard(text, {});
    }
}

CONTRACT_CHECK(Json, ASubTypeThatIsNotAStringCountsAsAbsent,
               "It counts as absent: a subscription changes nothing, an unsubscription is reported.")
{
    Commands commands(check);
    for (const char* const data : {"", R"(,"data":"all")", R"(,"data":{})", R"(,"data":{"subType":1})",
                                   R"(,"data":["all"])", R"(,"data":{"subtype":"all"})", R"(,"subType":"all")"})
    {
        commands.ExpectHeard(R"({"message":{"command":"subscribe_av_quality")" + std::string(data) + "}}", {});
        commands.ExpectHeard(R"({"message":{"command":"unsubscribe_av_quality")" + std::string(data) + "}}",
                             {"M.OnUnSubscribeAVQualityInfo()"});
    }
}

CONTRACT_CHECK(Json, UnreadableTextIsNotACommand, "Other root values, truncated JSON and deep nesting are ignored.")
{
    Commands commands(check);
    const std::string whole = R"({"message":{"command":"subscribe_av_quality","data":{"subType":"all"}}})";
    for (size_t length = 0; length < whole.size(); ++length)
    {
        commands.ExpectHeard(whole.substr(0, length), {});
    }
    for (const char* const text : {"[]", "null", "1", R"({"message":[]})", R"({"message":"command"})",
                                   R"({"command":"subscribe_av_quality","data":{"subType":"all"}})", "\xFF\xFE"})
    {
        commands.ExpectHeard(text, {});
    }
    commands.ExpectHeard(std::string(100000, '['), {});
    commands.ExpectHeard(whole, {"M.OnSubscribeAVQualityInfo()"});
}

} // namespace checks
