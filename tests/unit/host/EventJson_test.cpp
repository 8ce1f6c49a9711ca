#include "host/console/EventJson.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <set>

using host::EventJson;
using onlinehost::Event;
using onlinehost::EventKind;

namespace
{

/// 2024-05-06, 07:08:09.042 UTC.
constexpr std::chrono::system_clock::time_point kTime{std::chrono::milliseconds(1714979289042)};

std::string Json(Event event)
{
    event.time = kTime;
    return EventJson("7@pc", event);
}

/// The fields of every event, around the fields of its kind.
std::string Expected(const std::string& name, const std::string& fields, const std::string& text)
{
    return R"({"type":"event","time":"2024-05-06T07:08:09.042Z","source":"7@pc","event":")" + name + "\"," + fields +
           R"("text":")" + text + "\"}";
}

constexpr std::pair<EventKind, const char*> kFields[] = {
    {EventKind::LoginSuccess, ""},
    {EventKind::Offline, "code codeText wasLoggedIn"},
    {EventKind::ReadyReconnect, "tunnel"},
    {EventKind::ReconnectStart, "tunnel"},
    {EventKind::ReconnectSucess, "tunnel"},
    {EventKind::ReconnectFail, "tunnel code codeText"},
    {EventKind::JoinMeetingResult, "tunnel code codeText"},
    {EventKind::LeaveMeetingResult, "tunnel code codeText"},
    {EventKind::UserJoined, "tunnel user"},
    {EventKind::UserLeaved, "tunnel user"},
    {EventKind::UserStatusChanged, "users"},
    {EventKind::UserStatusRefreshed, "request code codeText"},
    {EventKind::InviteIncome, "user invitation data"},
    {EventKind::InviteAccepted, "user invitation"},
    {EventKind::InviteRejected, "user invitation reason reasonText"},
    {EventKind::InviteAbandoned, "user invitation reason reasonText"},
    {EventKind::AVQualitySubscribed, ""},
    {EventKind::AVQualityUnsubscribed, ""},
};

} // namespace

TEST(EventJson, HasOnlyTheFieldsThatTheKindHas)
{
    ASSERT_EQ(std::size(kFields), onlinehost::EventNames().size());
    std::set<std::string> names;
    for (const auto& [kind, fields] : kFields)
    {
        rapidjson::Document document;
        const std::string json = Json({.kind = kind});
        ASSERT_FALSE(document.Parse(json.c_str()).HasParseError()) << json;
        std::string found;
        for (const auto& member : document.GetObject())
        {
            const std::string name = member.name.GetString();
            if (name != "type" && name != "time" && name != "source" && name != "event" && name != "text")
            {
                found += (found.empty() ? "" : " ") + name;
            }
        }
        EXPECT_EQ(found, fields) << json;
        EXPECT_TRUE(names.insert(document["event"].GetString()).second) << json;
    }
}

TEST(EventJson, WritesTimeSourceCodeAndText)
{
    EXPECT_EQ(Json({.kind = EventKind::LoginSuccess}), Expected("login", "", "logged in"));
    EXPECT_EQ(Json({.kind = EventKind::Offline, .code = 36}),
              Expected("offline", R"("code":36,"codeText":"logged in on another device","wasLoggedIn":false,)",
                       "could not log in: 36 (logged in on another device)"));
    EXPECT_EQ(Json({.kind = EventKind::UserJoined, .tunnel = onlinemanager::TUNNEL_TYPE_GW, .userId = 4294967295}),
              Expected("user-joined", R"("tunnel":"gateway","user":4294967295,)",
                       "sees user 4294967295 join the meeting over the gateway"));
    EXPECT_EQ(Json({.kind = EventKind::UserStatusChanged, .userIds = {7, 8}}),
              Expected("changed", R"("users":[7,8],)", "sees 2 users change: 7, 8"));
    EXPECT_EQ(
        Json({.kind = EventKind::UserStatusRefreshed, .code = 77, .requestId = 2}),
        Expected("refreshed", R"("request":2,"code":77,"codeText":"unknown code",)", "has finished refresh 2: 77"));
    EXPECT_EQ(Json({.kind = EventKind::InviteRejected, .reason = 2, .userId = 9, .requestId = 4}),
              Expected("declined", R"("user":9,"invitation":4,"reason":2,"reasonText":"the user is offline",)",
                       "learns that user 9 is offline and did not get invitation 4"));
}

TEST(EventJson, AnInvitationHasItsData)
{
    Event event{.kind = EventKind::InviteIncome, .userId = 7, .requestId = 3};
    event.invitation = {.inviteCode = 5,
                        .roomCreateTime = 6,
                        .roomCompanyId = 1,
                        .isForce = true,
                        .proxyUserId = 2,
                        .calloutType = 65535,
                        .meetingId = 42,
                        .userId = 7,
                        .userName = "Zoë",
                        .terminal = "pc"};
    EXPECT_EQ(Json(event), Expected("invited",
                                    R"("user":7,"invitation":3,"data":{"inviteCode":5,"roomCreateTime":6,)"
                                    R"("roomCompanyId":1,"isForce":true,"proxyUserId":2,"calloutType":65535,)"
                                    R"("meetingId":42,"userId":7,"userName":"Zoë","terminal":"pc"},)",
                                    "is invited by user 7 (Zoë), invitation 3, meeting 42"));
}

TEST(EventJson, IsOneLineOfUtf8WhateverTheTextsHold)
{
    Event event{.kind = EventKind::InviteIncome};
    event.invitation.userName = "a\nb\xFF\"\xE2\x82";
    const std::string json = Json(event);
    EXPECT_EQ(json.find('\n'), json.npos);
    rapidjson::Document document;
    ASSERT_FALSE(document.Parse<rapidjson::kParseValidateEncodingFlag>(json.c_str()).HasParseError()) << json;
    EXPECT_STREQ(document["data"]["userName"].GetString(), "a\nb\uFFFD\"\uFFFD\uFFFD");
}
