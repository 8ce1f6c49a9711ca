#pragma once

#include "checks/RecordingHost.h"
#include "checks/RecordingPlatform.h"
#include "commonutil/OrbLogUtil.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// A test whose host and platform record their calls in a journal. The module's logger is open.
class RecordedTest : public testing::Test
{
protected:
    void SetUp() override
    {
        checks::NameThread("host");
        commonutil::OrbLogUtil::Init(&m_factory, "OnlineManager", 1);
        m_journal.Clear();
    }

    void TearDown() override
    {
        m_factory.center.isGoneAfterRelease = true;
        commonutil::OrbLogUtil::Release(true);
    }

    /// The lines of the journal since the last call.
    std::vector<std::string> Journal()
    {
        std::vector<std::string> lines;
        for (const checks::JournalEntry& entry : m_journal.Take())
        {
            lines.push_back(entry.text);
        }
        return lines;
    }

    checks::Journal m_journal;
    checks::RecordingPlatform m_platform{m_journal};
    checks::RecordingFactory m_factory{m_journal, m_platform};
    checks::RecordingHttp m_http{m_journal};
};

using Lines = std::vector<std::string>;
