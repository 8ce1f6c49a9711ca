#include "platform/backplane/InProcessBackplane.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using platform::Backplane;
using platform::BackplaneClient;
using platform::BackplaneConnect;
using platform::BackplaneMessage;
using platform::Delivery;
using platform::InProcessBackplane;
using platform::Refusal;

namespace
{

using Lines = std::vector<std::string>;

BackplaneMessage Message(const std::string& topic, const std::string& payload, bool retained = false,
                         std::chrono::seconds expiry = std::chrono::seconds(0))
{
    return BackplaneMessage{topic, payload, retained, expiry};
}

/// Records events from any thread.
class Recorder : public platform::BackplaneListener
{
public:
    void OnOpened() override
    {
        Write("opened");
    }
    void OnRefused(Refusal reason) override
    {
        Write("refused " + std::to_string(static_cast<int>(reason)));
    }
    void OnLost() override
    {
        Write("lost");
    }
    void OnSubscribed(const std::string& filter) override
    {
        Write("subscribed " + filter);
    }
    void OnMessage(std::shared_ptr<const BackplaneMessage> message) override
    {
        Write(message->topic + '=' + message->payload + (message->retained ? " kept" : ""));
    }

    bool WaitFor(const std::string& line)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(60),
                                  [this, &line]
                                  { return std::find(m_lines.begin(), m_lines.end(), line) != m_lines.end(); });
    }

    bool WaitForCount(size_t count)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(60), [this, count] { return m_lines.size() >= count; });
    }

    Lines Take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_lines, {});
    }

private:
    void Write(const std::string& line)
    {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back(line);
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Lines m_lines;
};

/// A client with its recorder.
struct Peer
{
    Peer(Backplane& backplane, const std::string& clientId, std::optional<BackplaneMessage> will = std::nullopt)
        : recorder(std::make_shared<Recorder>()),
          client(backplane.Open(BackplaneConnect{"", clientId, "", "", std::move(will)}, recorder))
    {
        EXPECT_TRUE(recorder->WaitFor("opened"));
        recorder->Take();
    }

    void Publish(const std::string& topic, const std::string& payload, bool retained = false,
                 std::chrono::seconds expiry = std::chrono::seconds(0))
    {
        client->Publish(Message(topic, payload, retained, expiry), Delivery::AtLeastOnce);
    }

    void Subscribe(const std::string& filter, Delivery delivery = Delivery::AtLeastOnce)
    {
        client->Subscribe(filter, delivery);
        EXPECT_TRUE(recorder->WaitFor("subscribed " + filter));
    }

    /// The events up to a message that is sent now.
    Lines Received()
    {
        Subscribe("fence/" + std::to_string(++fences));
        Publish("fence/" + std::to_string(fences), "");
        EXPECT_TRUE(recorder->WaitFor("fence/" + std::to_string(fences) + '='));
        Lines lines = recorder->Take();
        std::erase_if(lines,
                      [](const auto& line) { return line.starts_with("fence/") || line.starts_with("subscribed "); });
        return lines;
    }

    std::shared_ptr<Recorder> recorder;
    std::unique_ptr<BackplaneClient> client;
    int fences = 0;
};

/// A kind of backplane. Its name is the end of the tests' names, which must be the same in every run.
struct Candidate
{
    const char* name;
    std::unique_ptr<Backplane> (*make)();
};

void PrintTo(const Candidate& candidate, std::ostream* out)
{
    *out << candidate.name;
}

/// The properties that the platform needs from every backplane.
class BackplaneConformance : public testing::TestWithParam<Candidate>
{
protected:
    std::unique_ptr<Backplane> backplane = GetParam().make();
};

TEST_P(BackplaneConformance, AMessageReachesAllSubscribersOfItsTopicAndTheSender)
{
    Peer sender(*backplane, "s");
    Peer receiver(*backplane, "r");
    Peer other(*backplane, "o");
    sender.Subscribe("a/b");
    receiver.Subscribe("a/b");
    other.Subscribe("a/c");
    sender.Publish("a/b", "1");
    EXPECT_EQ(sender.Received(), (Lines{"a/b=1"}));
    EXPECT_EQ(receiver.Received(), (Lines{"a/b=1"}));
    EXPECT_EQ(other.Received(), Lines());
}

TEST_P(BackplaneConformance, WildcardsStandForOneLevelAndForAllThatFollow)
{
    const std::vector<std::pair<std::string, Lines>> filters = {
        {"a/+", {"a/b=", "a/="}},
        {"+/b", {"a/b=", "/b="}},
        {"+/+/c", {"a/b/c="}},
        {"a/#", {"a=", "a/b=", "a/=", "a/b/c="}},
        {"a/b/#", {"a/b=", "a/b/c="}},
        {"+", {"a=", "ab="}},
        {"a/b", {"a/b="}},
    };
    std::vector<std::unique_ptr<Peer>> peers;
    for (const auto& [filter, expected] : filters)
    {
        peers.push_back(std::make_unique<Peer>(*backplane, "client of " + filter));
        peers.back()->Subscribe(filter);
    }
    Peer sender(*backplane, "s");
    for (const char* topic : {"a", "ab", "a/b", "a/", "/b", "a/b/c"})
    {
        sender.Publish(topic, "");
    }
    for (size_t i = 0; i < filters.size(); ++i)
    {
        EXPECT_EQ(peers[i]->Received(), filters[i].second) << filters[i].first;
    }
}

TEST_P(BackplaneConformance, OneTopicIsDeliveredInOrder)
{
    Peer sender(*backplane, "s");
    Peer receiver(*backplane, "r");
    receiver.Subscribe("a/#");
    Lines expected;
    for (int i = 0; i < 500; ++i)
    {
        sender.Publish("a/b", std::to_string(i));
        expected.push_back("a/b=" + std::to_string(i));
    }
    EXPECT_TRUE(receiver.recorder->WaitFor(expected.back()));
    EXPECT_EQ(receiver.Received(), expected);
}

TEST_P(BackplaneConformance, OverlappingSubscriptionsBringAMessageAtLeastOnce)
{
    Peer peer(*backplane, "p");
    peer.Subscribe("a/b");
    peer.Subscribe("a/+");
    peer.Publish("a/b", "1");
    const Lines lines = peer.Received();
    EXPECT_GE(lines.size(), 1U);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "a/b=1"), static_cast<std::ptrdiff_t>(lines.size()));
}

TEST_P(BackplaneConformance, WhatIsUnsubscribedComesNoMore)
{
    Peer peer(*backplane, "p");
    peer.Subscribe("a/b");
    peer.Subscribe("a/+");
    peer.client->Unsubscribe("a/+");
    peer.Publish("a/b", "1");
    EXPECT_EQ(peer.Received(), (Lines{"a/b=1"}));
    peer.client->Unsubscribe("a/b");
    peer.client->Unsubscribe("never");
    peer.Publish("a/b", "2");
    EXPECT_EQ(peer.Received(), Lines());
}

TEST_P(BackplaneConformance, TheLatestRetainedMessageOfATopicReachesLaterSubscribersEachTime)
{
    Peer sender(*backplane, "s");
    sender.Subscribe("a/+");
    sender.Publish("a/1", "old", true);
    sender.Publish("a/1", "new", true);
    sender.Publish("a/2", "passing");
    sender.Publish("a/3", "gone", true);
    sender.Publish("a/3", "", true);
    EXPECT_EQ(sender.Received(), (Lines{"a/1=old", "a/1=new", "a/2=passing", "a/3=gone", "a/3="})) << "live, not kept";
    Peer late(*backplane, "l");
    late.Subscribe("a/#");
    EXPECT_EQ(late.Received(), (Lines{"a/1=new kept"}));
    late.Subscribe("a/#");
    EXPECT_EQ(late.Received(), (Lines{"a/1=new kept"})) << "each subscription brings it again";
}

TEST_P(BackplaneConformance, AnUnacknowledgedSubscriptionBringsAnyNumberOfRetainedMessages)
{
    constexpr size_t kCount = 3000;
    Peer sender(*backplane, "s");
    for (size_t i = 0; i < kCount; ++i)
    {
        sender.Publish("a/" + std::to_string(i), "x", true);
    }
    Peer late(*backplane, "l");
    late.Subscribe("a/+", Delivery::AtMostOnce);
    EXPECT_TRUE(late.recorder->WaitForCount(kCount + 1));
    EXPECT_EQ(late.Received().size(), kCount);
}

TEST_P(BackplaneConformance, ARetainedMessageEndsWithItsExpiry)
{
    Peer sender(*backplane, "s");
    sender.Publish("a/1", "short", true, std::chrono::seconds(1));
    sender.Publish("a/2", "long", true, std::chrono::seconds(1000));
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    Peer late(*backplane, "l");
    late.Subscribe("a/+");
    EXPECT_EQ(late.Received(), (Lines{"a/2=long kept"}));
}

TEST_P(BackplaneConformance, AWillIsSentWhenAClientGoesWithoutAWord)
{
    Peer watcher(*backplane, "w");
    watcher.Subscribe("will/#");
    {
        const Peer lost(*backplane, "l", Message("will/1", "gone", true));
    }
    EXPECT_TRUE(watcher.recorder->WaitFor("will/1=gone"));
    Peer late(*backplane, "late");
    late.Subscribe("will/#");
    EXPECT_EQ(late.Received(), (Lines{"will/1=gone kept"}));
}

TEST_P(BackplaneConformance, AnOrderlyEndSendsWhatWasPublishedAndNoWill)
{
    Peer watcher(*backplane, "w");
    watcher.Subscribe("will/#");
    {
        Peer leaving(*backplane, "l", Message("will/1", "gone"));
        leaving.Publish("will/1", "bye");
        leaving.client->Close();
        leaving.Publish("will/1", "too late");
    }
    EXPECT_TRUE(watcher.recorder->WaitFor("will/1=bye"));
    EXPECT_EQ(watcher.Received(), (Lines{"will/1=bye"}));
}

TEST_P(BackplaneConformance, ATakenOverSessionIsLostAndItsWillSent)
{
    Peer watcher(*backplane, "w");
    watcher.Subscribe("#");
    Peer first(*backplane, "same", Message("will", "of the first"));
    first.Subscribe("a");
    Peer second(*backplane, "same", Message("will", "of the second"));
    EXPECT_TRUE(first.recorder->WaitFor("lost"));
    EXPECT_TRUE(watcher.recorder->WaitFor("will=of the first"));
    first.recorder->Take();
    first.Publish("b", "from the dead");
    second.Publish("a", "1");
    EXPECT_TRUE(watcher.recorder->WaitFor("a=1"));
    EXPECT_EQ(first.recorder->Take(), Lines()) << "nothing comes to it any more";
    EXPECT_EQ(second.recorder->Take(), Lines()) << "and the new session has no subscriptions";
    const Lines seen = watcher.recorder->Take();
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "b=from the dead"), 0);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "will=of the second"), 0);
}

TEST_P(BackplaneConformance, NothingComesAfterAnOrderlyEndOrToAClientThatIsGone)
{
    Peer sender(*backplane, "s");
    Peer receiver(*backplane, "r");
    receiver.Subscribe("a");
    receiver.client->Close();
    sender.Publish("a", "1");
    sender.Received();
    Lines lines = receiver.recorder->Take();
    std::erase(lines, "subscribed a");
    EXPECT_EQ(lines, Lines());
    receiver.client.reset();
    sender.Publish("a", "2");
    sender.Received();
    EXPECT_EQ(receiver.recorder->Take(), Lines());
}

TEST_P(BackplaneConformance, ManyThreadsMayUseIt)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    Peer watcher(*backplane, "w");
    watcher.Subscribe("t/#", Delivery::AtMostOnce);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back(
            [this, thread]
            {
                for (int round = 0; round < kRounds; ++round)
                {
                    Peer peer(*backplane, std::to_string(thread % 2), Message("will", ""));
                    peer.client->Subscribe("t/+", Delivery::AtMostOnce);
                    peer.Publish("t/" + std::to_string(thread), std::to_string(round), true);
                    peer.client->Unsubscribe("t/+");
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    // A session may have been taken over before it published; the last one of all was not.
    EXPECT_FALSE(watcher.Received().empty());
}

std::unique_ptr<Backplane> MakeInProcess()
{
    return std::make_unique<InProcessBackplane>();
}

INSTANTIATE_TEST_SUITE_P(Candidates, BackplaneConformance, testing::Values(Candidate{"InProcess", &MakeInProcess}));

TEST(InProcessBackplaneTest, RefusesWhomTheAdmissionRefuses)
{
    InProcessBackplane backplane;
    backplane.SetAdmission(
        [](const BackplaneConnect& connect)
        { return connect.password == "bad" ? std::optional(Refusal::BadCredentials) : std::nullopt; });
    const Peer good(backplane, "c");
    const auto recorder = std::make_shared<Recorder>();
    const auto client = backplane.Open(BackplaneConnect{"", "c", "", "bad", std::nullopt}, recorder);
    EXPECT_EQ(recorder->Take(), (Lines{"refused 0"}));
    client->Publish(Message("a", "1"), Delivery::AtLeastOnce);
    EXPECT_EQ(good.recorder->Take(), Lines()) << "a refused session takes no other session over";
}

TEST(InProcessBackplaneTest, DropsAClientAndKeepsItAwayForTheOutage)
{
    InProcessBackplane backplane;
    Peer watcher(backplane, "w");
    watcher.Subscribe("will");
    EXPECT_FALSE(backplane.Drop("c", std::nullopt));
    const Peer first(backplane, "c", Message("will", "gone"));
    EXPECT_TRUE(backplane.Drop("c", std::nullopt));
    EXPECT_EQ(first.recorder->Take(), (Lines{"lost"}));
    EXPECT_EQ(watcher.Received(), (Lines{"will=gone"}));
    const auto recorder = std::make_shared<Recorder>();
    auto client = backplane.Open(BackplaneConnect{"", "c", "", "", std::nullopt}, recorder);
    EXPECT_EQ(recorder->Take(), (Lines{"refused 1"}));
    backplane.EndOutages();
    const Peer second(backplane, "c");
    EXPECT_TRUE(backplane.Drop("c", std::chrono::milliseconds(0)));
    const Peer third(backplane, "c");
}

TEST(InProcessBackplaneTest, DelaysInOrder)
{
    InProcessBackplane backplane;
    Peer peer(backplane, "p");
    peer.Subscribe("a");
    peer.recorder->Take();
    backplane.SetDelay(std::chrono::milliseconds(300));
    peer.Publish("a", "1");
    peer.Publish("a", "2");
    backplane.SetDelay(std::chrono::milliseconds(0));
    peer.Publish("a", "3");
    EXPECT_EQ(peer.recorder->Take(), Lines());
    EXPECT_TRUE(peer.recorder->WaitFor("a=3"));
    EXPECT_EQ(peer.recorder->Take(), (Lines{"a=1", "a=2", "a=3"}));
    peer.Publish("a", "4");
    EXPECT_EQ(peer.recorder->Take(), (Lines{"a=4"})) << "at once again";
}

TEST(InProcessBackplaneTest, SendsADelayedWillAfterTheNextSession)
{
    InProcessBackplane backplane;
    Peer watcher(backplane, "w");
    watcher.Subscribe("will");
    backplane.SetWillDelay(std::chrono::milliseconds(300));
    const Peer first(backplane, "c", Message("will", "late"));
    backplane.Drop("c", std::chrono::milliseconds(0));
    Peer second(backplane, "c");
    second.Publish("will", "back");
    EXPECT_TRUE(watcher.recorder->WaitFor("will=late"));
    EXPECT_EQ(watcher.Received(), (Lines{"will=back", "will=late"}));
}

TEST(InProcessBackplaneTest, DuplicatesAcknowledgedDeliveriesOnly)
{
    InProcessBackplane backplane;
    Peer acknowledged(backplane, "a");
    Peer quick(backplane, "q");
    acknowledged.Subscribe("x", Delivery::AtLeastOnce);
    quick.Subscribe("x", Delivery::AtMostOnce);
    acknowledged.recorder->Take();
    quick.recorder->Take();
    backplane.SetDuplicate(true);
    quick.Publish("x", "1");
    EXPECT_EQ(acknowledged.recorder->Take(), (Lines{"x=1", "x=1"}));
    EXPECT_EQ(quick.recorder->Take(), (Lines{"x=1"}));
}

TEST(InProcessBackplaneTest, EndsTheRetainedMessagesOfAnAcknowledgedSubscriptionAsBrokersDo)
{
    InProcessBackplane backplane;
    Peer sender(backplane, "s");
    for (int i = 0; i < 1500; ++i)
    {
        sender.Publish("a/" + std::to_string(i), "x", true);
    }
    EXPECT_EQ(backplane.CountRetained(), 1500U);
    Peer late(backplane, "l");
    late.Subscribe("a/+", Delivery::AtLeastOnce);
    EXPECT_EQ(late.recorder->Take().size(), 1001U);
}

TEST(InProcessBackplaneTest, ForgetsExpiredMessages)
{
    InProcessBackplane backplane;
    Peer sender(backplane, "s");
    sender.Publish("a", "x", true, std::chrono::seconds(1));
    EXPECT_EQ(backplane.CountRetained(), 1U);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    EXPECT_EQ(backplane.CountRetained(), 0U);
}

TEST(InProcessBackplaneTest, IgnoresATopicThatIsNone)
{
    InProcessBackplane backplane;
    Peer peer(backplane, "p");
    peer.Subscribe("#");
    peer.recorder->Take();
    peer.Publish("", "1");
    peer.Publish("a/+", "2");
    peer.Publish("#", "3");
    EXPECT_EQ(peer.recorder->Take(), Lines());
}

TEST(InProcessBackplaneTest, MayGoBeforeItsClients)
{
    auto backplane = std::make_unique<InProcessBackplane>();
    Peer peer(*backplane, "p", Message("will", ""));
    peer.Subscribe("#");
    backplane->SetDelay(std::chrono::hours(1));
    peer.Publish("a", "1");
    backplane.reset();
    peer.recorder->Take();
    peer.Publish("a", "2");
    peer.client->Subscribe("b", Delivery::AtMostOnce);
    peer.client->Unsubscribe("#");
    peer.client->Close();
    EXPECT_EQ(peer.recorder->Take(), Lines());
}

} // namespace
