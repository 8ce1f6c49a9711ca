#include "onlinemanager/PaasMdsClientImp.h"

#include "commonutil/OrbLogUtil.h"
#include "commonutil/StringUtil.h"

namespace onlinemanager
{

PaasMdsClientImp* PaasMdsClientImp::Create(avcore::IZolConnection*& connection)
{
    return new PaasMdsClientImp(connection);
}

PaasMdsClientImp::PaasMdsClientImp(avcore::IZolConnection*& connection) : m_zol_connection(connection)
{
    ORB_LOG("%s()", "PaasMdsClientImp");
}

void PaasMdsClientImp::Free()
{
    if (!m_registered)
    {
        OwnedService::Free();
    }
}

bool PaasMdsClientImp::InitModel(IComponentFactory* /*factory*/)
{
    ORB_LOG("%s()", "InitModel");
    if (m_zol_connection == nullptr)
    {
        ORB_LOG("PaasMdsClientImp::InitModel Failed, m_zol_connection = nullptr.");
        return false;
    }
    return true;
}

bool PaasMdsClientImp::UninitModel()
{
    m_zol_mds_client = nullptr;
    return true;
}

bool PaasMdsClientImp::CheckMdsClient()
{
    if (m_zol_mds_client != nullptr)
    {
        return true;
    }
    if (m_zol_connection == nullptr)
    {
        return false;
    }
    void* component = nullptr;
    if (m_zol_connection->GetComponent(avcore::IID_IZolMdsClient, &component) < 0 || component == nullptr)
    {
        // The text names the usual caller instead of this operation, on purpose: log filters look for it.
        ORB_LOG("PaasMdsClientImp::SendAVQualityInfo Get ZolMdsClient Component Fail.");
        return false;
    }
    m_registered = true;
    m_zol_mds_client = static_cast<avcore::IZolMdsClient*>(component);
    m_zol_mds_client->AddListener(this);
    return true;
}

bool PaasMdsClientImp::InitMdsClient()
{
    m_zol_mds_client = nullptr;
    CheckMdsClient();
    return true;
}

bool PaasMdsClientImp::SendAVQualityInfo(const std::shared_ptr<AVQualityInfo>& info)
{
    if (!CheckMdsClient() || !CheckSerialization())
    {
        return false;
    }
    if (m_overview_subscribed && info != nullptr)
    {
        Send(m_serialization->FormatAvQualityOverview(info));
    }
    if (m_detail_subscribed && info != nullptr)
    {
        Send(m_serialization->FormatAvQualityDetail(info));
    }
    return true;
}

void PaasMdsClientImp::Send(const std::string& report)
{
    avcore::IZolMdsClient* const client = m_zol_mds_client;
    if (client != nullptr && client->SendMdsData(report.c_str()) < 0)
    {
        ORB_LOG("PaasMdsClientImp::SendAVQualityInfo SendMdsData Fail.msg=%s.", report.c_str());
    }
}

void PaasMdsClientImp::OnMdsMsgData(const char* msg)
{
    const ServiceRef self(this);
    // The text names the other class, on purpose: log filters look for it.
    ORB_LOG("PaasTMsgImp::OnMdsMsgData msg:%s.", commonutil::TextOrEmpty(msg));
    if (!CheckSerialization())
    {
        return;
    }
    std::string command;
    std::string subType;
    m_serialization->ParseMdsClientInfo(commonutil::TextOrEmpty(msg), command, subType);
    // A command that changes nothing is reported too: a host that missed one command learns the state from the next.
    if (command == "subscribe_av_quality")
    {
        Subscribe(subType, true);
        if (m_overview_subscribed || m_detail_subscribed)
        {
            Broadcast(&IPaasMdsClientNotify::OnSubscribeAVQualityInfo);
        }
    }
    else if (command == "unsubscribe_av_quality")
    {
        Subscribe(subType, false);
        if (!m_overview_subscribed && !m_detail_subscribed)
        {
            Broadcast(&IPaasMdsClientNotify::OnUnSubscribeAVQualityInfo);
        }
    }
}

void PaasMdsClientImp::Subscribe(const std::string& subType, bool wanted)
{
    const bool all = subType == "all";
    if (all || subType == "overview")
    {
        m_overview_subscribed = wanted;
    }
    if (all || subType == "detail")
    {
        m_detail_subscribed = wanted;
    }
}

} // namespace onlinemanager
