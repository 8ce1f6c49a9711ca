#include "onlinemanager/JsonSerialization.h"

#include <gtest/gtest.h>

#include <thread>

using onlinemanager::InviteData;
using onlinemanager::JsonSerialization;

namespace
{

rapidjson::Document Parsed(const std::string& json)
{
    rapidjson::Document document;
    document.Parse(json.c_str());
    return document;
}

InviteData Filled()
{
    InviteData data;
    data.inviteCode = 9;
    data.roomCreateTime = 0x900000009;
    data.roomCompanyId = 9;
    data.isForce = true;
    data.proxyUserId = 9;
    data.calloutType = 9;
    data.meetingId = 9;
    data.userId = 9;
    data.userName = "nine";
    data.terminal = "nine";
    return data;
}

void ExpectFilled(const InviteData& data)
{
    EXPECT_EQ(9u, data.inviteCode);
    EXPECT_EQ(0x900000009u, data.roomCreateTime);
    EXPECT_EQ(9u, data.roomCompanyId);
    EXPECT_EQ(9u, data.proxyUserId);
    EXPECT_EQ(9u, data.calloutType);
    EXPECT_EQ(9u, data.meetingId);
    EXPECT_EQ(9u, data.userId);
    EXPECT_EQ("nine", data.userName);
    EXPECT_EQ("nine", data.terminal);
}

} // namespace

TEST(JsonSerialization, ParsingAnInvitationReturnsItsOutput)
{
    JsonSerialization json;
    InviteData data;
    EXPECT_EQ(&data, json.ParseInviteUserMsg("", &data));
    EXPECT_EQ(&data, json.ParseInviteUserMsg(R"({"method":"InviteUser","params":{}})", &data));
    EXPECT_EQ(nullptr, json.ParseInviteUserMsg("{}", nullptr));
}

TEST(JsonSerialization, TextThatIsNotAnInvitationLeavesTheRecordAsItWas)
{
    JsonSerialization json;
    for (const char* const text : {"", "[]", R"({"method":"InviteUsers","params":{"inviteCode":1}})",
                                   R"({"method":"InviteUser"})", R"({"method":"InviteUser","params":1})"})
    {
        InviteData data = Filled();
        json.ParseInviteUserMsg(text, &data);
        ExpectFilled(data);
        EXPECT_TRUE(data.isForce) << text;
    }
}

TEST(JsonSerialization, MissingAndUnfitMembersLeaveTheirFieldsAsTheyWere)
{
    JsonSerialization json;
    for (const char* const params :
         {"{}", R"({"calloutType":-1,"inviteCode":3.5,"roomCreateTime":4294967296,"meetingId":"1","inviter":[]})",
          R"({"proxyUserId":null,"roomCompanyId":[],"inviter":{"userId":-1,"userName":1,"terminal":{}}})"})
    {
        InviteData data = Filled();
        json.ParseInviteUserMsg(std::string(R"({"method":"InviteUser","params":)") + params + "}", &data);
        ExpectFilled(data);
        EXPECT_FALSE(data.isForce) << params;
    }
}

TEST(JsonSerialization, ARejectModeOfMinus1IsWrittenAs4294967295)
{
    JsonSerialization json;
    EXPECT_EQ(R"({"version":"1.0","method":"RejectInvite","params":{"terminal":"3","mode":4294967295}})",
              json.FormatRejectInviteMsg(static_cast<quenda::TerminalType>(3), -1));
}

TEST(JsonSerialization, ACommandThatIsNotFoundLeavesTheOutputsAsTheyWere)
{
    JsonSerialization json;
    for (const char* const text : {"", "{", "[]", R"({"message":{"command":7}})", R"({"message":[]})",
                                   R"({"message":{"data":{"subType":null}}})", R"({"message":{"data":[]}})"})
    {
        std::string command = "before";
        std::string subType = "before";
        json.ParseMdsClientInfo(text, command, subType);
        EXPECT_EQ("before", command) << text;
        EXPECT_EQ("before", subType) << text;
    }
}

TEST(JsonSerialization, CommandAndSubTypeAreReadIndependently)
{
    JsonSerialization json;
    std::string command = "before";
    std::string subType = "before";
    json.ParseMdsClientInfo(R"({"message":{"command":"c"}})", command, subType);
    EXPECT_EQ("c", command);
    EXPECT_EQ("before", subType);
    json.ParseMdsClientInfo(R"({"message":{"data":{"subType":"s"}}})", command, subType);
    EXPECT_EQ("c", command);
    EXPECT_EQ("s", subType);
}

TEST(JsonSerialization, AnEnvelopeHasVersionMethodAndEmptyParams)
{
    JsonSerialization json;
    EXPECT_EQ(R"({"version":"1.0","method":"m","params":{}})", json.ToString(json.BasicDocument("m")));
}

TEST(JsonSerialization, MethodsAreComparedAsTextsAre)
{
    JsonSerialization json;
    EXPECT_EQ(0, json.DocumentMethodCompare(Parsed(R"({"method":"b"})"), "b"));
    EXPECT_GT(0, json.DocumentMethodCompare(Parsed(R"({"method":"b"})"), "a"));
    EXPECT_LT(0, json.DocumentMethodCompare(Parsed(R"({"method":"b"})"), "c"));
    for (const char* const text : {"[]", "1", "{}", R"({"method":1})", R"({"method":null})", R"({"METHOD":"b"})"})
    {
        EXPECT_EQ(-1, json.DocumentMethodCompare(Parsed(text), "b")) << text;
    }
}

TEST(JsonSerialization, TransparentMessagesAreNotParsed)
{
    JsonSerialization json;
    EXPECT_NO_THROW(json.ParseTMsgInfo("nonsense"));
}

TEST(JsonSerialization, OneObjectServesManyThreads)
{
    JsonSerialization json;
    const auto use = [&json](unsigned code)
    {
        for (int round = 0; round < 500; ++round)
        {
            InviteData sent;
            sent.inviteCode = code;
            InviteData received;
            json.ParseInviteUserMsg(json.FormatInviteUserMsg(sent), &received);
            EXPECT_EQ(code, received.inviteCode);
            EXPECT_EQ(code, json.ParseLoginExtInfo(json.FormatLoginExtInfo(static_cast<quenda::TerminalType>(code))));
        }
    };
    std::thread first(use, 1u);
    std::thread second(use, 2u);
    first.join();
    second.join();
}
