#include "platform/Faults.h"

#include "platform/engine/Engine.h"
#include "platform/session/Session.h"

namespace platform
{

Faults::Faults(Engine& engine) : m_engine(engine) {}

void Faults::RefuseLogins(avcore::ZolPortErrCode code, const std::string& userId)
{
    m_engine.RefuseLogins(userId, code);
}

void Faults::AcceptLogins(const std::string& userId)
{
    m_engine.RefuseLogins(userId, std::nullopt);
}

void Faults::RefuseToken(const std::string& token)
{
    m_engine.RefuseToken(token, true);
}

void Faults::AcceptToken(const std::string& token)
{
    m_engine.RefuseToken(token, false);
}

size_t Faults::DropConnections(const std::string& userId, const std::string& deviceId, Outage outage)
{
    size_t dropped = 0;
    for (const auto& session : m_engine.GetSessions())
    {
        const std::optional<SessionInfo> info = session->GetInfo();
        if (info && info->userId == userId && (deviceId.empty() || info->deviceId == deviceId) &&
            DropClient(info->clientId, outage))
        {
            ++dropped;
        }
    }
    return dropped;
}

bool Faults::DropClient(const std::string& clientId, Outage outage)
{
    return m_engine.GetBackplane().Drop(clientId, outage.time);
}

void Faults::EndOutages()
{
    m_engine.GetBackplane().EndOutages();
}

void Faults::SetUnreachable(const std::string& connectionPoint, bool unreachable)
{
    m_engine.SetUnreachable(connectionPoint, unreachable);
}

void Faults::DelayDeliveries(std::chrono::milliseconds time)
{
    m_engine.GetBackplane().SetDelay(time);
}

void Faults::DelayWills(std::chrono::milliseconds time)
{
    m_engine.GetBackplane().SetWillDelay(time);
}

void Faults::DuplicateDeliveries(bool duplicate)
{
    m_engine.GetBackplane().SetDuplicate(duplicate);
}

void Faults::Clear()
{
    m_engine.ForgetRefusals();
    EndOutages();
    DelayDeliveries(std::chrono::milliseconds(0));
    DelayWills(std::chrono::milliseconds(0));
    DuplicateDeliveries(false);
}

} // namespace platform
