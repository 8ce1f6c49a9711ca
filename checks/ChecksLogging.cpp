#include "checks/Stage.h"
#include "common/frameworksdk/wframelog.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace checks
{

namespace
{

/// The line of a refused call, which the checks below cause.
const std::string kRefusal = "OnlineManager::GetPaasOnline invalid argument.";

class Writer final : public Quenda::ILogWriter
{
public:
    void AppendLog(const char* /*text*/, unsigned int /*length*/, Quenda::LogLevel /*level*/) override {}
};

} // namespace

CONTRACT_CHECK(
    Logging, ALineAsksForTheLevelThenFillsOneMessage,
    "The module asks for the level, creates a message at level 2 with the unit's name, fills it once and releases it.")
{
    Stage stage(check, Scene::Created);
    stage.factory.center.manager.recordsCalls = true;
    stage.manager->GetPaasOnline(nullptr);
    stage.ExpectJournal({
        "manager.GetLoggerLevel(1)",
        "manager.CreateMessage(1, 2, \"../OnlineManager.cpp\")",
        "message.Append(\"" + kRefusal + "\")",
        "message.Release()",
        LogLine("OnlineManager", kRefusal),
    });
}

CONTRACT_CHECK(Logging, TheMessageFormatsTheArguments,
               "The message object gets format and arguments, not a formatted text.")
{
    Stage stage(check);
    onlinemanager::IPaasTMsg* tmsg = nullptr;
    stage.factory.center.manager.recordsCalls = true;
    stage.manager->GetPaasTMsg(&tmsg);
    stage.ExpectJournal({
        "manager.GetLoggerLevel(1)",
        "manager.CreateMessage(1, 2, \"../OnlineManager.cpp\")",
        "message.Append(\"%s()\")",
        "message.Release()",
        LogLine("OnlineManager", "GetPaasTMsg()"),
    });
}

CONTRACT_CHECK(Logging, AtLevel3OrHigherNoMessageIsEverCreated, "A suppressed line calls only GetLoggerLevel.")
{
    Stage stage(check, Scene::Created);
    RecordingLogMgr& manager = stage.factory.center.manager;
    manager.recordsCalls = true;
    for (const int32_t level : {3, 4, 5, 100})
    {
        manager.level = level;
        stage.manager->GetPaasOnline(nullptr);
        stage.ExpectJournal({"manager.GetLoggerLevel(1)"});
    }
}

CONTRACT_CHECK(Logging, BelowLevel3EveryLineIsWritten, "Levels INFO, TRACE and below let every line through.")
{
    Stage stage(check, Scene::Created);
    for (const int32_t level : {2, 1, 0, -1})
    {
        stage.factory.center.manager.level = level;
        stage.manager->GetPaasOnline(nullptr);
        stage.ExpectJournal({LogLine("OnlineManager", kRefusal)});
    }
}

CONTRACT_CHECK(Logging, TheLevelIsAskedForEachLine, "A change of the level takes effect at the next line.")
{
    Stage stage(check, Scene::Created);
    RecordingLogMgr& manager = stage.factory.center.manager;
    manager.level = Quenda::LOG_LEVEL_WARNING;
    stage.manager->GetPaasOnline(nullptr);
    manager.level = Quenda::LOG_LEVEL_TRACE;
    stage.manager->GetPaasOnline(nullptr);
    stage.ExpectJournal({LogLine("OnlineManager", kRefusal)});
}

CONTRACT_CHECK(Logging, ANullMessageSuppressesTheLine, "Without a message object the operation works as usual.")
{
    Stage stage(check, Scene::Created);
    stage.factory.center.manager.refusesMessages = true;
    check.ExpectEqual(1, stage.manager->GetPaasOnline(nullptr), "GetPaasOnline(null)");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(Logging, AMessageIsReleasedAlsoWhenFillingThrows, "The message is released even if filling it throws.")
{
    Stage stage(check, Scene::Created);
    RecordingLogMgr& manager = stage.factory.center.manager;
    manager.throwsInAppend = true;
    manager.recordsCalls = true;
    try
    {
        stage.manager->GetPaasOnline(nullptr);
    }
    catch (const std::runtime_error&)
    {
        // This check does not say whether the exception reaches the host.
    }
    manager.throwsInAppend = false;
    stage.ExpectJournal({
        "manager.GetLoggerLevel(1)",
        "manager.CreateMessage(1, 2, \"../OnlineManager.cpp\")",
        "message.Append(\"" + kRefusal + "\")",
        "message.Release()",
        LogLine("OnlineManager", ""),
    });
}

CONTRACT_CHECK(Logging, AMessageWhoseReleaseThrowsEndsTheProcess, "The release runs in a function that must not throw.")
{
    Stage stage(check, Scene::Created);
    stage.factory.center.manager.throwsInRelease = true;
    const pid_t child = fork();
    if (child == 0)
    {
        const rlimit noDump{};
        setrlimit(RLIMIT_CORE, &noDump);
        std::signal(SIGABRT, SIG_DFL);
        close(STDERR_FILENO);
        try
        {
            stage.manager->GetPaasOnline(nullptr);
        }
        catch (...)
        {
            _exit(1);
        }
        _exit(0);
    }
    int status = 0;
    check.Require(child > 0 && waitpid(child, &status, 0) == child, "a child process runs");
    check.Expect(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT, "the process ends by std::terminate");
    stage.factory.center.manager.throwsInRelease = false;
}

CONTRACT_CHECK(
    Logging, WithoutAHostFactoryNothingIsLoggedAndNothingFails,
    "After a creation without a factory nothing is logged; after a later one with a factory the module logs.")
{
    Stage stage(check, Scene::Loaded);
    void* out = nullptr;
    stage.module.Functions().m_lpfnCreateComponent(onlinemanager::CLSID_OnlineManager, onlinemanager::IID_OnlineManager,
                                                   nullptr, nullptr, &out);
    check.ExpectEqual(0, stage.module.Functions().m_lpfnCanUnloadNow(), "WDllCanUnloadNow without a logger");
    stage.ExpectJournal({});
    stage.manager = stage.CreateComponent();
    check.ExpectEqual(2, stage.journal.Count("log ../OnlineManager.cpp"), "lines of a creation with a factory");
}

CONTRACT_CHECK(Logging, ACenterThatGivesLogger0LeavesTheModuleSilent,
               "The center is released, the component works, and the next creation asks for a logger again.")
{
    Stage stage(check, Scene::Loaded);
    RecordingLogCenter& center = stage.factory.center;
    center.refusesLoggers = true;
    stage.manager = stage.CreateComponent();
    check.Require(stage.manager != nullptr, "the component is created");
    check.ExpectEqual(1, stage.manager->GetPaasOnline(nullptr), "GetPaasOnline(null)");
    stage.ExpectJournal({
        "factory.QueryInterface(ILogCenter)",
        "center.GetLogMgr()",
        "center.OpenLogger(\"OnlineManager\", 1, 2, 0) -> 0",
        "center.Release() -> 1",
    });
    center.refusesLoggers = false;
    onlinemanager::IOnlineManager* const second = stage.CreateComponent();
    check.Require(second != nullptr, "a second component is created");
    stage.ExpectJournal({
        "factory.QueryInterface(ILogCenter)",
        "center.GetLogMgr()",
        "center.OpenLogger(\"OnlineManager\", 1, 2, 0) -> 1",
        LogLine("OnlineManager", "OnlineManager::CreateInstance."),
        LogLine("OnlineManager", "OnlineManager::CreateInstance :<pointer>."),
    });
    second->Release();
}

CONTRACT_CHECK(Logging, AFactoryWithoutALogCenterLeavesTheModuleSilent, "Nothing is logged and nothing fails.")
{
    Stage stage(check, Scene::Loaded);
    stage.factory.SetResult("QueryInterface ILogCenter", E_NOINTERFACE);
    stage.manager = stage.CreateComponent();
    check.Require(stage.manager != nullptr, "the component is created");
    check.ExpectEqual(S_OK, stage.manager->Initialize(nullptr), "Initialize");
    check.ExpectEqual(0, stage.journal.Count("log "), "log lines");
}

CONTRACT_CHECK(Logging, TwoCreationsOpenOneLogger,
               "The module opens its logger once, and again only after WDllCanUnloadNow.")
{
    Stage stage(check, Scene::Loaded);
    stage.manager = stage.CreateComponent();
    onlinemanager::IOnlineManager* const second = stage.CreateComponent();
    check.ExpectEqual(1, stage.journal.Count("center.OpenLogger("), "loggers opened by two creations");
    stage.module.Functions().m_lpfnCanUnloadNow();
    onlinemanager::IOnlineManager* const third = stage.CreateComponent();
    check.ExpectEqual(2, stage.journal.Count("center.OpenLogger("), "loggers opened after the unload query");
    check.ExpectEqual(0, stage.journal.Count("center.CloseLogger("), "loggers closed: they stay open at the center");
    second->Release();
    third->Release();
}

CONTRACT_CHECK(Logging, TextsOfTheHostAreNeverTakenForFormats, "Percent signs in parameters are logged as they are.")
{
    Stage stage(check);
    onlinemanager::LoginParam param = Stage::Param();
    param.server = "%s%n%s";
    param.token = "100%";
    stage.Session()->Login(param, false);
    check.ExpectEqual(1, stage.journal.Count("Paas login param: server=%s%n%s, appid=app-1, token=100%."),
                      "lines with the texts as they are");
}

CONTRACT_CHECK(Logging, TextThatIsNotUtf8IsLoggedAsItIs, "Every byte of a parameter reaches the log unchanged.")
{
    Stage stage(check);
    onlinemanager::LoginParam param = Stage::Param();
    param.token = "\xFF\xFE\xC3";
    stage.Session()->Login(param, false);
    check.ExpectEqual(1, stage.journal.Count("token=\xFF\xFE\xC3."), "lines with the bytes as they are");
}

CONTRACT_CHECK(FrameworkLoggers, InitKXLogger2OpensALoggerAtTheCenter,
               "It asks the factory for the center, then opens the logger with the mode, 2 and 0; later calls use the "
               "same center.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitKXLogger2)>("FWInitKXLogger2");
    ILogMgr* manager = nullptr;
    int64_t id = 0;
    check.ExpectEqual(S_OK, init(&stage.factory, "first", 7, &manager, &id), "first logger");
    check.ExpectEqual(static_cast<ILogMgr*>(&stage.factory.center.manager), manager, "manager");
    check.ExpectEqual(1, id, "id of the first logger");
    check.ExpectEqual(S_OK, init(&stage.factory, "second", -1, &manager, &id), "second logger");
    check.ExpectEqual(2, id, "id of the second logger");
    stage.ExpectJournal({
        "factory.QueryInterface(ILogCenter)",
        "center.GetLogMgr()",
        "center.OpenLogger(\"first\", 7, 2, 0) -> 1",
        "center.GetLogMgr()",
        "center.OpenLogger(\"second\", -1, 2, 0) -> 2",
    });
}

CONTRACT_CHECK(FrameworkLoggers, InitKXLogger2RefusesMissingArguments,
               "A null factory, name or output returns 0x80004005 and calls nothing.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitKXLogger2)>("FWInitKXLogger2");
    ILogMgr* manager = nullptr;
    int64_t id = 0;
    check.ExpectEqual(E_FAIL, init(nullptr, "name", 1, &manager, &id), "without a factory");
    check.ExpectEqual(E_FAIL, init(&stage.factory, nullptr, 1, &manager, &id), "without a name");
    check.ExpectEqual(E_FAIL, init(&stage.factory, "name", 1, nullptr, &id), "without a place for the manager");
    check.ExpectEqual(E_FAIL, init(&stage.factory, "name", 1, &manager, nullptr), "without a place for the id");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(FrameworkLoggers, InitKXLogger2ReturnsTheCodeOfAFailedQuery,
               "If the factory gives no center, its code is returned.")
{
    Stage stage(check, Scene::Loaded);
    stage.factory.SetResult("QueryInterface ILogCenter", E_INVALIDARG);
    ILogMgr* manager = nullptr;
    int64_t id = 0;
    check.ExpectEqual(
        E_INVALIDARG,
        stage.module.Find<decltype(&FWInitKXLogger2)>("FWInitKXLogger2")(&stage.factory, "name", 1, &manager, &id),
        "FWInitKXLogger2");
    stage.ExpectJournal({"factory.QueryInterface(ILogCenter)"});
}

CONTRACT_CHECK(FrameworkLoggers, InitKXLogger2DropsACenterThatRefuses,
               "A logger id of 0 returns 0x80070057 and a null manager, and the center is released.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitKXLogger2)>("FWInitKXLogger2");
    stage.factory.center.refusesLoggers = true;
    ILogMgr* manager = &stage.factory.center.manager;
    int64_t id = 9;
    for (int round = 0; round < 2; ++round)
    {
        check.ExpectEqual(E_INVALIDARG, init(&stage.factory, "name", 1, &manager, &id), "FWInitKXLogger2");
        check.ExpectEqual(nullptr, manager, "manager");
        check.ExpectEqual(0, id, "id");
        stage.ExpectJournal({
            "factory.QueryInterface(ILogCenter)",
            "center.GetLogMgr()",
            "center.OpenLogger(\"name\", 1, 2, 0) -> 0",
            "center.Release() -> 1",
        });
    }
}

CONTRACT_CHECK(
    FrameworkLoggers, ReleaseKXLogger2ClosesAndGivesOneReferenceBack,
    "The center is kept while loggers are open and its Release returns more than 0; otherwise it is forgotten.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitKXLogger2)>("FWInitKXLogger2");
    const auto release = stage.module.Find<decltype(&FWReleaseKXLogger2)>("FWReleaseKXLogger2");
    ILogMgr* manager = nullptr;
    int64_t id = 0;
    check.ExpectEqual(0, release(7), "without a center");
    stage.ExpectJournal({});

    init(&stage.factory, "first", 1, &manager, &id);
    init(&stage.factory, "second", 1, &manager, &id);
    stage.factory.center.Hold();
    stage.journal.Clear();
    check.ExpectEqual(0, release(1), "with another logger open");
    stage.ExpectJournal({"center.CloseLogger(1)", "center.Release() -> 2"});
    init(&stage.factory, "third", 1, &manager, &id);
    stage.ExpectJournal({"center.GetLogMgr()", "center.OpenLogger(\"third\", 1, 2, 0) -> 3"});
    release(2);
    release(3);
    stage.ExpectJournal(
        {"center.CloseLogger(2)", "center.Release() -> 1", "center.CloseLogger(3)", "center.Release() -> 0"});
    stage.factory.center.Hold();
    check.ExpectEqual(0, release(3), "after the last one");
    init(&stage.factory, "fourth", 1, &manager, &id);
    stage.ExpectJournal({
        "factory.QueryInterface(ILogCenter)",
        "center.GetLogMgr()",
        "center.OpenLogger(\"fourth\", 1, 2, 0) -> 4",
    });
}

CONTRACT_CHECK(FrameworkLoggers, ReleaseKXLogger2DropsACenterWhoseReleaseReportsNothingLeft,
               "The count of open loggers then starts again at 0.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitKXLogger2)>("FWInitKXLogger2");
    const auto release = stage.module.Find<decltype(&FWReleaseKXLogger2)>("FWReleaseKXLogger2");
    ILogMgr* manager = nullptr;
    int64_t id = 0;
    init(&stage.factory, "first", 1, &manager, &id);
    init(&stage.factory, "second", 1, &manager, &id);
    stage.factory.center.isGoneAfterRelease = true;
    stage.journal.Clear();
    check.ExpectEqual(0, release(1), "FWReleaseKXLogger2");
    check.ExpectEqual(0, release(2), "once more, without a center");
    stage.ExpectJournal({"center.CloseLogger(1)", "center.Release() -> 1"});

    stage.factory.center.isGoneAfterRelease = false;
    stage.factory.center.Hold();
    init(&stage.factory, "third", 1, &manager, &id);
    stage.journal.Clear();
    release(id);
    init(&stage.factory, "fourth", 1, &manager, &id);
    check.ExpectEqual(1, stage.journal.Count("factory.QueryInterface(ILogCenter)"),
                      "queries after the only logger was closed");
}

CONTRACT_CHECK(FrameworkLoggers, ReleaseKXLogger2OfIdZeroClosesNothing,
               "The center is still released, and forgotten if no logger is open.")
{
    Stage stage(check, Scene::Loaded);
    const auto release = stage.module.Find<decltype(&FWReleaseKXLogger2)>("FWReleaseKXLogger2");
    ILogMgr* manager = nullptr;
    int64_t id = 0;
    stage.module.Find<decltype(&FWInitKXLogger2)>("FWInitKXLogger2")(&stage.factory, "first", 1, &manager, &id);
    stage.factory.center.Hold();
    stage.journal.Clear();
    check.ExpectEqual(0, release(0), "FWReleaseKXLogger2(0)");
    stage.ExpectJournal({"center.Release() -> 2"});
    check.ExpectEqual(0, release(id), "FWReleaseKXLogger2 of the open logger");
    stage.ExpectJournal({"center.CloseLogger(1)", "center.Release() -> 1"});
}

CONTRACT_CHECK(FrameworkLoggers, TheDefaultKXLoggerExistsOnce,
               "A second FWInitKXLogger returns 0x80004005 until FWReleaseKXLogger has closed the first.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitKXLogger)>("FWInitKXLogger");
    const auto release = stage.module.Find<decltype(&FWReleaseKXLogger)>("FWReleaseKXLogger");
    check.ExpectEqual(E_FAIL, init(nullptr, "name", 1), "without a factory");
    check.ExpectEqual(E_FAIL, init(&stage.factory, nullptr, 1), "without a name");
    stage.ExpectJournal({});
    check.ExpectEqual(S_OK, init(&stage.factory, "name", 5), "first");
    check.ExpectEqual(E_FAIL, init(&stage.factory, "name", 5), "second");
    stage.ExpectJournal({
        "factory.QueryInterface(ILogCenter)",
        "center.GetLogMgr()",
        "center.OpenLogger(\"name\", 5, 2, 0) -> 1",
    });
    check.ExpectEqual(0, release(), "FWReleaseKXLogger");
    check.ExpectEqual(0, release(), "FWReleaseKXLogger once more");
    stage.ExpectJournal({"center.CloseLogger(1)", "center.Release() -> 1"});
    check.ExpectEqual(S_OK, init(&stage.factory, "name", 5), "after the release");
}

CONTRACT_CHECK(FrameworkLoggers, TheDefaultKXLoggerIsClosedOnce,
               "Also while another logger keeps the center: a second release finds no logger to close.")
{
    Stage stage(check, Scene::Loaded);
    const auto release = stage.module.Find<decltype(&FWReleaseKXLogger)>("FWReleaseKXLogger");
    stage.module.Find<decltype(&FWInitKXLogger)>("FWInitKXLogger")(&stage.factory, "name", 5);
    ILogMgr* manager = nullptr;
    int64_t other = 0;
    stage.module.Find<decltype(&FWInitKXLogger2)>("FWInitKXLogger2")(&stage.factory, "other", 5, &manager, &other);
    stage.factory.center.Hold();
    stage.journal.Clear();
    release();
    release();
    check.ExpectEqual(1, stage.journal.Count("center.CloseLogger("), "loggers closed");
    check.ExpectEqual(1, stage.journal.Count("center.CloseLogger(1)"), "the default logger closed");
}

CONTRACT_CHECK(FrameworkLoggers, ARefusedDefaultKXLoggerLeavesRoomForAnother,
               "After a center has refused, FWInitKXLogger may be called again.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitKXLogger)>("FWInitKXLogger");
    stage.factory.center.refusesLoggers = true;
    check.ExpectEqual(E_INVALIDARG, init(&stage.factory, "name", 1), "refused");
    stage.factory.center.refusesLoggers = false;
    check.ExpectEqual(S_OK, init(&stage.factory, "name", 1), "not refused");
}

CONTRACT_CHECK(FrameworkLoggers, WritersAreHandedToTheCenter,
               "The module asks for the center, calls slot 6 or 7 with name and writer, releases it, and returns the "
               "center's result.")
{
    Stage stage(check, Scene::Loaded);
    const auto add = stage.module.Find<decltype(&FWAddLogWriter)>("FWAddLogWriter");
    const auto remove = stage.module.Find<decltype(&FWRemoveLogWriter)>("FWRemoveLogWriter");
    Writer writer;
    stage.factory.center.SetResult("AddLogWriter", 5);
    stage.factory.center.SetResult("RemoveLogWriter", E_INVALIDARG);
    check.ExpectEqual(5, add(&stage.factory, "name", &writer), "FWAddLogWriter");
    check.ExpectEqual(E_INVALIDARG, remove(&stage.factory, "name", &writer), "FWRemoveLogWriter");
    check.ExpectEqual(5, add(&stage.factory, "name", nullptr), "FWAddLogWriter with a null writer");
    stage.ExpectJournal({
        "factory.QueryInterface(ILogCenter)",
        "center.AddLogWriter(\"name\", writer)",
        "center.Release() -> 1",
        "factory.QueryInterface(ILogCenter)",
        "center.RemoveLogWriter(\"name\", writer)",
        "center.Release() -> 1",
        "factory.QueryInterface(ILogCenter)",
        "center.AddLogWriter(\"name\", null)",
        "center.Release() -> 1",
    });
}

CONTRACT_CHECK(FrameworkLoggers, WritersNeedAFactoryANameAndACenter,
               "A null factory or name returns 0x80004005; a failed QueryInterface returns its code.")
{
    Stage stage(check, Scene::Loaded);
    Writer writer;
    for (const char* const name : {"FWAddLogWriter", "FWRemoveLogWriter"})
    {
        const auto function = stage.module.Find<decltype(&FWAddLogWriter)>(name);
        check.ExpectEqual(E_FAIL, function(nullptr, "name", &writer), name);
        check.ExpectEqual(E_FAIL, function(&stage.factory, nullptr, &writer), name);
    }
    stage.ExpectJournal({});
    stage.factory.SetResult("QueryInterface ILogCenter", E_NOINTERFACE);
    for (const char* const name : {"FWAddLogWriter", "FWRemoveLogWriter"})
    {
        const auto function = stage.module.Find<decltype(&FWAddLogWriter)>(name);
        check.ExpectEqual(E_NOINTERFACE, function(&stage.factory, "name", &writer), name);
    }
    stage.ExpectJournal({"factory.QueryInterface(ILogCenter)", "factory.QueryInterface(ILogCenter)"});
}

CONTRACT_CHECK(FrameworkLoggers, ExLoggersComeFromTheAllocator,
               "The module asks for the allocator, calls slot 3 or 4 with the arguments unchanged, and releases it.")
{
    Stage stage(check, Scene::Loaded);
    IWLog* plain = nullptr;
    IWLog* encrypted = nullptr;
    check.ExpectEqual(
        S_OK, stage.module.Find<decltype(&FWInitExLogger)>("FWInitExLogger")(&stage.factory, L"Zo\u00eb", 3, 4, &plain),
        "FWInitExLogger");
    check.ExpectEqual(
        S_OK,
        stage.module.Find<decltype(&FWInitExLogger2)>("FWInitExLogger2")(&stage.factory, L"name", 3, 4, 2, &encrypted),
        "FWInitExLogger2");
    stage.ExpectJournal({
        "factory.QueryInterface(IWLogAllocator)",
        "allocator.CreateLog(\"Zo\u00eb\", 3, 4) -> log1",
        "allocator.Release() -> 1",
        "factory.QueryInterface(IWLogAllocator)",
        "allocator.CreateLog2(\"name\", 3, 4, 2) -> log2",
        "allocator.Release() -> 1",
    });
    const auto release = stage.module.Find<decltype(&FWReleaseExLogger)>("FWReleaseExLogger");
    check.ExpectEqual(0, release(plain), "FWReleaseExLogger");
    check.ExpectEqual(0, release(encrypted), "FWReleaseExLogger");
    check.ExpectEqual(0, release(nullptr), "FWReleaseExLogger(null)");
    stage.ExpectJournal({"log1.Release() -> 0", "log2.Release() -> 0"});
}

CONTRACT_CHECK(FrameworkLoggers, ExLoggersNeedAFactoryAndAName, "A null factory or name returns 0x80004005.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitExLogger)>("FWInitExLogger");
    const auto init2 = stage.module.Find<decltype(&FWInitExLogger2)>("FWInitExLogger2");
    IWLog* log = nullptr;
    check.ExpectEqual(E_FAIL, init(nullptr, L"name", 1, 1, &log), "FWInitExLogger without a factory");
    check.ExpectEqual(E_FAIL, init(&stage.factory, nullptr, 1, 1, &log), "FWInitExLogger without a name");
    check.ExpectEqual(E_FAIL, init2(nullptr, L"name", 1, 1, 1, &log), "FWInitExLogger2 without a factory");
    check.ExpectEqual(E_FAIL, init2(&stage.factory, nullptr, 1, 1, 1, &log), "FWInitExLogger2 without a name");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(
    FrameworkLoggers, ExLoggersReturnTheHostsFailures,
    "A failed QueryInterface returns its code; a failed creation returns its code and does not release the allocator.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitExLogger)>("FWInitExLogger");
    const auto init2 = stage.module.Find<decltype(&FWInitExLogger2)>("FWInitExLogger2");
    IWLog* log = nullptr;
    stage.factory.allocator.SetResult("CreateLog", E_INVALIDARG);
    stage.factory.allocator.SetResult("CreateLog2", E_OUTOFMEMORY);
    check.ExpectEqual(E_INVALIDARG, init(&stage.factory, L"name", 1, 1, &log), "FWInitExLogger");
    check.ExpectEqual(E_OUTOFMEMORY, init2(&stage.factory, L"name", 1, 1, 1, &log), "FWInitExLogger2");
    stage.ExpectJournal({
        "factory.QueryInterface(IWLogAllocator)",
        "allocator.CreateLog(\"name\", 1, 1)",
        "factory.QueryInterface(IWLogAllocator)",
        "allocator.CreateLog2(\"name\", 1, 1, 1)",
    });
    stage.factory.SetResult("QueryInterface IWLogAllocator", E_NOINTERFACE);
    check.ExpectEqual(E_NOINTERFACE, init(&stage.factory, L"name", 1, 1, &log), "FWInitExLogger without an allocator");
    check.ExpectEqual(E_NOINTERFACE, init2(&stage.factory, L"name", 1, 1, 1, &log),
                      "FWInitExLogger2 without an allocator");
}

CONTRACT_CHECK(FrameworkLoggers, TheDefaultExLoggerExistsOnce,
               "While it exists another FWInitLogger does nothing and returns 0; FWReleaseLogger releases it once.")
{
    Stage stage(check, Scene::Loaded);
    const auto init = stage.module.Find<decltype(&FWInitLogger)>("FWInitLogger");
    const auto init2 = stage.module.Find<decltype(&FWInitLogger2)>("FWInitLogger2");
    const auto release = stage.module.Find<decltype(&FWReleaseLogger)>("FWReleaseLogger");
    check.ExpectEqual(0, release(), "FWReleaseLogger without a logger");
    check.ExpectEqual(E_FAIL, init(&stage.factory, nullptr, 1, 1), "FWInitLogger without a name");
    stage.ExpectJournal({});
    check.ExpectEqual(S_OK, init(&stage.factory, L"name", 1, 2), "FWInitLogger");
    check.ExpectEqual(0, init(&stage.factory, L"other", 1, 2), "FWInitLogger once more");
    check.ExpectEqual(0, init2(nullptr, nullptr, 1, 2, 1), "FWInitLogger2 with nothing");
    check.ExpectEqual(0, release(), "FWReleaseLogger");
    check.ExpectEqual(0, release(), "FWReleaseLogger once more");
    check.ExpectEqual(S_OK, init2(&stage.factory, L"name", 1, 2, 1), "FWInitLogger2 after the release");
    stage.ExpectJournal({
        "factory.QueryInterface(IWLogAllocator)",
        "allocator.CreateLog(\"name\", 1, 2) -> log1",
        "allocator.Release() -> 1",
        "log1.Release() -> 0",
        "factory.QueryInterface(IWLogAllocator)",
        "allocator.CreateLog2(\"name\", 1, 2, 1) -> log2",
        "allocator.Release() -> 1",
    });
}

} // namespace checks
