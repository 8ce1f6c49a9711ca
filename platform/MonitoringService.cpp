#include "platform/MonitoringService.h"

#include "platform/simulation/ServiceClient.h"
#include "platform/wire/Records.h"
#include "platform/wire/Topics.h"

#include <utility>

namespace platform
{

namespace
{

const char* KindName(ReportKind kind)
{
    switch (kind)
    {
    case ReportKind::Overview:
        return "overview";
    case ReportKind::Detail:
        return "detail";
    case ReportKind::All:
        return "all";
    }
    return "";
}

std::string MakeCommand(const char* command, ReportKind kind)
{
    return std::string(R"({"message":{"command":")") + command + R"(","data":{"subType":")" + KindName(kind) +
           R"("}}})";
}

} // namespace

class MonitoringService::Impl : public std::enable_shared_from_this<MonitoringService::Impl>
{
public:
    Impl(std::shared_ptr<Engine> engine, const std::string& appId, const std::string& companyId, OnReport onReport)
        : m_engine(std::move(engine)),
          m_topics(appId, companyId),
          m_onReport(std::move(onReport))
    {
    }

    void Start()
    {
        // A weak reference, because this object owns the client. A running call keeps the object alive, since the
        // callback may destroy the service.
        m_client = std::make_shared<ServiceClient>(*m_engine, "monitoring", std::vector{m_topics.AllReports()},
                                                   [weak = weak_from_this()](const BackplaneMessage& message)
                                                   {
                                                       if (const auto self = weak.lock())
                                                       {
                                                           self->Receive(message);
                                                       }
                                                   });
        m_client->Start();
    }

    void Stop()
    {
        m_client->Stop();
    }

    void SendCommand(const std::string& userId, const std::string& json)
    {
        PostRecord record;
        record.kind = PostRecord::Kind::Command;
        record.serial = m_engine->NewSerial();
        record.id = m_engine->NextId();
        record.text = json;
        m_client->Publish({m_topics.User(userId), record.Encode()});
    }

private:
    void Receive(const BackplaneMessage& message)
    {
        const std::vector<std::string_view> levels = topics::Split(m_topics.Inside(message.topic));
        const std::optional<PostRecord> record = PostRecord::Decode(message.payload);
        const bool isReport = levels.size() == 3 && record && record->kind == PostRecord::Kind::Report;
        if (isReport && m_serials.IsNew(record->serial) && m_onReport)
        {
            m_onReport(MonitoringReport{topics::Unescape(levels[1]), topics::Unescape(levels[2]), record->text});
        }
    }

    const std::shared_ptr<Engine> m_engine;
    const CompanyTopics m_topics;
    const OnReport m_onReport;
    SerialFilter m_serials; ///< only on the platform thread
    std::shared_ptr<ServiceClient> m_client;
};

MonitoringService::MonitoringService(Platform& platform, const std::string& appId, const std::string& companyId,
                                     OnReport onReport)
    : m_impl(std::make_shared<Impl>(platform.GetEngine(), appId, companyId, std::move(onReport)))
{
    m_impl->Start();
}

MonitoringService::~MonitoringService()
{
    m_impl->Stop();
}

void MonitoringService::Subscribe(const std::string& userId, ReportKind kind)
{
    SendCommand(userId, MakeCommand("subscribe_av_quality", kind));
}

void MonitoringService::Unsubscribe(const std::string& userId, ReportKind kind)
{
    SendCommand(userId, MakeCommand("unsubscribe_av_quality", kind));
}

void MonitoringService::SendCommand(const std::string& userId, const std::string& json)
{
    m_impl->SendCommand(userId, json);
}

} // namespace platform
