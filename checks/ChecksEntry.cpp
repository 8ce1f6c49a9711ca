#include "checks/Stage.h"

#include <cstring>
#include <thread>

namespace checks
{

namespace
{

using onlinemanager::CLSID_OnlineManager;
using onlinemanager::IID_OnlineManager;

constexpr GUID kStrangeId{0x12345678, 0x9ABC, 0xDEF0, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}};

/// Takes the place of a component of the module: it has the slots of the non-delegating side and records their calls.
class FakeComponent
{
public:
    explicit FakeComponent(std::string& story) : m_story(story) {}

    virtual HRESULT NonDelegatingQueryInterface(const GUID& /*iid*/, void** out)
    {
        m_story += "query ";
        *out = queryResult < 0 ? nullptr : this;
        m_references += queryResult < 0 ? 0U : 1U;
        return queryResult;
    }

    virtual uint32_t NonDelegatingAddRef()
    {
        m_story += "add ";
        return ++m_references;
    }

    virtual uint32_t NonDelegatingRelease()
    {
        m_story += "release ";
        if (--m_references != 0)
        {
            return m_references;
        }
        delete this;
        return 0;
    }

    virtual ~FakeComponent()
    {
        m_story += "destroy";
    }

    static inline HRESULT queryResult = S_OK;

private:
    std::string& m_story;
    uint32_t m_references = 0;
};

/// Creation functions get no argument of the check, so they record their calls here. Only one check runs at a time.
std::string fakeStory;
HRESULT fakeCode = S_OK;
IUnknown* fakeOuter = nullptr;
IComponentFactory* fakeFactory = nullptr;
HRESULT fakeCodeAtStart = S_OK;

FRAMEWORKSDK::CFrameUnknown* MakeFake(IUnknown* outer, IComponentFactory* factory, int32_t* hr)
{
    fakeOuter = outer;
    fakeFactory = factory;
    fakeCodeAtStart = *hr;
    *hr = fakeCode;
    return reinterpret_cast<FRAMEWORKSDK::CFrameUnknown*>(new FakeComponent(fakeStory));
}

FRAMEWORKSDK::CFrameUnknown* MakeNothing(IUnknown* /*outer*/, IComponentFactory* /*factory*/, int32_t* hr)
{
    *hr = fakeCode;
    return nullptr;
}

FRAMEWORKSDK::CFrameUnknown* MakeNothingWithoutReason(IUnknown* /*outer*/, IComponentFactory* /*factory*/,
                                                      int32_t* /*hr*/)
{
    return nullptr;
}

FRAMEWORKSDK::CFrameUnknown* MakeAnother(IUnknown* /*outer*/, IComponentFactory* /*factory*/, int32_t* /*hr*/)
{
    fakeStory += "another ";
    return nullptr;
}

HRESULT CreateFromTable(const Stage& stage, std::vector<ComponentObject> table, int count, void** out)
{
    fakeStory.clear();
    const auto create = stage.module.Find<decltype(&CPDllCreateComponent2)>("CPDllCreateComponent2");
    return create(kStrangeId, IID_IUnknown, nullptr, nullptr, out, table.data(), count);
}

const ComponentObject kFakeRow{"Fake", &kStrangeId, &kStrangeId, &MakeFake};

HRESULT CanUnload(const Stage& stage)
{
    return stage.module.Find<decltype(&CPDllCanUnloadNow)>("CPDllCanUnloadNow")();
}

} // namespace

CONTRACT_CHECK(Entry, FMDllRefusesANullTable, "FMDll returns 0x80004003 for a null table.")
{
    const Stage stage(check, Scene::Loaded);
    check.ExpectEqual(E_POINTER, stage.module.Find<LPFNFMDll>("FMDll")(nullptr), "FMDll(null)");
}

CONTRACT_CHECK(Entry, FMDllWithSize39Or41WritesNothing,
               "FMDll returns 0x80004005 for a table of another size and leaves it unchanged.")
{
    const Stage stage(check, Scene::Loaded);
    for (const uint32_t size : {39U, 41U, 0U, 0xFFFFFFFFU})
    {
        FMDllTable table;
        std::memset(static_cast<void*>(&table), 0xAA, sizeof(table));
        table.m_Size = size;
        const FMDllTable before = table;
        check.ExpectEqual(E_FAIL, stage.module.Find<LPFNFMDll>("FMDll")(&table),
                          "FMDll of a table of size " + std::to_string(size));
        check.Expect(std::memcmp(&before, &table, sizeof(table)) == 0, "the table is untouched");
    }
}

CONTRACT_CHECK(Entry, FMDllWithSize40FillsExactlyTheFourPointers,
               "FMDll writes the four functions at the offsets 8, 16, 24 and 32 and nothing else.")
{
    const Stage stage(check, Scene::Loaded);
    alignas(8) unsigned char bytes[56];
    std::memset(bytes, 0xAA, sizeof(bytes));
    const uint32_t size = 40;
    std::memcpy(bytes, &size, sizeof(size));
    check.ExpectEqual(S_OK, stage.module.Find<LPFNFMDll>("FMDll")(reinterpret_cast<FMDllTable*>(bytes)), "FMDll");

    const char* const names[] = {"WDllGetInfo", "WDllGetComponentObject", "WDllCanUnloadNow", "WDllCreateComponent"};
    for (size_t index = 0; index < 4; ++index)
    {
        void* written = nullptr;
        std::memcpy(&written, bytes + 8 + 8 * index, sizeof(written));
        check.ExpectEqual(stage.module.Find<void*>(names[index]), written, names[index]);
    }
    unsigned char untouched[56];
    std::memset(untouched, 0xAA, sizeof(untouched));
    check.Expect(std::memcmp(bytes, &size, 4) == 0, "the size is unchanged");
    check.Expect(std::memcmp(bytes + 4, untouched, 4) == 0, "the padding is unchanged");
    check.Expect(std::memcmp(bytes + 40, untouched, 16) == 0, "nothing is written behind the table");
}

CONTRACT_CHECK(Entry, GetInfoGivesTheThreeValues, "WDllGetInfo gives 0x01000001, 1 and 0.")
{
    const Stage stage(check, Scene::Loaded);
    uint32_t info1 = 9;
    uint32_t info2 = 9;
    uint32_t info3 = 9;
    check.ExpectEqual(S_OK, stage.module.Functions().m_lpfnGetInfo(&info1, &info2, &info3), "WDllGetInfo");
    check.ExpectEqual(0x01000001, info1, "first value");
    check.ExpectEqual(1, info2, "second value");
    check.ExpectEqual(0, info3, "third value");
}

CONTRACT_CHECK(Entry, GetInfoTakesNullForTheFirstTwoAndLeavesTheThirdZero,
               "WDllGetInfo(null, null, &x) with x = 7 leaves x = 0 and returns 0.")
{
    const Stage stage(check, Scene::Loaded);
    for (const uint32_t before : {7U, 0U})
    {
        uint32_t info3 = before;
        check.ExpectEqual(S_OK, stage.module.Functions().m_lpfnGetInfo(nullptr, nullptr, &info3), "WDllGetInfo");
        check.ExpectEqual(0, info3, "third value");
    }
}

CONTRACT_CHECK(
    Entry, TheTemplateTableHasTheOneRowOfTheOnlineManager,
    "The row has the name OnlineManager2, its class, the interface's identifier as category, and a function.")
{
    const Stage stage(check, Scene::Loaded);
    ComponentObject* rows = nullptr;
    uint32_t count = 9;
    check.ExpectEqual(S_OK, stage.module.Functions().m_lpfnGetComponentObject(&rows, &count), "WDllGetComponentObject");
    check.Require(rows != nullptr && count == 1, "there is one row");
    check.ExpectEqual("OnlineManager2", std::string(rows->m_Name), "name");
    check.Expect(*rows->m_ClsID == CLSID_OnlineManager, "the class is the online manager's");
    check.Expect(*rows->m_CategoryID == IID_OnlineManager, "the category is the identifier of its interface");
    check.Expect(rows->m_lpfnNew != nullptr, "there is a creation function");
}

CONTRACT_CHECK(Entry, TheTemplateTableIsHandedOutInParts,
               "WDllGetComponentObject fills each of its two outputs that is not null.")
{
    const Stage stage(check, Scene::Loaded);
    const auto get = stage.module.Functions().m_lpfnGetComponentObject;
    ComponentObject* rows = nullptr;
    uint32_t count = 9;
    check.ExpectEqual(S_OK, get(nullptr, nullptr), "with two null pointers");
    check.ExpectEqual(S_OK, get(&rows, nullptr), "without a count");
    check.Expect(rows != nullptr, "the rows are given");
    check.ExpectEqual(S_OK, get(nullptr, &count), "without rows");
    check.ExpectEqual(1, count, "count");
}

CONTRACT_CHECK(
    Entry, CreationOpensTheLoggerFirst,
    "WDllCreateComponent opens the module's logger, creates the component and adopts the factory's reference.")
{
    Stage stage(check, Scene::Loaded);
    stage.manager = stage.CreateComponent();
    check.Require(stage.manager != nullptr, "the component is created");
    stage.ExpectJournal({
        "factory.QueryInterface(ILogCenter)",
        "center.GetLogMgr()",
        "center.OpenLogger(\"OnlineManager\", 1, 2, 0) -> 1",
        LogLine("OnlineManager", "OnlineManager::CreateInstance."),
        LogLine("OnlineManager", "OnlineManager::CreateInstance :<pointer>."),
    });
    check.ExpectEqual(2, stage.factory.References(), "references of the factory while the component lives");
    check.ExpectEqual(0, std::exchange(stage.manager, nullptr)->Release(), "the only reference was the caller's");
    stage.ExpectJournal({"factory.Release() -> 1"});
}

CONTRACT_CHECK(Entry, TheUnknownOfAComponentHasACountOf1,
               "Creation with the identifier of IUnknown returns the component's own unknown with one reference.")
{
    Stage stage(check, Scene::Loaded);
    stage.factory.Hold();
    void* out = nullptr;
    check.ExpectEqual(S_OK,
                      stage.module.Functions().m_lpfnCreateComponent(CLSID_OnlineManager, IID_IUnknown, nullptr,
                                                                     &stage.factory, &out),
                      "creation");
    check.Require(out != nullptr, "an unknown is returned");
    auto* const unknown = static_cast<IUnknown*>(out);
    check.ExpectEqual(2, unknown->AddRef(), "references after AddRef");
    check.ExpectEqual(1, unknown->Release(), "references after Release");

    void* interface = nullptr;
    check.ExpectEqual(S_OK, unknown->QueryInterface(IID_OnlineManager, &interface), "query for the interface");
    void* same = nullptr;
    auto* const manager = static_cast<onlinemanager::IOnlineManager*>(interface);
    check.ExpectEqual(S_OK, manager->QueryInterface(IID_IUnknown, &same), "query for the unknown");
    check.ExpectEqual(out, same, "the unknown is the same from every interface");
    check.ExpectEqual(2, unknown->Release(), "references with the interface's left");
    check.ExpectEqual(1, manager->Release(), "references with the creator's left");
    check.ExpectEqual(0, unknown->Release(), "no reference left");
}

CONTRACT_CHECK(
    Entry, AnUnsupportedInterfaceDestroysTheNewComponent,
    "Creation with an unsupported interface returns 0x80004002 and null, and the number of live objects is as before.")
{
    Stage stage(check, Scene::Loaded);
    stage.factory.Hold();
    void* out = &stage;
    check.ExpectEqual(
        E_NOINTERFACE,
        stage.module.Functions().m_lpfnCreateComponent(CLSID_OnlineManager, kStrangeId, nullptr, &stage.factory, &out),
        "creation");
    check.ExpectEqual(nullptr, out, "what is handed out");
    check.ExpectEqual(0, CanUnload(stage), "live objects");
    check.ExpectEqual(1, stage.factory.References(), "the component gave the factory back");
}

CONTRACT_CHECK(Entry, AnyOtherClassCreatesNothing,
               "An unknown class returns 0x80004005, and the factory is not called.")
{
    Stage stage(check, Scene::Loaded);
    void* out = &stage;
    const GUID almost = {CLSID_OnlineManager.Data1,
                         CLSID_OnlineManager.Data2,
                         CLSID_OnlineManager.Data3,
                         {0x90, 0x31, 0xEE, 0xB9, 0x2E, 0x99, 0x88, 0x07}};
    for (const GUID& clsid : {kStrangeId, almost, IID_OnlineManager})
    {
        check.ExpectEqual(
            E_FAIL,
            stage.module.Functions().m_lpfnCreateComponent(clsid, IID_OnlineManager, nullptr, &stage.factory, &out),
            "creation of " + NameOf(clsid));
    }
    check.ExpectEqual(0, CanUnload(stage), "live objects");
    stage.ExpectJournal({
        "factory.QueryInterface(ILogCenter)",
        "center.GetLogMgr()",
        "center.OpenLogger(\"OnlineManager\", 1, 2, 0) -> 1",
    });
}

CONTRACT_CHECK(Entry, ANullOutputIsRefusedBeforeAnythingIsMade,
               "Creation without an output pointer returns 0x80004003 and creates nothing.")
{
    Stage stage(check, Scene::Loaded);
    check.ExpectEqual(E_POINTER,
                      stage.module.Functions().m_lpfnCreateComponent(CLSID_OnlineManager, IID_OnlineManager, nullptr,
                                                                     &stage.factory, nullptr),
                      "WDllCreateComponent");
    check.ExpectEqual(E_POINTER,
                      stage.module.Find<decltype(&CPDllCreateComponent)>("CPDllCreateComponent")(
                          CLSID_OnlineManager, IID_OnlineManager, nullptr, &stage.factory, nullptr),
                      "CPDllCreateComponent");
    ComponentObject row = kFakeRow;
    check.ExpectEqual(E_POINTER,
                      stage.module.Find<decltype(&CPDllCreateComponent2)>("CPDllCreateComponent2")(
                          kStrangeId, IID_IUnknown, nullptr, nullptr, nullptr, &row, 0),
                      "CPDllCreateComponent2, whatever the table");
    check.ExpectEqual(0, stage.journal.Count("CreateInstance"), "components made");
}

CONTRACT_CHECK(Entry, WithoutAHostFactoryThereIsNoOnlineManager,
               "A null factory returns the component's own code, 0x80004005, and no object remains.")
{
    Stage stage(check, Scene::Loaded);
    void* out = nullptr;
    check.ExpectEqual(
        E_FAIL,
        stage.module.Functions().m_lpfnCreateComponent(CLSID_OnlineManager, IID_OnlineManager, nullptr, nullptr, &out),
        "creation");
    check.ExpectEqual(nullptr, out, "what is handed out");
    check.ExpectEqual(0, CanUnload(stage), "live objects");
}

CONTRACT_CHECK(Entry, TheCreationFunctionNeedsAPlaceForItsCode,
               "The row's function returns null at once if its output for the code is null.")
{
    Stage stage(check, Scene::Loaded);
    ComponentObject* rows = nullptr;
    stage.module.Functions().m_lpfnGetComponentObject(&rows, nullptr);
    check.Expect(rows->m_lpfnNew(nullptr, &stage.factory, nullptr) == nullptr, "nothing is created");
    check.ExpectEqual(0, CanUnload(stage), "live objects");
    int32_t code = S_OK;
    check.Expect(rows->m_lpfnNew(nullptr, nullptr, &code) == nullptr, "nothing is created without a factory");
    check.ExpectEqual(E_FAIL, code, "the reason");
    check.ExpectEqual(0, CanUnload(stage), "live objects");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(Entry, CPDllCreateComponentWorksOnTheModulesOwnTable,
               "The framework's creation function creates the component too, and opens no logger.")
{
    Stage stage(check, Scene::Loaded);
    stage.factory.Hold();
    void* out = nullptr;
    check.ExpectEqual(S_OK,
                      stage.module.Find<decltype(&CPDllCreateComponent)>("CPDllCreateComponent")(
                          CLSID_OnlineManager, IID_OnlineManager, nullptr, &stage.factory, &out),
                      "creation");
    stage.manager = static_cast<onlinemanager::IOnlineManager*>(out);
    check.Require(stage.manager != nullptr, "a component is returned");
    check.ExpectEqual(1, CanUnload(stage), "live objects");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(Entry, AnEmptyTableHasNoClass, "A count below 1 returns 0x80004005, whatever the table contains.")
{
    Stage stage(check, Scene::Loaded);
    void* out = &stage;
    check.ExpectEqual(E_FAIL, CreateFromTable(stage, {kFakeRow}, 0, &out), "with a count of 0");
    check.ExpectEqual(E_FAIL, CreateFromTable(stage, {kFakeRow}, -1, &out), "with a count of -1");
    check.ExpectEqual("", fakeStory, "what was made");
}

CONTRACT_CHECK(Entry, RowsWithoutClassOrFunctionAreSkipped,
               "A null class identifier and a null creation function disable a row; the first enabled match is taken.")
{
    Stage stage(check, Scene::Loaded);
    fakeCode = S_OK;
    FakeComponent::queryResult = S_OK;
    const std::vector<ComponentObject> table = {
        {"no class", nullptr, &kStrangeId, &MakeAnother},
        {"no function", &kStrangeId, &kStrangeId, nullptr},
        {"another class", &CLSID_OnlineManager, &kStrangeId, &MakeAnother},
        kFakeRow,
        {"second match", &kStrangeId, &kStrangeId, &MakeAnother},
    };
    void* out = nullptr;
    check.ExpectEqual(E_FAIL, CreateFromTable(stage, table, 3, &out), "without the enabled row");
    check.ExpectEqual(S_OK, CreateFromTable(stage, table, 5, &out), "with it");
    check.ExpectEqual("add query release ", fakeStory, "what happened to the new object");
    check.Require(out != nullptr, "the object is returned");
    check.ExpectEqual(0, static_cast<FakeComponent*>(out)->NonDelegatingRelease(), "the caller had the only reference");
}

CONTRACT_CHECK(Entry, TheCreationFunctionGetsOuterFactoryAndAFailingCode,
               "The function gets the outer object and the factory; the code is 0x80004005 until the function sets it.")
{
    Stage stage(check, Scene::Loaded);
    RecordingLog outer(stage.journal, "outer");
    fakeCode = E_INVALIDARG;
    fakeStory.clear();
    ComponentObject row = kFakeRow;
    void* out = nullptr;
    check.ExpectEqual(E_INVALIDARG,
                      stage.module.Find<decltype(&CPDllCreateComponent2)>("CPDllCreateComponent2")(
                          kStrangeId, IID_IUnknown, &outer, &stage.factory, &out, &row, 1),
                      "creation");
    check.ExpectEqual(static_cast<IUnknown*>(&outer), fakeOuter, "outer object");
    check.ExpectEqual(static_cast<IComponentFactory*>(&stage.factory), fakeFactory, "factory");
    check.ExpectEqual(E_FAIL, fakeCodeAtStart, "code before the function");
}

CONTRACT_CHECK(Entry, AFunctionThatMakesNothingGivesItsReasonOrOutOfMemory,
               "Null with a negative code returns that code; null with another code returns 0x8007000E.")
{
    Stage stage(check, Scene::Loaded);
    void* out = &stage;
    const std::vector<ComponentObject> nothing = {{"Nothing", &kStrangeId, &kStrangeId, &MakeNothing}};
    fakeCode = E_INVALIDARG;
    check.ExpectEqual(E_INVALIDARG, CreateFromTable(stage, nothing, 1, &out), "with a reason");
    for (const HRESULT success : {0, 1})
    {
        fakeCode = success;
        check.ExpectEqual(E_OUTOFMEMORY, CreateFromTable(stage, nothing, 1, &out), "with a code of success");
    }
    const std::vector<ComponentObject> silent = {{"Silent", &kStrangeId, &kStrangeId, &MakeNothingWithoutReason}};
    check.ExpectEqual(E_FAIL, CreateFromTable(stage, silent, 1, &out), "with the code it started from");
}

CONTRACT_CHECK(Entry, AnObjectWithANegativeCodeIsDestroyedWithoutARelease,
               "An object that is returned with a negative code is destroyed by its deleting destructor.")
{
    Stage stage(check, Scene::Loaded);
    fakeCode = E_INVALIDARG;
    void* out = &stage;
    check.ExpectEqual(E_INVALIDARG, CreateFromTable(stage, {kFakeRow}, 1, &out), "creation");
    check.ExpectEqual("destroy", fakeStory, "what happened to the object");
}

CONTRACT_CHECK(Entry, AFailedQueryDestroysTheNewObject,
               "The query's code is returned; the count goes 0, 1, 0 and the object is destroyed.")
{
    Stage stage(check, Scene::Loaded);
    fakeCode = S_OK;
    FakeComponent::queryResult = E_NOINTERFACE;
    void* out = &stage;
    check.ExpectEqual(E_NOINTERFACE, CreateFromTable(stage, {kFakeRow}, 1, &out), "creation");
    check.ExpectEqual("add query release destroy", fakeStory, "what happened to the object");
    check.ExpectEqual(nullptr, out, "what is handed out");
}

CONTRACT_CHECK(Entry, CanUnloadNowAnswers1WhileAComponentLivesAnd0AfterItsLastRelease,
               "Both answers are logged, and after both the module has no logger.")
{
    Stage stage(check, Scene::Created);
    const auto canUnload = stage.module.Functions().m_lpfnCanUnloadNow;
    check.ExpectEqual(1, canUnload(), "while the component lives");
    stage.ExpectJournal({LogLine("WOnlineManager", "WDllCanUnloadNow :1.")});
    check.ExpectEqual(1, canUnload(), "once more");
    stage.manager->GetPaasOnline(nullptr);
    stage.ExpectJournal({});

    check.ExpectEqual(0, std::exchange(stage.manager, nullptr)->Release(), "last release");
    check.ExpectEqual(0, canUnload(), "after the last release");
    stage.ExpectJournal({"factory.Release() -> 1"});
}

CONTRACT_CHECK(Entry, AfterTheLastReleaseCanUnloadNowIsLoggedWith0,
               "The answer 0 is logged before the module gives up its logger.")
{
    Stage stage(check, Scene::Created);
    std::exchange(stage.manager, nullptr)->Release();
    stage.journal.Clear();
    check.ExpectEqual(0, stage.module.Functions().m_lpfnCanUnloadNow(), "after the last release");
    check.ExpectEqual(0, stage.module.Functions().m_lpfnCanUnloadNow(), "once more");
    stage.ExpectJournal({LogLine("WOnlineManager", "WDllCanUnloadNow :0.")});
}

CONTRACT_CHECK(Entry, LoggingResumesAtTheNextCreation,
               "After WDllCanUnloadNow the next creation opens another logger at the same center.")
{
    Stage stage(check, Scene::Created);
    stage.module.Functions().m_lpfnCanUnloadNow();
    stage.journal.Clear();
    onlinemanager::IOnlineManager* const second = stage.CreateComponent();
    check.Require(second != nullptr, "a second component is created");
    stage.ExpectJournal({
        "center.GetLogMgr()",
        "center.OpenLogger(\"OnlineManager\", 1, 2, 0) -> 2",
        LogLine("OnlineManager", "OnlineManager::CreateInstance."),
        LogLine("OnlineManager", "OnlineManager::CreateInstance :<pointer>."),
    });
    stage.manager->GetPaasOnline(nullptr);
    stage.ExpectJournal({LogLine("OnlineManager", "OnlineManager::GetPaasOnline invalid argument.")});
    check.ExpectEqual(0, second->Release(), "last release of the second");
}

CONTRACT_CHECK(Entry, CPDllCanUnloadNowCountsEveryComponent,
               "With two components the module may be unloaded after the last release of both, in either order.")
{
    Stage stage(check, Scene::Created);
    onlinemanager::IOnlineManager* const second = stage.CreateComponent();
    check.Require(second != nullptr, "a second component is created");
    check.ExpectEqual(1, CanUnload(stage), "with both");
    std::exchange(stage.manager, nullptr)->Release();
    check.ExpectEqual(1, CanUnload(stage), "with the second");
    second->Release();
    check.ExpectEqual(0, CanUnload(stage), "with none");
}

CONTRACT_CHECK(Entry, GetComponentInterfaceAddsAReferenceToWhatItStores,
               "The pointer is stored and its slot 1 is called; a null output returns 0x80004003.")
{
    Stage stage(check, Scene::Loaded);
    const auto get = stage.module.Find<decltype(&GetComponentInterface)>("GetComponentInterface");
    RecordingLog object(stage.journal, "object");
    void* out = nullptr;
    check.ExpectEqual(S_OK, get(static_cast<IWLog*>(&object), &out), "GetComponentInterface");
    check.ExpectEqual(static_cast<void*>(static_cast<IWLog*>(&object)), out, "what is stored");
    check.ExpectEqual(E_POINTER, get(static_cast<IWLog*>(&object), nullptr), "with a null output");
    stage.ExpectJournal({"object.AddRef() -> 2"});
}

CONTRACT_CHECK(
    Entry, TheComponentAnswersQueriesForItsTwoInterfacesOnly,
    "IUnknown and IOnlineManager succeed, anything else gives 0x80004002 and null, a null output 0x80004003.")
{
    Stage stage(check, Scene::Created);
    void* out = nullptr;
    check.ExpectEqual(S_OK, stage.manager->QueryInterface(IID_OnlineManager, &out), "query for IOnlineManager");
    check.ExpectEqual(static_cast<void*>(stage.manager), out, "the interface");
    check.ExpectEqual(1, stage.manager->Release(), "references left");
    check.ExpectEqual(S_OK, stage.manager->QueryInterface(IID_IUnknown, &out), "query for IUnknown");
    check.ExpectEqual(1, static_cast<IUnknown*>(out)->Release(), "references left");
    out = &stage;
    check.ExpectEqual(E_NOINTERFACE, stage.manager->QueryInterface(IID_ILogCenter, &out),
                      "query for an unknown interface");
    check.ExpectEqual(nullptr, out, "what a stranger gets");
    for (const GUID& iid : {IID_OnlineManager, IID_IUnknown, kStrangeId})
    {
        check.ExpectEqual(E_POINTER, stage.manager->QueryInterface(iid, nullptr), "without an output: " + NameOf(iid));
    }
}

CONTRACT_CHECK(Entry, TheInterfacesOfAnAggregateForwardToItsOuterObject,
               "With an outer object the interface's first three slots call it, and the inner count is separate.")
{
    Stage stage(check, Scene::Loaded);
    RecordingLog outer(stage.journal, "outer");
    stage.factory.Hold();
    void* out = nullptr;
    check.ExpectEqual(
        S_OK,
        stage.module.Functions().m_lpfnCreateComponent(CLSID_OnlineManager, IID_IUnknown, &outer, &stage.factory, &out),
        "creation");
    auto* const inner = static_cast<IUnknown*>(out);
    check.Require(inner != nullptr, "the inner unknown is returned");
    stage.journal.Clear();

    void* interface = nullptr;
    check.ExpectEqual(S_OK, inner->QueryInterface(IID_OnlineManager, &interface), "query at the inner unknown");
    auto* const manager = static_cast<onlinemanager::IOnlineManager*>(interface);
    check.ExpectEqual(3, manager->AddRef(), "AddRef at the interface");
    void* nothing = &stage;
    check.ExpectEqual(E_NOINTERFACE, manager->QueryInterface(IID_OnlineManager, &nothing), "query at the interface");
    check.ExpectEqual(2, manager->Release(), "Release at the interface");
    check.ExpectEqual(1, manager->Release(), "Release of the query's reference");
    stage.ExpectJournal({
        "outer.AddRef() -> 2",
        "outer.AddRef() -> 3",
        "outer.QueryInterface(IOnlineManager)",
        "outer.Release() -> 2",
        "outer.Release() -> 1",
    });
    check.ExpectEqual(0, inner->Release(), "last release of the inner unknown");
    stage.ExpectJournal({"factory.Release() -> 1"});
}

CONTRACT_CHECK(
    Entry, NoAggregationRuleIsEnforced,
    "With an outer object any interface is returned; the reference goes to the outer object, so nothing holds "
    "the new one.")
{
    Stage stage(check, Scene::Loaded);
    RecordingLog outer(stage.journal, "outer");
    stage.factory.Hold();
    stage.journal.Clear();
    void* out = nullptr;
    check.ExpectEqual(S_OK,
                      stage.module.Functions().m_lpfnCreateComponent(CLSID_OnlineManager, IID_OnlineManager, &outer,
                                                                     &stage.factory, &out),
                      "creation");
    check.Expect(out != nullptr, "an interface is returned");
    check.ExpectEqual(1, stage.journal.Count("outer.AddRef() -> 2"), "references added to the outer object");
    check.ExpectEqual(1, stage.journal.Count("factory.Release() -> 1"), "ends of the new object");
    check.ExpectEqual(0, CanUnload(stage), "live objects");
}

CONTRACT_CHECK(Entry, ReferencesAreCountedFromManyThreads,
               "Threads that add and release references at the same time leave the count as it was.")
{
    Stage stage(check, Scene::Created);
    const auto addAndRelease = [&]
    {
        for (int round = 0; round < 20000; ++round)
        {
            stage.manager->AddRef();
            if (stage.manager->Release() == 0)
            {
                check.Fail("the component ended although the host holds it");
            }
        }
    };
    std::thread first(addAndRelease);
    std::thread second(addAndRelease);
    first.join();
    second.join();
    check.ExpectEqual(2, stage.manager->AddRef(), "references after the threads");
    check.ExpectEqual(1, stage.manager->Release(), "references of the host");
}

} // namespace checks
