#pragma once

#include "avcore/IZolConnection.h"
#include "avcore/IZolMdsClient.h"
#include "avcore/IZolOnline.h"
#include "avcore/IZolTMsg.h"
#include "checks/Recording.h"
#include "checks/Worker.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace checks
{

/// The listeners of one platform object. In the journal they are called listener1, listener2 and so on, in the order of
/// their first registration. All operations are [any].
template <typename Listener>
class ListenerList
{
public:
    std::string Add(Listener* listener)
    {
        const std::lock_guard guard(m_mutex);
        if (!Contains(m_present, listener))
        {
            m_present.push_back(listener);
        }
        if (!Contains(m_known, listener))
        {
            m_known.push_back(listener);
        }
        return NameLocked(listener);
    }

    /// Waits until no other thread runs an event on a listener of the list.
    std::string Remove(Listener* listener)
    {
        std::unique_lock lock(m_mutex);
        std::erase(m_present, listener);
        const auto self = std::this_thread::get_id();
        m_ended.wait(lock,
                     [&] {
                         return std::all_of(m_sending.begin(), m_sending.end(),
                                            [self](std::thread::id sender) { return sender == self; });
                     });
        return NameLocked(listener);
    }

    /// Sends an event to each listener, unless it is removed before its turn.
    template <typename Event>
    void Send(Event event)
    {
        std::vector<Listener*> listeners;
        {
            const std::lock_guard guard(m_mutex);
            listeners = m_present;
            m_sending.push_back(std::this_thread::get_id());
        }
        for (Listener* const listener : listeners)
        {
            if (IsPresent(listener))
            {
                event(*listener);
            }
        }
        {
            const std::lock_guard guard(m_mutex);
            m_sending.erase(std::find(m_sending.begin(), m_sending.end(), std::this_thread::get_id()));
        }
        m_ended.notify_all();
    }

    size_t Count() const
    {
        const std::lock_guard guard(m_mutex);
        return m_present.size();
    }

private:
    static bool Contains(const std::vector<Listener*>& listeners, Listener* listener)
    {
        return std::find(listeners.begin(), listeners.end(), listener) != listeners.end();
    }

    bool IsPresent(Listener* listener) const
    {
        const std::lock_guard guard(m_mutex);
        return Contains(m_present, listener);
    }

    std::string NameLocked(Listener* listener) const
    {
        if (listener == nullptr)
        {
            return "null";
        }
        const auto found = std::find(m_known.begin(), m_known.end(), listener);
        return found == m_known.end() ? "stranger" : "listener" + std::to_string(found - m_known.begin() + 1);
    }

    mutable std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_ended;
    std::vector<Listener*> m_present;
    std::vector<Listener*> m_known;
    std::vector<std::thread::id> m_sending; ///< threads inside Send, one entry for each call
};

/// Sends the platform's events to the module: on the thread "platform", and returns when the event has ended; or, with
/// `sendsInline`, on the calling thread. A listener that is removed during the event is skipped. For an exception that
/// leaves a listener it writes "exception left a listener".
class EventSender
{
public:
    EventSender(Journal& journal, Worker& thread) : m_journal(journal), m_thread(thread) {}

    template <typename Listener, typename Event>
    void Send(ListenerList<Listener>& listeners, Event event)
    {
        const auto guarded = [&](Listener& listener)
        {
            try
            {
                event(listener);
            }
            catch (const std::exception& error)
            {
                m_journal.Add("exception left a listener: ", error.what());
            }
        };
        const auto send = [&] { listeners.Send(guarded); };
        if (sendsInline)
        {
            send();
        }
        else
        {
            m_thread.Run(send);
        }
    }

    std::atomic<bool> sendsInline{false};

private:
    Journal& m_journal;
    Worker& m_thread;
};

/// A terminal and a user of a page of a refresh, and the page.
struct PageTerminal
{
    std::string terminal;
    int32_t status = 0;
    std::string custom;
    std::string ext;
};

struct PageUser
{
    std::string id;
    std::vector<PageTerminal> terminals;
    bool hasNullId = false; ///< the record has a null id instead
};

using Page = std::vector<PageUser>;

/// Writes the calls of `IZolOnline` and sends its events.
class RecordingOnline final : public Recorder, public avcore::IZolOnline
{
public:
    RecordingOnline(Journal& journal, EventSender& sender, std::string name)
        : Recorder(journal, std::move(name)),
          m_sender(sender)
    {
    }

    void Reserved0() override
    {
        Record("Reserved0()");
    }
    void Reserved5() override
    {
        Record("Reserved5()");
    }
    HRESULT AddListener(avcore::IZolOnlineListener* listener) override;
    HRESULT RemoveListener(avcore::IZolOnlineListener* listener) override;
    HRESULT RefreshUsersStatus(const avcore::ZolTextList& ids, unsigned* requestId) override;
    HRESULT RefreshAllUsersStatus(unsigned* requestId) override;
    HRESULT SetUserCustomInfo(const char* text) override;
    HRESULT InviteUsers(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results, const char* code,
                        const char* json, unsigned* inviteId) override;
    HRESULT CancelInvite(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results, unsigned inviteId) override;
    HRESULT AcceptInvite(const char* userId, unsigned inviteId, const char* json) override;
    HRESULT RejectInvite(const char* userId, unsigned inviteId, const char* json) override;

    void RefreshUserStatusFinished(avcore::ZolPortErrCode code, unsigned requestId, const Page& page, int pageCount,
                                   int pageIndex);
    void InviteIncome(const char* userId, unsigned inviteId, const char* code, const char* msg);
    void InviteAccepted(const char* userId, unsigned inviteId, const char* msg);
    void InviteRejected(const char* userId, unsigned inviteId, avcore::ZolInviteRejectReason reason, const char* msg);
    void InviteCanceled(const char* userId, unsigned inviteId, avcore::ZolInviteCancelReason reason);
    void UserTerminalStateChanged(const char* userId, const PageTerminal& terminal);

    ListenerList<avcore::IZolOnlineListener> listeners;
    std::deque<unsigned> requestIds;   ///< of the next refreshes, also 0; counted from 101 when the list is empty
    std::deque<unsigned> inviteIds;    ///< of the next invitations; counted from 501 when the list is empty
    std::deque<HRESULT> inviteResults; ///< of the next invitations; the scripted result when the list is empty

private:
    unsigned NextId(std::deque<unsigned>& ids, unsigned& last);

    EventSender& m_sender;
    std::mutex m_idMutex; ///< guards the lists of ids and the last ids
    unsigned m_lastRequestId = 100;
    unsigned m_lastInviteId = 500;
};

/// Writes the calls of `IZolTMsg` and sends its events.
class RecordingTMsg final : public Recorder, public avcore::IZolTMsg
{
public:
    RecordingTMsg(Journal& journal, EventSender& sender, std::string name)
        : Recorder(journal, std::move(name)),
          m_sender(sender)
    {
    }

    void Reserved0() override
    {
        Record("Reserved0()");
    }
    HRESULT AddListener(avcore::IZolTMsgListener* listener) override;
    HRESULT RemoveListener(avcore::IZolTMsgListener* listener) override;

    void UserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg);
    void GroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg);

    ListenerList<avcore::IZolTMsgListener> listeners;

private:
    EventSender& m_sender;
};

/// Writes the calls of `IZolMdsClient` and sends its events.
class RecordingMds final : public Recorder, public avcore::IZolMdsClient
{
public:
    RecordingMds(Journal& journal, EventSender& sender, std::string name)
        : Recorder(journal, std::move(name)),
          m_sender(sender)
    {
    }

    void Reserved0() override
    {
        Record("Reserved0()");
    }
    HRESULT AddListener(avcore::IZolMdsClientListener* listener) override;
    HRESULT RemoveListener(avcore::IZolMdsClientListener* listener) override;
    HRESULT SendMdsData(const char* json) override;

    void MsgData(const char* msg);

    ListenerList<avcore::IZolMdsClientListener> listeners;

private:
    EventSender& m_sender;
};

/// Writes the calls of `IZolConnection` and sends its events to every listener, in order of registration. A script
/// names the call `connection1.GetComponent(IZolOnline)` "GetComponent IZolOnline".
class RecordingConnection final : public RecordingUnknown<avcore::IZolConnection>
{
public:
    /// `number` is part of the names: connection1, online1, tmsg1, mds1.
    RecordingConnection(Journal& journal, Worker& thread, const std::string& number);

    HRESULT AddListener(avcore::IZolConnectionListener* listener) override;
    HRESULT RemoveListener(avcore::IZolConnectionListener* listener) override;
    HRESULT Login(const char* server, avcore::IZolHttp* http, const char* appid, const char* token,
                  const char* deviceid, const char* companyid, const char* userid, const char* mutex, const char* ext,
                  bool force, bool registeruser) override;
    HRESULT LoginOldGw(const GUID& guid, const char* userid, uint32_t param32, uint16_t param16,
                       uint64_t param64) override;
    HRESULT Logout() override;
    HRESULT JoinGroup(const char* groupId) override;
    HRESULT LeaveGroup() override;
    HRESULT GetComponent(const IID& iid, void** out) override;
    HRESULT RequestCPAddress(const char* server, avcore::IZolHttp* http, const char* appid, const char* token,
                             const char* companyid) override;

    void LoginResult(int code, const char* deviceId = nullptr, const char* customState = nullptr,
                     const char* extendInfo = nullptr);
    void JoinGroupResult(int code);
    void LeaveGroupResult(int code);
    void Logouted(int code);
    /// Returns the answer of each listener.
    std::vector<int32_t> ReconnectStart();
    void ReconnectSucess();
    void ReconnectFail(int code, const char* text);
    void GroupUserJoined(const char* userId);
    void GroupUserLeaved(const char* userId);
    void GroupUserSync(const std::vector<std::string>& users);

    EventSender sender; ///< of this connection and its components
    RecordingOnline online;
    RecordingTMsg tmsg;
    RecordingMds mds;
    ListenerList<avcore::IZolConnectionListener> listeners;
    std::atomic<avcore::IZolHttp*> http{nullptr}; ///< the argument of the last Login or RequestCPAddress
    std::atomic<bool> handsOutNull{false};        ///< GetComponent succeeds and returns null
};

/// The platform: its connections in the order of their creation, and the thread that sends their events.
class RecordingPlatform
{
public:
    explicit RecordingPlatform(Journal& journal) : thread("platform"), m_journal(journal) {}

    RecordingConnection& NewConnection();

    Worker thread;
    std::vector<std::unique_ptr<RecordingConnection>> connections;
    std::function<void(RecordingConnection&)> onNewConnection; ///< sets the scripts of a new connection

private:
    Journal& m_journal;
};

} // namespace checks
