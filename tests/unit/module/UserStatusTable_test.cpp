#include "commonutil/StringUtil.h"
#include "onlinemanager/JsonSerialization.h"
#include "onlinemanager/UserStatusManager.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

using avcore::ZolUserInfo;
using avcore::ZolUserTerminalInfo;
using onlinemanager::JsonSerialization;
using onlinemanager::UserOnlineInfo;
using onlinemanager::UserStatusManager;
using onlinemanager::UserTerminalInfo;

namespace
{

using Ids = std::vector<unsigned>;

class UserStatusTableTest : public testing::Test
{
protected:
    /// Collects a page with one user.
    void CacheOne(const char* userId, const std::vector<ZolUserTerminalInfo>& terminals)
    {
        WBASELIB::Vector<ZolUserInfo> page;
        page.push_back({userId, static_cast<int32_t>(terminals.size()), terminals.data()});
        EXPECT_EQ(1, m_manager.Cache(page));
    }

    UserOnlineInfo Find(unsigned userId)
    {
        UserOnlineInfo found;
        EXPECT_TRUE(m_manager.Query({userId}, [&found](const UserOnlineInfo& user) { found = user; }));
        return found;
    }

    UserStatusManager m_manager{std::make_shared<JsonSerialization>()};
};

constexpr ZolUserTerminalInfo kOnline{"pc", 1, "", "{\"tt\":3}"};
constexpr ZolUserTerminalInfo kOffline{"pc", 0, "", "{\"tt\":3}"};

/// A plain model of the table: each step of the definition as it stands, without optimisation.
class PlainTable
{
public:
    std::vector<UserOnlineInfo> cache;

    Ids ResetByCache()
    {
        Ids changed;
        std::map<unsigned, UserOnlineInfo> table;
        for (const UserOnlineInfo& user : cache)
        {
            const auto found = m_users.find(user.user_id);
            if (found == m_users.end())
            {
                changed.push_back(user.user_id);
                table.insert({user.user_id, user});
            }
            else if (found->second.online_status != user.online_status)
            {
                changed.push_back(user.user_id);
                m_users.erase(found);
                table.insert({user.user_id, user});
            }
            else if (user.online_status == 1)
            {
                const UserOnlineInfo before = found->second;
                m_users.erase(found);
                if (before.terminal_hash == user.terminal_hash)
                {
                    table.insert({user.user_id, before});
                }
                else
                {
                    changed.push_back(user.user_id);
                    table.insert({user.user_id, user});
                }
            }
        }
        std::erase_if(m_users, [](const auto& entry) { return entry.second.online_status != 1; });
        for (const auto& entry : m_users)
        {
            changed.push_back(entry.first);
        }
        cache.clear();
        m_users = table;
        return changed;
    }

    UserOnlineInfo Find(unsigned userId) const
    {
        const auto found = m_users.find(userId);
        if (found != m_users.end())
        {
            return found->second;
        }
        UserOnlineInfo unknown;
        unknown.user_id = userId;
        return unknown;
    }

private:
    std::map<unsigned, UserOnlineInfo> m_users;
};

} // namespace

TEST_F(UserStatusTableTest, AddReturnsWhetherTheUserChanged)
{
    EXPECT_TRUE(m_manager.Add(7, kOnline));
    EXPECT_FALSE(m_manager.Add(7, kOnline));
    EXPECT_FALSE(m_manager.Add(7, {"pc", 1, "", "{\"tt\":4}"}));
    EXPECT_TRUE(m_manager.Add(7, {"pc", 1, "busy", "{\"tt\":4}"}));
    EXPECT_TRUE(m_manager.Add(7, {"phone", 1, "busy", "{}"}));
    EXPECT_TRUE(m_manager.Add(0, kOffline));
    EXPECT_EQ(2u, Find(7).terminals.size());
    EXPECT_EQ(4u, Find(7).terminals[0].terminal_type);
}

TEST_F(UserStatusTableTest, AnEmptyPageIsCollectedToo)
{
    EXPECT_EQ(1, m_manager.Cache({}));
    EXPECT_EQ(Ids(), m_manager.ResetByCache());
}

TEST_F(UserStatusTableTest, ResetByCacheDropsTheCollectedPages)
{
    CacheOne("7", {kOnline});
    EXPECT_EQ(Ids{7}, m_manager.ResetByCache());
    EXPECT_EQ(Ids{7}, m_manager.ResetByCache()) << "the user is missing from a refresh without pages";
    EXPECT_EQ(Ids(), m_manager.ResetByCache());
}

TEST_F(UserStatusTableTest, ClearEmptiesTheTableAndKeepsTheCollectedPages)
{
    m_manager.Add(7, kOnline);
    CacheOne("8", {kOnline});
    m_manager.Clear();
    EXPECT_EQ(0u, Find(7).online_status);
    EXPECT_EQ(Ids{8}, m_manager.ResetByCache());
}

TEST_F(UserStatusTableTest, AUserWithTerminalsOfEqualDigestIsTheSame)
{
    // Two equal terminals cancel each other out: the digest of this user is that of a user without terminals.
    CacheOne("7", {{"a", 1, "", "{}"}, {"a", 1, "", "{}"}});
    m_manager.ResetByCache();
    CacheOne("7", {{"b", 1, "", "{}"}, {"b", 1, "", "{}"}});
    EXPECT_EQ(Ids(), m_manager.ResetByCache());
    EXPECT_EQ("a", Find(7).terminals.at(0).terminal) << "the old record stays";
}

TEST_F(UserStatusTableTest, AnEventBetweenThePagesIsComparedAtTheEndOfTheRefresh)
{
    CacheOne("7", {kOnline});
    m_manager.ResetByCache();
    CacheOne("7", {kOnline});
    EXPECT_TRUE(m_manager.Add(7, kOffline));
    EXPECT_EQ(Ids{7}, m_manager.ResetByCache());
    EXPECT_EQ(1u, Find(7).online_status);
}

TEST_F(UserStatusTableTest, AQueryWithoutIdsIsTrueAndDoesNotCallBack)
{
    EXPECT_TRUE(m_manager.Query({}, [](const UserOnlineInfo&) { ADD_FAILURE() << "called"; }));
}

TEST_F(UserStatusTableTest, RandomRefreshesAgreeWithThePlainModel)
{
    PlainTable plain;
    std::mt19937 random(20231121);
    const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    const char* const customs[] = {"", "busy"};
    for (int refresh = 0; refresh < 500; ++refresh)
    {
        for (unsigned count = below(12); count > 0; --count)
        {
            const unsigned userId = below(8);
            std::vector<ZolUserTerminalInfo> terminals;
            std::vector<UserTerminalInfo> converted;
            for (unsigned index = below(3); index > 0; --index)
            {
                terminals.push_back({"t", static_cast<int32_t>(below(3)), customs[below(2)], "{}"});
                converted.push_back(m_manager.ConvertTerminalInfo(terminals.back()));
            }
            CacheOne(commonutil::ToAString(userId).c_str(), terminals);
            UserOnlineInfo user;
            user.user_id = userId;
            user.online_status = m_manager.ReportTerminalOnlineStatus(converted);
            user.terminal_hash = m_manager.CalcTerminalInfoHash(converted);
            plain.cache.push_back(user);
        }
        ASSERT_EQ(plain.ResetByCache(), m_manager.ResetByCache()) << "refresh " << refresh;
        for (unsigned userId = 0; userId < 8; ++userId)
        {
            const UserOnlineInfo expected = plain.Find(userId);
            const UserOnlineInfo seen = Find(userId);
            ASSERT_EQ(userId, seen.user_id) << "refresh " << refresh;
            ASSERT_EQ(expected.online_status, seen.online_status) << "refresh " << refresh << ", user " << userId;
            ASSERT_EQ(expected.terminal_hash, seen.terminal_hash) << "refresh " << refresh << ", user " << userId;
        }
    }
}
