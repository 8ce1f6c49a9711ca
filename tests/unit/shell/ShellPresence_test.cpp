#include "host/shell/ShellPresence.h"

#include <gtest/gtest.h>

using host::DescribeChanges;
using host::ShellPresence;
using onlinemanager::UserOnlineInfo;
using onlinemanager::UserTerminalInfo;

namespace
{

using Sentences = std::vector<std::string>;

UserTerminalInfo Terminal(const std::string& name, uint32_t status = 1, const std::string& custom = {})
{
    UserTerminalInfo terminal;
    terminal.terminal = name;
    terminal.status = status;
    terminal.custom = custom;
    return terminal;
}

UserOnlineInfo User(uint32_t id, std::vector<UserTerminalInfo> terminals)
{
    UserOnlineInfo user;
    user.user_id = id;
    user.terminals = std::move(terminals);
    return user;
}

/// A terminal that is logged in and has learned of user 7 on its own terminal.
class ShellPresenceTest : public testing::Test
{
protected:
    ShellPresenceTest()
    {
        m_presence.Learn({User(7, {Terminal("pc")})});
    }

    Sentences Learn(const std::vector<UserOnlineInfo>& users)
    {
        return DescribeChanges(m_presence.Learn(users));
    }

    ShellPresence m_presence;
};

} // namespace

TEST_F(ShellPresenceTest, TheFirstUsersOfALoginDoNotComeOnline)
{
    m_presence.Forget();
    EXPECT_EQ(Learn({User(7, {Terminal("pc")})}), (Sentences{"sees user 7 online on pc"}));
    m_presence.Forget();
    EXPECT_EQ(Learn({User(7, {Terminal("pc")}), User(8, {Terminal("pc", 0)}), User(9, {Terminal("a"), Terminal("b")})}),
              (Sentences{"sees 2 users online: 7, 9"}));
}

TEST_F(ShellPresenceTest, AChangeTellsWhatChanged)
{
    EXPECT_EQ(Learn({User(8, {Terminal("pc")})}), (Sentences{"sees user 8 come online on pc"}));
    EXPECT_EQ(Learn({User(8, {Terminal("pc", 1, "in a\nmeeting")})}),
              (Sentences{"sees user 8 publish \"in a\\x0Ameeting\" on pc"}));
    EXPECT_EQ(Learn({User(8, {Terminal("pc")})}), (Sentences{"sees user 8 clear the custom text on pc"}));
    EXPECT_EQ(Learn({User(8, {Terminal("pc"), Terminal("phone", 1, "out")})}),
              (Sentences{"sees user 8 come online on phone too, \"out\""}));
    EXPECT_EQ(Learn({User(8, {Terminal("pc"), Terminal("phone", 0, "out")})}),
              (Sentences{"sees user 8 go offline on phone, still online elsewhere"}));
    EXPECT_EQ(Learn({User(8, {Terminal("pc", 0), Terminal("phone", 0, "out")})}),
              (Sentences{"sees user 8 go offline"}));
    EXPECT_EQ(Learn({User(8, {Terminal("pc", 1, "back"), Terminal("phone", 0)})}),
              (Sentences{"sees user 8 come online on pc, \"back\""}));
    EXPECT_EQ(Learn({User(9, {Terminal("pc", 1, "a"), Terminal("phone", 1, "b")})}),
              (Sentences{"sees user 9 come online on pc and phone"}));
    EXPECT_EQ(Learn({User(9, {})}), (Sentences{"does not know 1 user any more: 9"}));
}

TEST_F(ShellPresenceTest, AnUnchangedTerminalIsNotReported)
{
    EXPECT_EQ(Learn({}), Sentences());
    EXPECT_EQ(Learn({User(7, {Terminal("pc")})}), Sentences());
    EXPECT_EQ(Learn({User(8, {Terminal("pc", 0)})}), Sentences()) << "was not known, and is offline";
    EXPECT_EQ(Learn({User(9, {})}), Sentences()) << "was not known, and is not";
    EXPECT_EQ(Learn({User(7, {Terminal("pc"), Terminal("phone", 0)})}), Sentences());
}

TEST_F(ShellPresenceTest, ThousandsOfChangesAreOneSentence)
{
    std::vector<UserOnlineInfo> company;
    for (uint32_t id = 1001; id <= 5000; ++id)
    {
        company.push_back(User(id, {Terminal("pc")}));
    }
    EXPECT_EQ(Learn(company),
              (Sentences{"sees 4000 users come online: 1001, 1002, 1003, 1004, 1005, 1006 and 3994 more"}));
}

TEST_F(ShellPresenceTest, ChangesOfOneKindAreGatheredAndThoseOfOneUserKeepTheirOrder)
{
    std::vector<host::UserChange> changes;
    const auto learn = [&](const UserOnlineInfo& user)
    {
        for (host::UserChange& change : m_presence.Learn({user}))
        {
            changes.push_back(std::move(change));
        }
    };
    learn(User(8, {Terminal("pc")}));
    learn(User(7, {Terminal("pc", 1, "hello")}));
    learn(User(9, {Terminal("pc")}));
    learn(User(8, {Terminal("pc", 0)}));
    learn(User(9, {Terminal("pc", 0)}));
    learn(User(8, {Terminal("pc", 1)}));
    EXPECT_EQ(DescribeChanges(changes),
              (Sentences{"sees 2 users come online: 8, 9", "sees user 7 publish \"hello\" on pc",
                         "sees 2 users go offline: 8, 9", "sees user 8 come online on pc"}));
}
