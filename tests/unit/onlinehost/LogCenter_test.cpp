#include "onlinehost/LogCenter.h"

#include "onlinehost/Error.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <sys/resource.h>
#include <thread>

using onlinehost::LogCenter;
using Quenda::LogLevel;

namespace
{

class Writer final : public Quenda::ILogWriter
{
public:
    explicit Writer(std::function<void()> action = {}) : m_action(std::move(action)) {}

    void AppendLog(const char* text, unsigned int length, LogLevel level) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_texts.emplace_back(text, length);
            m_levels.push_back(level);
        }
        if (m_action)
        {
            m_action();
        }
    }

    std::vector<std::string> Texts() const
    {
        const std::lock_guard lock(m_mutex);
        return m_texts;
    }

    std::vector<LogLevel> Levels() const
    {
        const std::lock_guard lock(m_mutex);
        return m_levels;
    }

private:
    const std::function<void()> m_action;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_texts;
    std::vector<LogLevel> m_levels;
};

void Append(ILogMessage* message, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    message->Append(format, arguments);
    va_end(arguments);
}

void AppendWide(ILogMessage* message, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    message->AppendWide(format, arguments);
    va_end(arguments);
}

LogCenter::Options InMemory()
{
    LogCenter::Options options;
    options.keptLines = 100;
    return options;
}

class LogCenterTest : public testing::Test
{
protected:
    ILogMessage* Create(int32_t level = Quenda::LOG_LEVEL_TRACE)
    {
        return m_manager->CreateMessage(m_id, level, "../Unit.cpp", 12);
    }

    void Write(const std::string& text)
    {
        ILogMessage* const message = Create();
        Append(message, "%s", text.c_str());
        message->Release();
    }

    std::string LastText() const
    {
        return m_writer.Texts().back();
    }

    LogCenter m_center{InMemory()};
    ILogMgr* const m_manager = m_center.GetLogMgr();
    const int64_t m_id = m_center.OpenLogger("Module", 1, 2, 0);
    Writer m_writer;

    void SetUp() override
    {
        ASSERT_EQ(m_center.AddLogWriter("Module", &m_writer), S_OK);
    }
};

} // namespace

TEST_F(LogCenterTest, ALineHasLoggerLevelPlaceAndText)
{
    Write("100% {} text");
    const std::vector<std::string> lines = m_center.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(" trace Module ../Unit.cpp:12 100% {} text"), std::string::npos) << lines[0];
}

TEST_F(LogCenterTest, TextIsAppendedInOrder)
{
    ILogMessage* const message = Create();
    Append(message, "%d-", 1);
    AppendWide(message, L"%s-", L"\u20ac");
    Append(message, "%s", "end");
    message->Release();
    EXPECT_EQ(LastText(), "1-\u20ac-end");
}

TEST_F(LogCenterTest, WithoutTextTheLineIsEmpty)
{
    ILogMessage* const message = Create();
    Append(message, nullptr);
    AppendWide(message, nullptr);
    message->Release();
    EXPECT_EQ(LastText(), "");
}

TEST_F(LogCenterTest, ALongTextIsCutAtAWholeCharacterWithAMark)
{
    const size_t limit = Quenda::kMaxLogMessageBufLen - 1;
    Write(std::string(limit, 'a'));
    EXPECT_EQ(LastText(), std::string(limit, 'a')) << "fits exactly";

    Write(std::string(limit + 1, 'a'));
    EXPECT_EQ(LastText(), std::string(limit - 5, 'a') + "[...]");

    // The room in front of the mark ends in the middle of a character.
    std::string characters = "a";
    while (characters.size() < 2 * limit)
    {
        characters += "\u20ac";
    }
    Write(characters);
    EXPECT_EQ(LastText(), characters.substr(0, 4090) + "[...]");
    EXPECT_EQ((limit - 5) % 3, 1u) << "the case above: a whole number of characters and the first letter";

    characters.insert(0, "a");
    Write(characters);
    EXPECT_EQ(LastText(), characters.substr(0, 4088) + "[...]");
}

TEST_F(LogCenterTest, NothingFollowsTheMark)
{
    // The cut splits a character, so a few bytes are free after the mark.
    const std::string text = std::string(4088, 'a') + "\u20ac";
    for (const bool wide : {false, true})
    {
        ILogMessage* const message = Create();
        Append(message, "%s", text.c_str());
        wide ? AppendWide(message, L"%s", L"0123456789") : Append(message, "0123456789");
        Append(message, "b");
        AppendWide(message, L"c");
        message->Release();
        EXPECT_EQ(LastText(), std::string(4088, 'a') + "[...]");
    }
}

TEST_F(LogCenterTest, BytesThatAreNotUtf8PassAsTheyAre)
{
    Write("a\xff\xfe z");
    EXPECT_EQ(LastText(), "a\xff\xfe z");
}

TEST_F(LogCenterTest, LevelsAreSetWhileItRuns)
{
    EXPECT_EQ(m_manager->GetLoggerLevel(m_id), Quenda::LOG_LEVEL_TRACE);
    EXPECT_EQ(Create(Quenda::LOG_LEVEL_INFO), nullptr) << "INFO ranks below TRACE";

    m_center.SetLevel("Module", Quenda::LOG_LEVEL_WARNING);
    EXPECT_EQ(m_manager->GetLoggerLevel(m_id), Quenda::LOG_LEVEL_WARNING);
    EXPECT_EQ(Create(), nullptr);
    ILogMessage* const message = Create(Quenda::LOG_LEVEL_ERROR);
    ASSERT_NE(message, nullptr);
    message->Release();
    EXPECT_EQ(m_writer.Levels(), std::vector<LogLevel>{Quenda::LOG_LEVEL_ERROR});

    m_center.SetLevel(LogCenter::kLevelOff);
    EXPECT_EQ(Create(Quenda::LOG_LEVEL_FATAL), nullptr);
    EXPECT_EQ(m_manager->GetLoggerLevel(m_center.OpenLogger("Later", 1, 2, 0)), LogCenter::kLevelOff);

    m_center.SetLevel(Quenda::LOG_LEVEL_INFO);
    EXPECT_EQ(m_manager->GetLoggerLevel(m_id), Quenda::LOG_LEVEL_INFO);
}

TEST_F(LogCenterTest, ALevelBeyondTheScaleIsTheNearest)
{
    Create(1000)->Release();
    EXPECT_EQ(m_writer.Levels().back(), Quenda::LOG_LEVEL_FATAL);
    m_center.SetLevel(-5);
    Create(-5)->Release();
    EXPECT_EQ(m_writer.Levels().back(), Quenda::LOG_LEVEL_INFO);
}

TEST_F(LogCenterTest, UnknownAndClosedLoggersAreSilent)
{
    for (const int64_t id : {INT64_C(0), INT64_C(-1), m_id + 1, INT64_MAX, INT64_MIN})
    {
        EXPECT_EQ(m_manager->GetLoggerLevel(id), LogCenter::kLevelOff) << id;
        EXPECT_EQ(m_manager->CreateMessage(id, Quenda::LOG_LEVEL_FATAL, "file", 1), nullptr) << id;
        EXPECT_LT(m_center.CloseLogger(id), 0) << id;
    }
    EXPECT_EQ(m_center.CloseLogger(m_id), S_OK);
    EXPECT_EQ(m_manager->GetLoggerLevel(m_id), LogCenter::kLevelOff);
    EXPECT_EQ(Create(Quenda::LOG_LEVEL_FATAL), nullptr);
    EXPECT_LT(m_center.CloseLogger(m_id), 0);
}

TEST_F(LogCenterTest, ALoggerIsClosedAsOftenAsItWasOpened)
{
    EXPECT_EQ(m_center.OpenLogger("Module", 1, 2, 0), m_id);
    EXPECT_EQ(m_center.CloseLogger(m_id), S_OK);
    Write("still open");
    EXPECT_EQ(LastText(), "still open");
    EXPECT_EQ(m_center.CloseLogger(m_id), S_OK);
    EXPECT_EQ(Create(), nullptr);
    EXPECT_EQ(m_center.OpenLogger("Module", 1, 2, 0), m_id);
    Write("open again");
    EXPECT_EQ(LastText(), "open again");
}

TEST_F(LogCenterTest, AMessageOutlivesTheClosingOfItsLogger)
{
    ILogMessage* const message = Create();
    Append(message, "late");
    ASSERT_EQ(m_center.CloseLogger(m_id), S_OK);
    message->Release();
    EXPECT_EQ(LastText(), "late");
}

TEST_F(LogCenterTest, ANullNameAndTooManyNamesAreRefused)
{
    EXPECT_EQ(m_center.OpenLogger(nullptr, 1, 2, 0), 0);
    for (size_t i = 1; i < LogCenter::kMaxLoggers; ++i)
    {
        EXPECT_NE(m_center.OpenLogger(("Logger" + std::to_string(i)).c_str(), 1, 2, 0), 0);
    }
    EXPECT_EQ(m_center.OpenLogger("One too many", 1, 2, 0), 0);
    EXPECT_LT(m_center.AddLogWriter("One too many", &m_writer), 0);
    EXPECT_EQ(m_center.OpenLogger("Module", 1, 2, 0), m_id);
}

TEST_F(LogCenterTest, WritersBelongToOneLogger)
{
    Writer other;
    ASSERT_EQ(m_center.AddLogWriter("Other", &other), S_OK) << "a logger that is not open yet";
    Write("for the first");
    EXPECT_EQ(other.Texts().size(), 0u);

    const int64_t id = m_center.OpenLogger("Other", 1, 2, 0);
    EXPECT_NE(id, m_id);
    ILogMessage* const message = m_manager->CreateMessage(id, Quenda::LOG_LEVEL_WARNING, "file", 1);
    Append(message, "for the second");
    message->Release();
    EXPECT_EQ(other.Texts(), std::vector<std::string>{"for the second"});
    EXPECT_EQ(m_writer.Texts(), std::vector<std::string>{"for the first"});
}

TEST_F(LogCenterTest, AWriterIsRegisteredOnceAndRemovedOnce)
{
    EXPECT_EQ(m_center.AddLogWriter("Module", &m_writer), S_OK);
    Write("one");
    EXPECT_EQ(m_writer.Texts().size(), 1u);

    EXPECT_EQ(m_center.RemoveLogWriter("Module", &m_writer), S_OK);
    Write("two");
    EXPECT_EQ(m_writer.Texts().size(), 1u);

    EXPECT_LT(m_center.RemoveLogWriter("Module", &m_writer), 0);
    EXPECT_LT(m_center.RemoveLogWriter("Unknown", &m_writer), 0);
}

TEST_F(LogCenterTest, MissingArgumentsOfWritersAreRefused)
{
    EXPECT_EQ(m_center.AddLogWriter(nullptr, &m_writer), E_POINTER);
    EXPECT_EQ(m_center.AddLogWriter("Module", nullptr), E_POINTER);
    EXPECT_EQ(m_center.RemoveLogWriter(nullptr, &m_writer), E_POINTER);
    EXPECT_EQ(m_center.RemoveLogWriter("Module", nullptr), E_POINTER);
}

TEST_F(LogCenterTest, AWriterMayRemoveItselfAndAddOthersFromInside)
{
    Writer added;
    Writer* self = nullptr;
    Writer inside(
        [&]
        {
            m_center.AddLogWriter("Module", &added);
            m_center.RemoveLogWriter("Module", self);
        });
    self = &inside;
    m_center.AddLogWriter("Module", &inside);
    Write("one");
    Write("two");
    EXPECT_EQ(inside.Texts(), std::vector<std::string>{"one"});
    EXPECT_EQ(added.Texts(), std::vector<std::string>{"two"});
}

TEST_F(LogCenterTest, AWriterRemovedByAnEarlierOneIsNotCalledAnyMore)
{
    Writer later;
    Writer earlier([&] { m_center.RemoveLogWriter("Module", &later); });
    m_center.AddLogWriter("Module", &earlier);
    m_center.AddLogWriter("Module", &later);
    Write("one");
    EXPECT_EQ(earlier.Texts().size(), 1u);
    EXPECT_EQ(later.Texts().size(), 0u);
}

TEST_F(LogCenterTest, AWriterThatThrowsDoesNotFailTheCaller)
{
    Writer bad([] { throw std::runtime_error("bad"); });
    Writer next;
    m_center.AddLogWriter("Module", &bad);
    m_center.AddLogWriter("Module", &next);
    Write("one");
    EXPECT_EQ(next.Texts().size(), 1u);
    EXPECT_EQ(m_center.RemoveLogWriter("Module", &bad), S_OK);
}

TEST_F(LogCenterTest, RemovingWaitsForACallOnAnotherThread)
{
    std::promise<void> entered;
    std::promise<void> release;
    std::atomic<bool> left{false};
    Writer slow(
        [&]
        {
            entered.set_value();
            release.get_future().wait();
            left = true;
        });
    m_center.AddLogWriter("Module", &slow);
    std::thread logging([this] { Write("one"); });
    entered.get_future().wait();

    std::atomic<bool> wasLeft{false};
    std::thread removing(
        [&]
        {
            m_center.RemoveLogWriter("Module", &slow);
            wasLeft = left.load();
        });
    // A removal that does not wait would return in this time.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    release.set_value();
    logging.join();
    removing.join();
    EXPECT_TRUE(wasLeft);
}

TEST_F(LogCenterTest, ThreadsLogWhileWritersComeAndGo)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
    {
        threads.emplace_back(
            [this]
            {
                for (int i = 0; i < 200; ++i)
                {
                    Write("text");
                }
            });
    }
    for (int i = 0; i < 100; ++i)
    {
        auto passing = std::make_unique<Writer>();
        m_center.AddLogWriter("Module", passing.get());
        m_center.SetLevel("Module", Quenda::LOG_LEVEL_TRACE);
        m_center.RemoveLogWriter("Module", passing.get());
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(m_writer.Texts().size(), 800u);
}

TEST_F(LogCenterTest, GivesItsInterfaceWithAReference)
{
    void* out = nullptr;
    EXPECT_EQ(m_center.QueryInterface(IID_ILogCenter, &out), S_OK);
    EXPECT_EQ(out, static_cast<ILogCenter*>(&m_center));
    EXPECT_EQ(m_center.ForeignReferences(), 1u);
    EXPECT_EQ(m_center.Release(), 1u);
    EXPECT_EQ(m_center.QueryInterface(IID_IWLogAllocator, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(m_center.QueryInterface(IID_ILogCenter, nullptr), E_POINTER);
}

TEST(LogCenter, WritesLinesOfTheHost)
{
    LogCenter center(InMemory());
    center.Write("host", Quenda::LOG_LEVEL_WARNING, "text");
    center.SetLevel("host", LogCenter::kLevelOff);
    center.Write("host", Quenda::LOG_LEVEL_FATAL, "suppressed");
    const std::vector<std::string> lines = center.Lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("warning host"), std::string::npos) << lines[0];
}

TEST(LogCenter, KeepsTheNewestLines)
{
    LogCenter::Options options;
    options.keptLines = 2;
    LogCenter center(options);
    for (const char* text : {"one", "two", "three"})
    {
        center.Write("host", Quenda::LOG_LEVEL_ERROR, text);
    }
    const std::vector<std::string> lines = center.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].ends_with("two"));
    EXPECT_TRUE(lines[1].ends_with("three"));
}

TEST(LogCenter, FilesRotateAtTenMebibytes)
{
    const TemporaryFolder folder;
    LogCenter::Options options;
    options.file = folder / "module.log";
    options.olderFiles = 1;
    LogCenter center(options);
    const std::string text(4000, 'a');
    for (size_t written = 0; written < 21 * 1024 * 1024; written += text.size())
    {
        center.Write("host", Quenda::LOG_LEVEL_WARNING, text);
    }
    const uintmax_t limit = 10 * 1024 * 1024;
    EXPECT_LE(std::filesystem::file_size(options.file), limit);
    const uintmax_t full = std::filesystem::file_size(folder / "module.1.log");
    EXPECT_LE(full, limit);
    EXPECT_GT(full, limit - 8192);
    EXPECT_FALSE(std::filesystem::exists(folder / "module.2.log"));
}

TEST(LogCenter, EveryLineIsInTheFileAtOnceAndAFileIsContinued)
{
    const TemporaryFolder folder;
    LogCenter::Options options;
    options.file = folder / "module.log";
    {
        LogCenter center(options);
        center.Write("host", Quenda::LOG_LEVEL_TRACE, "first");
        EXPECT_NE(ReadFile(options.file).find("first"), std::string::npos);
    }
    LogCenter(options).Write("host", Quenda::LOG_LEVEL_TRACE, "second");
    EXPECT_NE(ReadFile(options.file).find("first"), std::string::npos);
    EXPECT_NE(ReadFile(options.file).find("second"), std::string::npos);
}

TEST(LogCenter, AFileThatCannotBeWrittenIsAnError)
{
    LogCenter::Options options;
    options.file = "/proc/nowhere/module.log";
    EXPECT_THROW(LogCenter{options}, onlinehost::Error);
}

TEST(LogCenter, LevelsHaveNames)
{
    EXPECT_EQ(onlinehost::ParseLogLevel("info"), Quenda::LOG_LEVEL_INFO);
    EXPECT_EQ(onlinehost::ParseLogLevel("trace"), Quenda::LOG_LEVEL_TRACE);
    EXPECT_EQ(onlinehost::ParseLogLevel("fatal"), Quenda::LOG_LEVEL_FATAL);
    EXPECT_EQ(onlinehost::ParseLogLevel("off"), LogCenter::kLevelOff);
    EXPECT_THROW(onlinehost::ParseLogLevel("loud"), onlinehost::Error);
}

namespace
{

/// The reason why the log could not be written; empty when it was written.
std::string WriteFailure(const LogCenter& center)
{
    try
    {
        center.CheckWritten();
        return {};
    }
    catch (const onlinehost::Error& error)
    {
        return error.what();
    }
}

} // namespace

TEST(LogCenter, ALineThatIsNotWrittenIsNotedWithTheFileAndTheReason)
{
    LogCenter::Options options;
    options.file = "/dev/full";
    LogCenter center(options);
    EXPECT_EQ(WriteFailure(center), "");
    center.Write("host", Quenda::LOG_LEVEL_ERROR, "lost");
    const std::string failure = WriteFailure(center);
    EXPECT_NE(failure.find("/dev/full"), std::string::npos) << failure;
    EXPECT_NE(failure.find("No space left on device"), std::string::npos) << failure;
}

TEST(LogCenter, ADiskThatFillsUpLaterIsNoted)
{
    const TemporaryFolder folder;
    LogCenter::Options options;
    options.file = folder / "log";
    LogCenter center(options);
    center.Write("host", Quenda::LOG_LEVEL_ERROR, "written");
    EXPECT_EQ(WriteFailure(center), "");

    // A limit on the size of files takes the place of a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    const rlimit full{std::filesystem::file_size(folder / "log"), former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    center.Write("host", Quenda::LOG_LEVEL_ERROR, "lost");
    setrlimit(RLIMIT_FSIZE, &former);

    const std::string failure = WriteFailure(center);
    EXPECT_NE(failure.find(folder / "log"), std::string::npos) << failure;
}
