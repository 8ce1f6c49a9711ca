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

/// Writes `log ../Unit.cpp: text` for each released message. In front of the colon it adds the level if it is not 2,
/// and a remark if the line number is not positive or the message was not filled exactly once. With `recordsCalls` it
/// also writes manager.GetLoggerLevel, manager.CreateMessage, message.Append and message.Release.
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
    std::atomic<bool> refusesMessages{false}; ///< CreateMessage returns null
    std::atomic<bool> throwsInAppend{false};
    std::atomic<bool> throwsInRelease{false};
    std::atomic<int> openMessages{0};      ///< created and not yet released
    std::atomic<int64_t> wrongLoggerId{0}; ///< an id that the center has never given, of a GetLoggerLevel
    std::atomic<int64_t> lastLoggerId{0};  ///< the center has given the ids from 1 to this one
};

/// Writes its calls, as `center.OpenLogger("name", mode, option1, option2) -> id`.
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
    bool refusesLoggers = false;     ///< OpenLogger returns 0
    bool isGoneAfterRelease = false; ///< Release returns 0, whatever the count is
};

class RecordingLog final : public RecordingUnknown<IWLog>
{
public:
    using RecordingUnknown::RecordingUnknown;
};

/// Writes its calls, as `allocator.CreateLog("name", level, mode) -> log1`.
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

/// Writes `http.Request(...) -> id`. A request whose address has an answer gets it at once from the thread "http"; any
/// other request waits for `Complete`.
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

    /// Completes a request from the thread "http" and returns when the module's listener has returned.
    void Complete(uint32_t id, unsigned int code, std::string body);

    /// The same with a null body.
    void CompleteWithNull(uint32_t id, unsigned int code, unsigned int length);

    /// Sends one header event and one data event of a request.
    void SendPieces(uint32_t id);

    /// From now on each request to this address is answered at once: header, data, completion.
    void Answer(const std::string& url, unsigned int code, const std::string& body);

    Worker thread;

private:
    struct ScriptedAnswer
    {
        unsigned int code;
        std::string body;
    };

    IHttpResponseNotify* FindNotify(uint32_t id);

    std::mutex m_mutex; ///< guards the members below
    uint32_t m_lastId = 0;
    std::map<uint32_t, IHttpResponseNotify*> m_notifies;
    std::map<std::string, ScriptedAnswer> m_answers;
};

/// Writes `factory.CreateComponent(ZolConnection, IZolConnection, null)` and creates connections of the recording
/// platform.
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
    std::deque<HRESULT> creationResults; ///< of the next creations; 0 when the list is empty

protected:
    /// SetResult("QueryInterface ILogCenter", code) lets it refuse the log center.
    HRESULT Query(const GUID& iid, void** out) override;

private:
    RecordingPlatform& m_platform;
};

/// Writes `strategy.CheckReconnect() -> decision`.
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
