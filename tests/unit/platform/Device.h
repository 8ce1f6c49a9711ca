#pragma once

#include "avcore/IZolMdsClient.h"
#include "avcore/IZolOnline.h"
#include "avcore/IZolTMsg.h"
#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A terminal for tests: a connection, and one object that listens to all of it and writes every event into a journal.

using Lines = std::vector<std::string>;

/// Lines in the order in which they were written, by any thread.
class EventLines
{
public:
    void Write(const std::string& line)
    {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back(line);
        m_changed.notify_all();
    }

    Lines Take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_lines, {});
    }

    /// Whether the journal has a line, or gets it within a time that only a hang exceeds.
    bool WaitFor(std::string_view line)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(60),
                                  [this, line]
                                  { return std::find(m_lines.begin(), m_lines.end(), line) != m_lines.end(); });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Lines m_lines;
};

inline avcore::ZolTextList MakeList(const Lines& texts)
{
    avcore::ZolTextList list;
    for (const std::string& text : texts)
    {
        list.emplace_back(text.c_str());
    }
    return list;
}

class Device : public avcore::IZolConnectionListener,
               public avcore::IZolOnlineListener,
               public avcore::IZolTMsgListener,
               public avcore::IZolMdsClientListener
{
public:
    /// `name` begins each line. A device that does not follow the company registers no presence listener.
    Device(platform::Platform& platform, EventLines& journal, std::string name, bool followsCompany = false)
        : m_journal(journal),
          m_name(std::move(name))
    {
        void* out = nullptr;
        EXPECT_EQ(platform.CreateComponent(avcore::CLSID_ZolConnection, avcore::IID_IZolConnection, nullptr, &out),
                  S_OK);
        connection = static_cast<avcore::IZolConnection*>(out);
        EXPECT_EQ(connection->AddListener(this), S_OK);
        EXPECT_EQ(connection->GetComponent(avcore::IID_IZolOnline, &out), S_OK);
        online = static_cast<avcore::IZolOnline*>(out);
        if (followsCompany)
        {
            EXPECT_EQ(online->AddListener(this), S_OK);
        }
        EXPECT_EQ(connection->GetComponent(avcore::IID_IZolTMsg, &out), S_OK);
        tMsg = static_cast<avcore::IZolTMsg*>(out);
        EXPECT_EQ(tMsg->AddListener(this), S_OK);
        EXPECT_EQ(connection->GetComponent(avcore::IID_IZolMdsClient, &out), S_OK);
        mds = static_cast<avcore::IZolMdsClient*>(out);
        EXPECT_EQ(mds->AddListener(this), S_OK);
    }
    virtual ~Device()
    {
        Release();
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    void Release()
    {
        if (connection != nullptr)
        {
            std::exchange(connection, nullptr)->Release();
        }
    }

    struct LoginArguments
    {
        std::string server = "cp.example";
        std::string appId = "app";
        std::string token = "token";
        std::string deviceId = "pc";
        std::string companyId = "7";
        std::string userId = "1";
        std::string mutex;
        std::string ext = R"({"tt":1})";
        bool force = false;
        bool registerUser = false;
        avcore::IZolHttp* http = nullptr;
    };

    HRESULT Login(const LoginArguments& arguments)
    {
        return connection->Login(arguments.server.c_str(), arguments.http, arguments.appId.c_str(),
                                 arguments.token.c_str(), arguments.deviceId.c_str(), arguments.companyId.c_str(),
                                 arguments.userId.c_str(), arguments.mutex.c_str(), arguments.ext.c_str(),
                                 arguments.force, arguments.registerUser);
    }

    HRESULT Login(const std::string& userId, const std::string& deviceId = "pc", const std::string& mutex = {},
                  bool force = false)
    {
        LoginArguments arguments;
        arguments.userId = userId;
        arguments.deviceId = deviceId;
        arguments.mutex = mutex;
        arguments.ext = "ext of " + deviceId;
        arguments.force = force;
        return Login(arguments);
    }

    avcore::IZolConnection* connection = nullptr;
    avcore::IZolOnline* online = nullptr;
    avcore::IZolTMsg* tMsg = nullptr;
    avcore::IZolMdsClient* mds = nullptr;

    /// The answer of `OnReconnectStart`.
    std::atomic<int32_t> reconnectAnswer{avcore::ZOL_RECONNECT_GO_ON};

    /// Runs inside every event with that name.
    std::map<std::string, std::function<void()>> inside;

    // IZolConnectionListener
    void OnLoginResult(avcore::ZolPortErrCode code, const char* device, const char* custom, const char* ext) override
    {
        Write("LoginResult", std::to_string(code) + (code == 36 ? Join({device, custom, ext}) : std::string()));
    }
    void OnJoinGroupResult(avcore::ZolPortErrCode code) override
    {
        Write("JoinGroupResult", std::to_string(code));
    }
    void OnLeaveGroupResult(avcore::ZolPortErrCode code) override
    {
        Write("LeaveGroupResult", std::to_string(code));
    }
    void OnLogouted(avcore::ZolPortErrCode code) override
    {
        Write("Logouted", std::to_string(code));
    }
    int32_t OnReconnectStart() override
    {
        Write("ReconnectStart");
        return reconnectAnswer;
    }
    void OnReconnectSucess() override
    {
        Write("ReconnectSucess");
    }
    void OnReconnectFail(avcore::ZolPortErrCode code, const char* text) override
    {
        Write("ReconnectFail", std::to_string(code) + (text != nullptr ? std::string(" ") + text : std::string()));
    }
    void OnGroupUserJoined(const char* userId) override
    {
        Write("GroupUserJoined", userId);
    }
    void OnGroupUserLeaved(const char* userId) override
    {
        Write("GroupUserLeaved", userId);
    }
    void OnGroupUserSync(const avcore::ZolTextList& users, const WBASELIB::Vector<avcore::ZolMediaInfo>&,
                         bool complete) override
    {
        std::string text = complete ? "complete" : "partial";
        for (const auto& user : users)
        {
            text += std::string(" ") + user.c_str();
        }
        Write("GroupUserSync", text);
    }

    // IZolOnlineListener
    void OnRefreshUserStatusFinished(avcore::ZolPortErrCode code, unsigned requestId,
                                     const WBASELIB::Vector<avcore::ZolUserInfo>& users, int pageCount,
                                     int pageIndex) override
    {
        std::string text = std::to_string(code) + " #" + std::to_string(requestId) + " page " +
                           std::to_string(pageIndex) + "/" + std::to_string(pageCount);
        for (const avcore::ZolUserInfo& user : users)
        {
            text += std::string(" ") + user.user_id + ":";
            for (int32_t i = 0; i < user.terminal_count; ++i)
            {
                const avcore::ZolUserTerminalInfo& terminal = user.terminals[i];
                text += "[" + std::string(terminal.terminal) + " " + std::to_string(terminal.status) + " " +
                        terminal.custom + " " + terminal.ext_info + "]";
            }
        }
        refreshedUsers += users.size();
        Write("Refresh", text);
    }
    void OnInviteIncome(const char* userId, unsigned inviteId, const char* code, const char* msg) override
    {
        Write("InviteIncome", userId + Join({"#", code, msg}, inviteId));
    }
    void OnInviteAccepted(const char* userId, unsigned inviteId, const char* msg) override
    {
        Write("InviteAccepted", userId + Join({"#", msg}, inviteId));
    }
    void OnInviteRejected(const char* userId, unsigned inviteId, avcore::ZolInviteRejectReason reason,
                          const char* msg) override
    {
        Write("InviteRejected", userId + Join({"#", std::to_string(reason), msg}, inviteId));
    }
    void OnInviteCanceled(const char* userId, unsigned inviteId, avcore::ZolInviteCancelReason reason) override
    {
        Write("InviteCanceled", userId + Join({"#", std::to_string(reason)}, inviteId));
    }
    void OnUserTerminalStateChanged(const char* userId, const avcore::ZolUserTerminalInfo& info) override
    {
        Write("Terminal", userId + Join({info.terminal, std::to_string(info.status), info.custom, info.ext_info}));
    }

    // IZolTMsgListener
    void OnUserMsgIncome(const char* from, unsigned int msgId, const char* msg) override
    {
        Write("UserMsg", from + Join({"#", msg}, msgId));
    }
    void OnGroupMsgIncome(const char* from, unsigned int msgId, const char* msg) override
    {
        Write("GroupMsg", from + Join({"#", msg}, msgId));
    }

    // IZolMdsClientListener
    void OnMdsMsgData(const char* msg) override
    {
        Write("Mds", msg);
    }

    std::atomic<size_t> refreshedUsers{0};

private:
    /// The texts, each after a blank; "#" gets the number.
    static std::string Join(const Lines& texts, unsigned number = 0)
    {
        std::string joined;
        for (const std::string& text : texts)
        {
            joined += ' ' + text + (text == "#" ? std::to_string(number) : std::string());
        }
        return joined;
    }

    void Write(const std::string& event, const std::string& text = {})
    {
        m_journal.Write(m_name + ' ' + event + (text.empty() ? "" : " " + text));
        if (const auto found = inside.find(event); found != inside.end())
        {
            found->second();
        }
    }

    EventLines& m_journal;
    std::string m_name;
};

/// A platform that answers at once, and a journal.
class PlatformTest : public testing::Test
{
protected:
    static platform::PlatformOptions QuickOptions()
    {
        platform::PlatformOptions options;
        options.answerDelay = std::chrono::milliseconds(0);
        options.reconnectFirstDelay = std::chrono::milliseconds(5);
        options.reconnectLongestDelay = std::chrono::milliseconds(20);
        return options;
    }

    /// The lines of the journal, after the platform has completed everything.
    Lines Settled()
    {
        platform.Settle();
        return journal.Take();
    }

    platform::Platform platform{QuickOptions()};
    EventLines journal;
};
