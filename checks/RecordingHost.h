#pragma once

#include "checks/Recording.h"
#include "checks/RecordingPlatform.h"
#include "checks/Worker.h"
#include "common/frameworksdk/IComponentFactory.h"
#include "common/frameworksdk/IHttpClient.h"
#include "common/frameworksdk/ILogCenter.h"
#include "onlinemanager/IReconnection.h"

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace checks
{

/// Journals, for a line committed by its release: `log ../Unit.cpp: text`, with the level in front of the colon when it is
/// not 2, and with a remark when the line number is not positive or when the message was not filled exactly once. With
/// `recordsCalls` also: manager.GetLoggerLevel, manager.CreateMessage, message.Append, message.Release.
class RecordingLogMgr final : public RecordingUnknown<ILogMgr>
{
public:
    explicit RecordingLogMgr(Journal& journal) : RecordingUnknown(journal, "manager") {}

    void Reserved3() override
    {
        Record("Reserved3()");
    }
    void Reserved4() override
    {
        Record("Reserved4()");
    }
    void Reserved5() override
    {
        Record("Reserved5()");
    }
    void Reserved6() override
    {
        Record("Reserved6()");
    }
    void Reserved7() override
    {
        Record("Reserved7()");
    }
    void Reserved9() override
    {
        Record("Reserved9()");
    }
    int32_t GetLoggerLevel(int64_t loggerId) override;
    ILogMessage* CreateMessage(int64_t loggerId, int32_t level, const char* file, int32_t line) override;

    std::atomic<int32_t> level{Quenda::LOG_LEVEL_INFO};
    std::atomic<bool> recordsCalls{false};
    std::atomic<bool> refusesMessages{false}; ///< CreateMessage gives null
    std::atomic<bool> throwsInAppend{false};
    std::atomic<bool> throwsInRelease{false};
    std::atomic<int> openMessages{0};      ///< made and not yet released
    std::atomic<int64_t> wrongLoggerId{0}; ///< an id asked for that the center never gave
    std::atomic<int64_t> lastLoggerId{0};  ///< ids from 1 to this one were given
};

/// Journals `center.OpenLogger("name", mode, option1, option2) -> id` and the like.
class RecordingLogCenter final : public RecordingUnknown<ILogCenter>
{
public:
    explicit RecordingLogCenter(Journal& journal) : RecordingUnknown(journal, "center"), manager(journal) {}

    uint32_t Release() override;
    ILogMgr* GetLogMgr() override;
    int64_t OpenLogger(const char* name, int32_t mode, int32_t option1, int32_t option2) override;
    HRESULT CloseLogger(int64_t loggerId) override;
    HRESULT AddLogWriter(const char* name, Quenda::ILogWriter* writer) override;
    HRESULT RemoveLogWriter(const char* name, Quenda::ILogWriter* writer) override;

    RecordingLogMgr manager;
    bool refusesLoggers = false;     ///< OpenLogger gives 0
    bool isGoneAfterRelease = false; ///< Release gives 0, whatever references there are
};

class RecordingLog final : public RecordingUnknown<IWLog>
{
public:
    using RecordingUnknown::RecordingUnknown;
};

/// Journals `allocator.CreateLog("name", level, mode) -> log1`.
class RecordingLogAllocator final : public RecordingUnknown<IWLogAllocator>
{
public:
    explicit RecordingLogAllocator(Journal& journal) : RecordingUnknown(journal, "allocator") {}

    HRESULT CreateLog(const wchar_t* name, int32_t level, int32_t mode, IWLog** out) override;
    HRESULT CreateLog2(const wchar_t* name, int32_t level, int32_t mode, BOOL encrypt, IWLog** out) override;

    std::vector<std::unique_ptr<RecordingLog>> logs;

private:
    HRESULT HandOutLog(const std::string& call, const char* operation, IWLog** out);
};

/// Journals `http.Request(...) -> id`. Requests wait until `Complete`, or are answered from the thread "http" at once when
/// their address has an answer.
class RecordingHttp final : public RecordingUnknown<IHttpClient>
{
public:
    explicit RecordingHttp(Journal& journal) : RecordingUnknown(journal, "http"), thread("http") {}

    void Reserved3() override
    {
        Record("Reserved3()");
    }
    void Reserved4() override
    {
        Record("Reserved4()");
    }
    void Reserved5() override
    {
        Record("Reserved5()");
    }
    void Reserved6() override
    {
        Record("Reserved6()");
    }
    void Reserved7() override
    {
        Record("Reserved7()");
    }
    void Reserved8() override
    {
        Record("Reserved8()");
    }
    uint32_t Request(const HttpRequest* request, IHttpResponseNotify* notify,
                     WBASELIB::TStringBase<char>* text) override;

    /// Ends a request from the thread "http" and returns when the module has taken the event.
    void Complete(uint32_t id, unsigned int code, std::string body);

    /// The same with null for the body.
    void CompleteWithNull(uint32_t id, unsigned int code, unsigned int length);

    /// Sends header and data events of a request.
    void SendPieces(uint32_t id);

    /// Requests of this address are answered at once: header, data, complete.
    void Answer(const std::string& url, unsigned int code, const std::string& body);

    Worker thread;

private:
    struct ScriptedAnswer
    {
        unsigned int code;
        std::string body;
    };

    IHttpResponseNotify* FindNotify(uint32_t id);

    std::mutex m_mutex; ///< guards what is below
    uint32_t m_lastId = 0;
    std::map<uint32_t, IHttpResponseNotify*> m_notifies;
    std::map<std::string, ScriptedAnswer> m_answers;
};

/// Journals `factory.CreateComponent(ZolConnection, IZolConnection, null)` and makes connections of the platform.
class RecordingFactory final : public RecordingUnknown<IComponentFactory>
{
public:
    RecordingFactory(Journal& journal, RecordingPlatform& platform)
        : RecordingUnknown(journal, "factory"),
          center(journal),
          allocator(journal),
          m_platform(platform)
    {
    }

    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) override;

    RecordingLogCenter center;
    RecordingLogAllocator allocator;
    std::deque<HRESULT> creationResults; ///< of the next creations; 0 when there is none left

protected:
    /// SetResult("QueryInterface ILogCenter", code) refuses.
    HRESULT Query(const GUID& iid, void** out) override;

private:
    RecordingPlatform& m_platform;
};

/// Journals `strategy.CheckReconnect() -> decision`.
class RecordingStrategy final : public onlinemanager::IReconnectionStrategy
{
public:
    explicit RecordingStrategy(Journal& journal) : m_journal(journal) {}

    int32_t CheckReconnect() override
    {
        m_journal.Add("strategy.CheckReconnect() -> ", decision);
        return decision;
    }

    std::atomic<int32_t> decision{avcore::ZOL_RECONNECT_GO_ON};

private:
    Journal& m_journal;
};

} // namespace checks
