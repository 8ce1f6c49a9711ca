#include "platform/Platform.h"

#include "platform/engine/Engine.h"
#include "platform/session/Connection.h"
#include "platform/simulation/ServiceClient.h"
#include "platform/wire/Topics.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace platform
{

Platform::Platform(const PlatformOptions& options)
    : m_engine(std::make_shared<Engine>(options)),
      m_faults(std::make_unique<Faults>(*m_engine))
{
}

Platform::~Platform()
{
    m_engine->Stop();
}

Platform& Platform::Default()
{
    static Platform platform;
    return platform;
}

HRESULT Platform::CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out)
{
    if (out == nullptr)
    {
        return E_POINTER;
    }
    *out = nullptr;
    if (outer != nullptr)
    {
        return kNoAggregation;
    }
    if (!(clsid == avcore::CLSID_ZolConnection))
    {
        return kClassNotAvailable;
    }
    auto* connection = new Connection(m_engine);
    const HRESULT result = connection->QueryInterface(iid, out);
    connection->Release();
    return result;
}

void Platform::SetOptions(const PlatformOptions& options)
{
    m_engine->SetOptions(options);
}

PlatformOptions Platform::GetOptions() const
{
    return m_engine->GetOptions();
}

Faults& Platform::GetFaults()
{
    return *m_faults;
}

void Platform::SetDiagnostic(Diagnostic diagnostic)
{
    m_engine->SetDiagnostic(std::move(diagnostic));
}

uint32_t Platform::SendUserMessage(const std::string& appId, const std::string& companyId,
                                   const std::string& fromUserId, const std::string& toUserId, const std::string& text)
{
    PostRecord record;
    record.kind = PostRecord::Kind::Message;
    record.serial = m_engine->NewSerial();
    record.from = fromUserId;
    record.id = m_engine->NextId();
    record.text = text;
    m_engine->GetSender().Publish({CompanyTopics(appId, companyId).User(toUserId), record.Encode()});
    return record.id;
}

uint32_t Platform::SendGroupMessage(const std::string& groupId, const std::string& fromUserId, const std::string& text)
{
    PostRecord record;
    record.kind = PostRecord::Kind::Message;
    record.serial = m_engine->NewSerial();
    record.from = fromUserId;
    record.id = m_engine->NextId();
    record.text = text;
    m_engine->GetSender().Publish({GroupTopics(groupId).Messages(), record.Encode()});
    return record.id;
}

std::string Platform::MeetingGroupId(const GUID& meeting)
{
    std::array<char, 37> text{};
    std::snprintf(text.data(), text.size(), "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", meeting.Data1,
                  meeting.Data2, meeting.Data3, meeting.Data4[0], meeting.Data4[1], meeting.Data4[2], meeting.Data4[3],
                  meeting.Data4[4], meeting.Data4[5], meeting.Data4[6], meeting.Data4[7]);
    return text.data();
}

std::vector<SessionInfo> Platform::Sessions() const
{
    std::vector<std::pair<uint64_t, SessionInfo>> ordered;
    for (const auto& session : m_engine->GetSessions())
    {
        if (auto info = session->GetInfo())
        {
            ordered.emplace_back(session->GetBegin(), std::move(*info));
        }
    }
    std::sort(ordered.begin(), ordered.end(),
              [](const auto& left, const auto& right) { return left.first < right.first; });
    std::vector<SessionInfo> infos;
    for (auto& [begin, info] : ordered)
    {
        infos.push_back(std::move(info));
    }
    return infos;
}

void Platform::Settle()
{
    m_engine->GetLoop().WaitIdle();
}

bool Platform::SettleFor(std::chrono::milliseconds limit)
{
    return m_engine->GetLoop().WaitIdleFor(limit);
}

const std::shared_ptr<Engine>& Platform::GetEngine() const
{
    return m_engine;
}

} // namespace platform
