#include "platform/Platform.h"
#include "platform/base/EventLoop.h"
#include "platform/session/CompanyDirectory.h"
#include "platform/session/Invitations.h"
#include "platform/simulation/ServiceClient.h"
#include "platform/wire/Records.h"
#include "platform/wire/Topics.h"

#include <future>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace platform;

namespace
{

std::string EveryByte()
{
    std::string text;
    for (int byte = 1; byte < 256; ++byte)
    {
        text += static_cast<char>(byte);
    }
    return text;
}

TEST(TopicsTest, AnIdBecomesOneLevelOfPlainCharactersAndBackAgain)
{
    EXPECT_EQ(topics::Escape("52011"), "52011");
    EXPECT_EQ(topics::Escape(""), "%");
    EXPECT_EQ(topics::Escape("a/b+c#d%"), "a%2Fb%2Bc%23d%25");
    EXPECT_EQ(topics::Escape("\xC3\xA4"), "%C3%A4");
    for (const std::string& text : {std::string(), std::string("%"), std::string("%41"), EveryByte()})
    {
        const std::string level = topics::Escape(text);
        EXPECT_EQ(level.find_first_of("/+#"), std::string::npos);
        EXPECT_EQ(topics::Unescape(level), text);
    }
    EXPECT_EQ(topics::Unescape("%4"), "%4") << "not of our making";
    EXPECT_EQ(topics::Unescape("%zz"), "%zz");
}

TEST(TopicsTest, NoTwoIdsShareATopic)
{
    EXPECT_NE(CompanyTopics("a", "b/c").Presence("1", "d"), CompanyTopics("a/b", "c").Presence("1", "d"));
    EXPECT_NE(CompanyTopics("", "a").User("1"), CompanyTopics("a", "").User("1"));
    EXPECT_NE(GroupTopics("").Messages(), GroupTopics("%").Messages());
}

TEST(TopicsTest, ATopicIsTakenApartOnlyByItsOwnCompany)
{
    const CompanyTopics company("app", "7");
    EXPECT_EQ(company.Inside(company.Presence("1", "pc")), "p/1/pc");
    EXPECT_EQ(company.Inside(CompanyTopics("app", "77").Presence("1", "pc")), "");
    EXPECT_EQ(topics::Split("p/1/pc"), (std::vector<std::string_view>{"p", "1", "pc"}));
    EXPECT_EQ(topics::Split(""), (std::vector<std::string_view>{""}));
}

TEST(RecordsTest, EveryRecordIsReadAsItWasWritten)
{
    PresenceRecord presence;
    presence.online = true;
    presence.force = true;
    presence.epoch = 1'700'000'000'000'000;
    presence.sessionId = "s";
    presence.mutex = EveryByte();
    presence.custom = "\"quoted\"\n";
    presence.ext = R"({"tt":1})";
    const auto presenceAgain = PresenceRecord::Decode(presence.Encode());
    ASSERT_TRUE(presenceAgain);
    EXPECT_TRUE(presenceAgain->online);
    EXPECT_TRUE(presenceAgain->force);
    EXPECT_EQ(presenceAgain->epoch, presence.epoch);
    EXPECT_EQ(presenceAgain->sessionId, presence.sessionId);
    EXPECT_EQ(presenceAgain->mutex, presence.mutex);
    EXPECT_EQ(presenceAgain->custom, presence.custom);
    EXPECT_EQ(presenceAgain->ext, presence.ext);

    const auto member = MemberRecord::Decode(MemberRecord{true, 5, "zol/p"}.Encode());
    ASSERT_TRUE(member);
    EXPECT_TRUE(member->present);
    EXPECT_EQ(member->epoch, 5U);
    EXPECT_EQ(member->presenceTopic, "zol/p");

    using Kind = PostRecord::Kind;
    for (const Kind kind : {Kind::Invite, Kind::Cancel, Kind::Accept, Kind::Decline, Kind::Answered, Kind::Message,
                            Kind::Command, Kind::Report})
    {
        PostRecord post;
        post.kind = kind;
        post.serial = "1";
        post.from = "2";
        post.fromSession = "3";
        post.replyTopic = "4";
        post.id = 0xFFFFFFFF;
        post.code = "5";
        post.text = EveryByte();
        const auto postAgain = PostRecord::Decode(post.Encode());
        ASSERT_TRUE(postAgain);
        EXPECT_EQ(postAgain->kind, kind);
        EXPECT_EQ(postAgain->serial, "1");
        EXPECT_EQ(postAgain->from, "2");
        EXPECT_EQ(postAgain->fromSession, "3");
        EXPECT_EQ(postAgain->replyTopic, "4");
        EXPECT_EQ(postAgain->id, 0xFFFFFFFF);
        EXPECT_EQ(postAgain->code, "5");
        EXPECT_EQ(postAgain->text, post.text);
    }
}

TEST(RecordsTest, AMalformedRecordIsRefused)
{
    const std::string deep(100'000, '[');
    for (const std::string& payload :
         {std::string(), std::string("{"), std::string("[]"), std::string("7"), std::string("{}"), std::string("\xFF"),
          std::string(R"({"epoch":-1,"id":-1,"kind":"invite"})"), std::string(R"({"epoch":"1","id":"1","kind":7})"),
          std::string(R"({"epoch":18446744073709551615,"id":4294967296,"kind":"invite"})"),
          std::string(R"({"id":1,"kind":"other"})"), deep, "{\"epoch\":" + deep})
    {
        EXPECT_FALSE(PresenceRecord::Decode(payload)) << payload.substr(0, 80);
        EXPECT_FALSE(MemberRecord::Decode(payload)) << payload.substr(0, 80);
        EXPECT_FALSE(PostRecord::Decode(payload)) << payload.substr(0, 80);
    }
}

TEST(EventLoopTest, TasksRunOneAfterTheOtherInOrder)
{
    EventLoop loop;
    std::vector<int> order;
    const auto now = EventLoop::Clock::now();
    loop.PostAt(now + std::chrono::milliseconds(300), EventLoop::Kind::Work, [&order] { order.push_back(3); });
    loop.PostAt(now + std::chrono::milliseconds(300), EventLoop::Kind::Work, [&order] { order.push_back(4); });
    loop.PostAt(now + std::chrono::milliseconds(200), EventLoop::Kind::Work, [&order] { order.push_back(2); });
    loop.Post([&order] { order.push_back(1); });
    loop.WaitIdle();
    EXPECT_EQ(order, (std::vector{1, 2, 3, 4}));
}

TEST(EventLoopTest, WaitingForIdleDoesNotWaitForTimers)
{
    EventLoop loop;
    loop.PostAt(EventLoop::Clock::now() + std::chrono::hours(1), EventLoop::Kind::Timer, [] {});
    loop.WaitIdle();
    EXPECT_FALSE(loop.IsCurrent());
    bool inside = false;
    loop.Post([&] { inside = loop.IsCurrent(); });
    loop.WaitIdle();
    EXPECT_TRUE(inside);
}

TEST(EventLoopTest, WaitingForIdleEndsAtItsLimit)
{
    EventLoop loop;
    std::promise<void> released;
    loop.Post([&] { released.get_future().wait(); });
    EXPECT_FALSE(loop.WaitIdleFor(std::chrono::milliseconds(10)));
    released.set_value();
    EXPECT_TRUE(loop.WaitIdleFor(std::chrono::hours(1)));
}

TEST(EventLoopTest, AStoppedLoopDropsTasksAndTakesNone)
{
    EventLoop loop;
    const auto held = std::make_shared<int>(0);
    loop.PostAt(EventLoop::Clock::now() + std::chrono::hours(1), EventLoop::Kind::Work, [held] {});
    EXPECT_EQ(held.use_count(), 2);
    loop.Stop();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(loop.Post([] {}));
    EXPECT_FALSE(loop.PostAt(EventLoop::Clock::now(), EventLoop::Kind::Work, [] {}));
    loop.WaitIdle();
    loop.Stop();
}

TEST(SerialFilterTest, RecognisesTheLatestSerials)
{
    SerialFilter filter;
    EXPECT_TRUE(filter.IsNew("a"));
    EXPECT_FALSE(filter.IsNew("a"));
    EXPECT_TRUE(filter.IsNew(""));
    EXPECT_TRUE(filter.IsNew(""));
    for (int i = 0; i < 5000; ++i)
    {
        EXPECT_TRUE(filter.IsNew(std::to_string(i)));
        EXPECT_FALSE(filter.IsNew(std::to_string(i)));
    }
    EXPECT_FALSE(filter.IsNew("4000"));
}

TEST(CompanyDirectoryTest, AnOlderEpochChangesNothing)
{
    CompanyDirectory directory;
    PresenceRecord record;
    record.online = true;
    record.epoch = 5;
    directory.BeginSnapshot();
    EXPECT_EQ(directory.Apply("1", "pc", record, true), nullptr) << "part of the first snapshot";
    EXPECT_TRUE(directory.EndSnapshot().empty());
    record.online = false;
    record.epoch = 4;
    EXPECT_EQ(directory.Apply("1", "pc", record, false), nullptr);
    EXPECT_FALSE(directory.IsKnownOffline("1"));
    record.epoch = 5;
    ASSERT_NE(directory.Apply("1", "pc", record, false), nullptr);
    EXPECT_TRUE(directory.IsKnownOffline("1"));
    record.online = true;
    record.epoch = 3;
    EXPECT_EQ(directory.Apply("1", "pc", record, false), nullptr) << "the epoch of one who has gone is remembered";
    EXPECT_TRUE(directory.IsKnownOffline("1"));
}

TEST(InvitationsTest, TheFirstTerminalThatAnswersIsTheOneThatMayChangeItsMind)
{
    Invitations invitations;
    invitations.BeginLogin("9");
    invitations.AddSent(1, {"2"});
    EXPECT_FALSE(invitations.TakeAnswer(7, "2", "s", true)) << "never sent";
    EXPECT_FALSE(invitations.TakeAnswer(1, "3", "s", true)) << "not invited";
    EXPECT_TRUE(invitations.TakeAnswer(1, "2", "s", true));
    EXPECT_FALSE(invitations.TakeAnswer(1, "2", "s", true));
    EXPECT_FALSE(invitations.TakeAnswer(1, "2", "other", false));
    EXPECT_TRUE(invitations.TakeAnswer(1, "2", "s", false));
    EXPECT_FALSE(invitations.TakeAnswer(1, "2", "s", false));
    EXPECT_FALSE(invitations.TakeAnswer(1, "2", "s", true));
    invitations.EndLogin();
    invitations.BeginLogin("9");
    EXPECT_TRUE(invitations.IsInvited(1, "2")) << "answers may come late";
    invitations.BeginLogin("8");
    EXPECT_FALSE(invitations.IsInvited(1, "2"));
}

TEST(PlatformTest, AMeetingsGroupIsItsIdInLowerCaseWithoutBraces)
{
    const GUID meeting{0x12345678, 0x9ABC, 0xDEF0, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}};
    EXPECT_EQ(Platform::MeetingGroupId(meeting), "12345678-9abc-def0-1234-56789abcdef0");
}

} // namespace
