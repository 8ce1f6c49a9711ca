#include "common/frameworksdk/wframelog.h"
#include "tests/unit/module/RecordedTest.h"

#include <stdexcept>

using commonutil::OrbLogUtil;

namespace
{

/// A test that begins without a logger.
class OrbLogUtilTest : public RecordedTest
{
protected:
    void SetUp() override
    {
        checks::NameThread("host");
    }
};

int Failing()
{
    throw std::runtime_error("the argument throws");
}

} // namespace

TEST_F(OrbLogUtilTest, InitOpensTheNamedLogger)
{
    EXPECT_TRUE(OrbLogUtil::Init(&m_factory, "name", 7));
    EXPECT_EQ(&m_factory.center.manager, OrbLogUtil::m_model_log_mrg);
    EXPECT_EQ(1, OrbLogUtil::m_logger_id);
    EXPECT_EQ((Lines{"factory.QueryInterface(ILogCenter)", "center.GetLogMgr()",
                     "center.OpenLogger(\"name\", 7, 2, 0) -> 1"}),
              Journal());
}

TEST_F(OrbLogUtilTest, TwoInitsOpenOneLogger)
{
    EXPECT_TRUE(OrbLogUtil::Init(&m_factory, "name", 1));
    m_journal.Clear();
    EXPECT_TRUE(OrbLogUtil::Init(&m_factory, "name", 1));
    EXPECT_TRUE(OrbLogUtil::Init(nullptr, nullptr, 1));
    EXPECT_EQ(Lines{}, Journal());
}

TEST_F(OrbLogUtilTest, AfterReleaseWithoutClosingInitOpensASecondLogger)
{
    OrbLogUtil::Init(&m_factory, "name", 1);
    m_journal.Clear();
    OrbLogUtil::Release(false);
    EXPECT_EQ(nullptr, OrbLogUtil::m_model_log_mrg);
    EXPECT_EQ(0, OrbLogUtil::m_logger_id);
    EXPECT_TRUE(OrbLogUtil::Init(&m_factory, "name", 1));
    EXPECT_EQ((Lines{"center.GetLogMgr()", "center.OpenLogger(\"name\", 1, 2, 0) -> 2"}), Journal());
}

TEST_F(OrbLogUtilTest, ReleaseWithClosingClosesTheLoggerAtTheCenter)
{
    OrbLogUtil::Init(&m_factory, "name", 1);
    m_journal.Clear();
    OrbLogUtil::Release(true);
    OrbLogUtil::Release(true);
    EXPECT_EQ((Lines{"center.CloseLogger(1)", "center.Release() -> 1"}), Journal());
    EXPECT_EQ(nullptr, OrbLogUtil::m_model_log_mrg);
    EXPECT_EQ(0, OrbLogUtil::m_logger_id);
}

TEST_F(OrbLogUtilTest, WithoutFactoryOrNameThereIsNoLogger)
{
    EXPECT_FALSE(OrbLogUtil::Init(nullptr, "name", 1));
    EXPECT_FALSE(OrbLogUtil::Init(&m_factory, nullptr, 1));
    EXPECT_EQ(nullptr, OrbLogUtil::m_model_log_mrg);
    EXPECT_EQ(Lines{}, Journal());
}

TEST_F(OrbLogUtilTest, ACenterThatGivesLogger0LeavesLoggingOff)
{
    m_factory.center.refusesLoggers = true;
    EXPECT_FALSE(OrbLogUtil::Init(&m_factory, "name", 1));
    EXPECT_EQ(nullptr, OrbLogUtil::m_model_log_mrg);
    EXPECT_EQ(0, OrbLogUtil::m_logger_id);
    EXPECT_EQ((Lines{"factory.QueryInterface(ILogCenter)", "center.GetLogMgr()",
                     "center.OpenLogger(\"name\", 1, 2, 0) -> 0", "center.Release() -> 1"}),
              Journal());
}

using LogLineTest = RecordedTest;

TEST_F(LogLineTest, ALineNamesItsUnitAndLine)
{
    ORB_LOG("%s(), id=%u", "Name", 7u);
    EXPECT_EQ(Lines{checks::LogLine("OrbLogUtil_test", "Name(), id=7")}, Journal());
}

TEST_F(LogLineTest, TheWideFormTakesWideTexts)
{
    ORB_LOG(L"list=%s, count=%d", L"Zo\u00eb,", 3);
    EXPECT_EQ(Lines{checks::LogLine("OrbLogUtil_test", "list=Zo\u00eb,, count=3")}, Journal());
}

TEST_F(LogLineTest, ASuppressedLineMakesNoArguments)
{
    m_factory.center.manager.level = Quenda::LOG_LEVEL_WARNING;
    EXPECT_NO_THROW(ORB_LOG("%d", Failing()));
    OrbLogUtil::Release(true);
    EXPECT_NO_THROW(ORB_LOG("%d", Failing()));
}

TEST_F(LogLineTest, AMessageIsReleasedWhenItsArgumentsThrow)
{
    EXPECT_THROW(ORB_LOG("%d", Failing()), std::runtime_error);
    EXPECT_EQ(0, m_factory.center.manager.openMessages);
}

TEST_F(LogLineTest, AMessageIsReleasedWhenItsFillingThrows)
{
    m_factory.center.manager.throwsInAppend = true;
    EXPECT_NO_THROW(ORB_LOG("%d", 1));
    EXPECT_NO_THROW(ORB_LOG(L"%d", 1));
    EXPECT_EQ(0, m_factory.center.manager.openMessages);
}

TEST_F(LogLineTest, AnEmptyHolderTakesNothing)
{
    m_factory.center.manager.refusesMessages = true;
    Quenda::LogMessage empty("../x.cpp", 1);
    EXPECT_FALSE(empty);
    Quenda::LogWrapper::Fill(empty, "%d", 1);
    Quenda::LogWrapper::Fill(empty, L"%d", 1);
    EXPECT_EQ(Lines{}, Journal());
}
