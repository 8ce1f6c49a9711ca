#include "checks/Stage.h"

#include <ctime>

namespace checks
{

namespace
{

using onlinemanager::AudioQualityData;
using onlinemanager::AVQualityInfo;
using onlinemanager::VideoQualityData;

const std::string kSend = "mds1.SendMdsData(";
const std::string kTimestamp = "\"timestamp\":";

std::shared_ptr<AVQualityInfo> SomeInfo()
{
    auto info = std::make_shared<AVQualityInfo>();
    info->avQualityLevel = 2;
    info->userId = 52011;
    info->roomId = 880012;
    info->groupId = "g1";
    info->appId = "a1";
    return info;
}

std::shared_ptr<AudioQualityData> Audio(const std::string& name)
{
    auto data = std::make_shared<AudioQualityData>();
    *data = {52011, name, "udp", "32", "0.0", "40", "3"};
    return data;
}

std::shared_ptr<VideoQualityData> Video(const std::string& name)
{
    auto data = std::make_shared<VideoQualityData>();
    *data = {52012, 1, name, "udp", "800", "1280x720", "25", "0.5", "42", "6"};
    return data;
}

std::string AudioJson(const std::string& name)
{
    return R"({"userId":52011,"userName":")" + name +
           R"(","protocol":"udp","bitrate":"32","pktlr":"0.0","rtt":"40","jitter":"3"})";
}

std::string VideoJson(const std::string& name)
{
    return R"({"userId":52012,"mediaId":1,"userName":")" + name +
           R"(","protocol":"udp","bitrate":"800","resolve":"1280x720","framerate":"25","pktlr":"0.5","rtt":"42",)"
           R"("jitter":"6"})";
}

const std::string kLabels = R"("labels":{"userId":52011,"roomId":880012,"groupId":"g1","appId":"a1"}}})";

std::string Overview(const std::string& level, const std::string& labels = kLabels)
{
    return R"({"msgType":1138,"msgSeq":0,"msgData":{"subType":"overview","data":{"name":"pc.avQuality.overview",)"
           R"("timestamp":T,"fields":{"avQualityLevel":)" +
           level + "}}," + labels;
}

std::string Detail(const std::string& streams, const std::string& labels = kLabels)
{
    return R"({"msgType":1138,"msgSeq":0,"msgData":{"subType":"detail","data":{"name":"pc.avQuality.detail",)"
           R"("timestamp":T)" +
           streams + "}," + labels;
}

/// One report as it was sent, without its time stamp.
struct Report
{
    std::string text; ///< the time stamp is a T
    int64_t timestamp = 0;
};

/// A stage whose monitoring service has subscribed to reports.
struct ReportStage : Stage
{
    ReportStage(CheckContext& context, const char* subType) : Stage(context)
    {
        mds = Mds();
        mds->InitMdsClient();
        const std::string message =
            R"({"message":{"command":"subscribe_av_quality","data":{"subType":")" + std::string(subType) + "\"}}}";
        Connection().mds.MsgData(message.c_str());
        journal.Clear();
    }

    std::vector<Report> Send(const std::shared_ptr<AVQualityInfo>& info)
    {
        check.ExpectEqual(true, mds->SendAVQualityInfo(info), "SendAVQualityInfo");
        std::vector<Report> reports;
        for (const JournalEntry& entry : journal.Take())
        {
            if (entry.text.starts_with(kSend))
            {
                reports.push_back(ReportOf(entry.text.substr(kSend.size(), entry.text.size() - kSend.size() - 1)));
            }
        }
        return reports;
    }

    void ExpectReport(const std::string& expected, const std::shared_ptr<AVQualityInfo>& info,
                      Where where = Where::Here())
    {
        const std::vector<Report> reports = Send(info);
        check.ExpectEqual(1U, reports.size(), "reports", where);
        for (const Report& report : reports)
        {
            check.ExpectEqual(expected, report.text, "report", where);
        }
    }

    onlinemanager::IPaasMdsClient* mds = nullptr;

private:
    static Report ReportOf(std::string text)
    {
        Report report;
        const size_t begin = text.find(kTimestamp) + kTimestamp.size();
        const size_t end = text.find_first_not_of("0123456789", begin);
        report.timestamp = std::stoll(text.substr(begin, end - begin));
        report.text = text.replace(begin, end - begin, "T");
        return report;
    }
};

} // namespace

CONTRACT_CHECK(QualityReports, TheOverviewCarriesTheLevelAndTheLabels,
               "It has type 1138, sequence 0, the data point with its fields, and the labels; it has no stream.")
{
    ReportStage stage(check, "overview");
    const auto info = SomeInfo();
    info->sendAudio = {Audio("Ann")};
    info->receiveVideo = {Video("Bo")};
    stage.ExpectReport(Overview("2"), info);
}

CONTRACT_CHECK(QualityReports, ALevelOfMinus1IsWrittenAs4294967295, "The level is an unsigned number.")
{
    ReportStage stage(check, "overview");
    const auto info = SomeInfo();
    info->avQualityLevel = -1;
    stage.ExpectReport(Overview("4294967295"), info);
    info->avQualityLevel = 2147483647;
    stage.ExpectReport(Overview("2147483647"), info);
}

CONTRACT_CHECK(QualityReports, TheLabelsAreUnsignedNumbersAndTextsAsTheyAre, "Also the largest ids and empty texts.")
{
    ReportStage stage(check, "overview");
    const auto info = SomeInfo();
    info->userId = 4294967295;
    info->roomId = 4294967295;
    info->groupId.clear();
    info->appId = "a\"1\\";
    stage.ExpectReport(
        Overview("2", R"("labels":{"userId":4294967295,"roomId":4294967295,"groupId":"","appId":"a\"1\\"}}})"), info);
}

CONTRACT_CHECK(QualityReports, TheDetailReportCarriesOneEntryPerStreamDirectlyInTheData,
               "Sent and received audio, then video, in the order of the lists; the level is not part of it.")
{
    ReportStage stage(check, "detail");
    const auto info = SomeInfo();
    info->sendAudio = {Audio("a"), Audio("b")};
    info->receiveAudio = {Audio("c")};
    info->sendVideo = {Video("d")};
    info->receiveVideo = {Video("e"), Video("f")};
    stage.ExpectReport(Detail(",\"sendAudio\":[" + AudioJson("a") + "," + AudioJson("b") + "],\"receiveAudio\":[" +
                              AudioJson("c") + "],\"sendVideo\":[" + VideoJson("d") + "],\"receiveVideo\":[" +
                              VideoJson("e") + "," + VideoJson("f") + "]"),
                       info);
}

CONTRACT_CHECK(QualityReports, AnEmptyListLeavesNoKey,
               "With one sent audio and one received video stream the report has two keys.")
{
    ReportStage stage(check, "detail");
    const auto info = SomeInfo();
    info->sendAudio = {Audio("Ann")};
    info->receiveVideo = {Video("Bo")};
    stage.ExpectReport(Detail(",\"sendAudio\":[" + AudioJson("Ann") + "],\"receiveVideo\":[" + VideoJson("Bo") + "]"),
                       info);
}

CONTRACT_CHECK(QualityReports, ARecordWithFourEmptyListsGivesADetailReportWithOnlyNameAndTimestamp,
               "This holds for its data; the labels are complete.")
{
    ReportStage stage(check, "detail");
    stage.ExpectReport(Detail(""), SomeInfo());
}

CONTRACT_CHECK(QualityReports, MeasuredValuesAreTextsAsTheHostWroteThem,
               "Also empty texts and texts that are not numbers.")
{
    ReportStage stage(check, "detail");
    const auto info = SomeInfo();
    info->sendAudio = {std::make_shared<AudioQualityData>()};
    info->sendVideo = {std::make_shared<VideoQualityData>()};
    info->sendVideo.front()->bitrate = "n/a";
    stage.ExpectReport(Detail(R"(,"sendAudio":[{"userId":0,"userName":"","protocol":"","bitrate":"","pktlr":"",)"
                              R"("rtt":"","jitter":""}],"sendVideo":[{"userId":0,"mediaId":0,"userName":"",)"
                              R"("protocol":"","bitrate":"n/a","resolve":"","framerate":"","pktlr":"","rtt":"",)"
                              R"("jitter":""}])"),
                       info);
}

CONTRACT_CHECK(QualityReports, NamesOutsideAsciiAppearAsEscapes, "This holds for the streams and for the labels.")
{
    ReportStage stage(check, "detail");
    const auto info = SomeInfo();
    info->groupId = "Größe";
    info->receiveAudio = {Audio("Zoë 𝄞")};
    stage.ExpectReport(
        Detail(",\"receiveAudio\":[" + AudioJson("Zo\\u00EB \\uD834\\uDD1E") + "]",
               R"("labels":{"userId":52011,"roomId":880012,"groupId":"Gr\u00F6\u00DFe","appId":"a1"}}})"),
        info);
}

CONTRACT_CHECK(QualityReports, TwoReportsInTheSameSecondCarryTheSameTimestampAndSequence0,
               "The time stamp is in whole seconds since 1970, and is taken for each report.")
{
    ReportStage stage(check, "all");
    const int64_t before = std::time(nullptr);
    std::vector<Report> reports = stage.Send(SomeInfo());
    const std::vector<Report> later = stage.Send(SomeInfo());
    const int64_t after = std::time(nullptr);
    reports.insert(reports.end(), later.begin(), later.end());
    check.Require(reports.size() == 4, "two reports each time");
    check.ExpectEqual(reports[0].text, reports[2].text, "the overviews but for the time");
    for (const Report& report : reports)
    {
        check.Expect(report.text.find("\"msgSeq\":0,") != std::string::npos, "the sequence is 0");
        check.Expect(report.timestamp >= before && report.timestamp <= after, "the time is that of the report");
        check.Expect(before != after || report.timestamp == reports[0].timestamp, "one second, one time stamp");
    }
}

CONTRACT_CHECK(QualityReports, FiftyStreamsAllArrive, "The report contains every stream.")
{
    ReportStage stage(check, "detail");
    const auto info = SomeInfo();
    std::string streams;
    for (int index = 0; index < 50; ++index)
    {
        info->receiveVideo.push_back(Video(std::to_string(index)));
        streams += (streams.empty() ? "" : ",") + VideoJson(std::to_string(index));
    }
    stage.ExpectReport(Detail(",\"receiveVideo\":[" + streams + "]"), info);
}

CONTRACT_CHECK(QualityReports, AMissingRecordSendsNothing, "The result is true, as with a record.")
{
    ReportStage stage(check, "all");
    check.ExpectEqual(0U, stage.Send(nullptr).size(), "reports");
}

} // namespace checks
