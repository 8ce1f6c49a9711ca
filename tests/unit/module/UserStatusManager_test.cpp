#include "onlinemanager/UserStatusManager.h"

#include "onlinemanager/JsonSerialization.h"

#include <gtest/gtest.h>

#include <functional>

using onlinemanager::JsonSerialization;
using onlinemanager::UserOnlineInfo;
using onlinemanager::UserStatusManager;
using onlinemanager::UserTerminalInfo;

namespace
{

class UserStatusManagerTest : public testing::Test
{
protected:
    static UserTerminalInfo Terminal(const std::string& name, uint32_t status, const std::string& custom = "")
    {
        UserTerminalInfo terminal;
        terminal.terminal = name;
        terminal.status = status;
        terminal.custom = custom;
        return terminal;
    }

    UserStatusManager m_manager{std::make_shared<JsonSerialization>()};
};

/// The digest of one terminal, step by step. The standard library's string hash is its byte hash with a fixed seed.
uint64_t DigestOf(const UserTerminalInfo& terminal)
{
    const uint64_t a = std::hash<std::string>()(terminal.terminal) + 0x9e3779b9;
    const uint64_t b = a ^ (uint64_t{terminal.status} + 0x9e3779b9 + (a << 6) + (a >> 2));
    const uint64_t c = b ^ (std::hash<std::string>()(terminal.custom) + 0x9e3779b9 + (b << 6) + (b >> 2));
    return c << 1;
}

} // namespace

TEST_F(UserStatusManagerTest, TheStatusIs1IfAnyTerminalIsOnlineElseTheLastOnes)
{
    const UserTerminalInfo online = Terminal("A", 1);
    EXPECT_EQ(0u, m_manager.ReportTerminalOnlineStatus({}));
    EXPECT_EQ(1u, m_manager.ReportTerminalOnlineStatus({online, Terminal("B", 0)}));
    EXPECT_EQ(1u, m_manager.ReportTerminalOnlineStatus({Terminal("B", 0), online}));
    EXPECT_EQ(2u, m_manager.ReportTerminalOnlineStatus({Terminal("A", 0), Terminal("B", 2)}));
    EXPECT_EQ(0u, m_manager.ReportTerminalOnlineStatus({Terminal("A", 2), Terminal("B", 0)}));
}

TEST_F(UserStatusManagerTest, TheDigestOfOneTerminalIsMadeOfNameStatusAndCustomText)
{
    const UserTerminalInfo terminal = Terminal("pc", 1, "busy");
    EXPECT_EQ(DigestOf(terminal), m_manager.CalcTerminalInfoHash({terminal}));
    UserTerminalInfo other = terminal;
    other.terminal_type = static_cast<quenda::TerminalType>(9);
    EXPECT_EQ(DigestOf(terminal), m_manager.CalcTerminalInfoHash({other}));
    for (const UserTerminalInfo& changed : {Terminal("pad", 1, "busy"), Terminal("pc", 2, "busy"), Terminal("pc", 1)})
    {
        EXPECT_NE(DigestOf(terminal), m_manager.CalcTerminalInfoHash({changed}));
    }
}

TEST_F(UserStatusManagerTest, TheDigestsAreTheOnesThatHostsKnow)
{
    // A separate program computed these values from the definition.
    EXPECT_EQ(0xcbfb430d23042e6au, m_manager.CalcTerminalInfoHash({Terminal("", 0)}));
    EXPECT_EQ(0x2f047da25587d1f0u, m_manager.CalcTerminalInfoHash({Terminal("pc", 1)}));
    EXPECT_EQ(0xd2ae4c4939541782u, m_manager.CalcTerminalInfoHash({Terminal("pc", 1, "busy")}));
    EXPECT_EQ(0x656f7d783b1f38bcu, m_manager.CalcTerminalInfoHash({Terminal("pc", 4294967295, "x")}));
}

TEST_F(UserStatusManagerTest, AnEmptyListHasTheDigest0)
{
    EXPECT_EQ(0u, m_manager.CalcTerminalInfoHash({}));
}

TEST_F(UserStatusManagerTest, TheDigestDoesNotDependOnTheOrder)
{
    const UserTerminalInfo first = Terminal("pc", 1, "busy");
    const UserTerminalInfo second = Terminal("pad", 0, "away");
    const uint64_t digest = m_manager.CalcTerminalInfoHash({first, second});
    EXPECT_EQ(digest, m_manager.CalcTerminalInfoHash({second, first}));
    EXPECT_EQ(DigestOf(first) ^ DigestOf(second), digest);
}

TEST_F(UserStatusManagerTest, TwoEqualTerminalsHaveTheDigestOfNoTerminals)
{
    const UserTerminalInfo terminal = Terminal("pc", 1, "busy");
    EXPECT_EQ(0u, m_manager.CalcTerminalInfoHash({terminal, terminal}));
}
