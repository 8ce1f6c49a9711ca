#pragma once

#include "avcore/IZolConnection.h"
#include "avcore/IZolMdsClient.h"
#include "common/wbaselib/wlock.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/IPaasMdsClient.h"
#include "onlinemanager/ISerialization.h"
#include "onlinemanager/NotifyList.h"
#include "onlinemanager/ServiceUse.h"

#include <memory>
#include <string>

namespace onlinemanager
{

/// Sends the reports that the monitoring service has subscribed to, and follows its commands. The platform's client is fetched
/// when it is first needed.
class PaasMdsClientImp : public IPaasMdsClient, public avcore::IZolMdsClientListener
{
public:
    static PaasMdsClientImp* Create(avcore::IZolConnection*& connection);

    /// `connection` is the manager's field: what it holds at the time of a call is used.
    explicit PaasMdsClientImp(avcore::IZolConnection*& connection);

    PaasMdsClientImp(const PaasMdsClientImp&) = delete;
    PaasMdsClientImp& operator=(const PaasMdsClientImp&) = delete;

    void AddNotify(IPaasMdsClientNotify* notify) override;
    void RemoveNotify(IPaasMdsClientNotify* notify) override;
    void RemoveAllNotify() override;
    bool InitModel(IComponentFactory* factory) override;
    bool UninitModel() override;
    bool InitMdsClient() override;
    bool SendAVQualityInfo(const std::shared_ptr<AVQualityInfo>& info) override;

    virtual ~PaasMdsClientImp();

    void OnMdsMsgData(const char* msg) override;

    /// Gives the storage back without running the destructor, as the component tears all its services down. An object that is
    /// registered with the platform stays: it is never unregistered, so a late command may still come.
    void Free();

    ServiceUse m_use;

private:
    bool CheckMdsClient();
    bool CheckSerialization();
    void Send(const std::string& report);
    void Subscribe(const std::string& subType, bool wanted);

    NotifyList<IPaasMdsClientNotify> m_notify_list;
    avcore::IZolConnection*& m_zol_connection;
    WBASELIB::WRelaxed<avcore::IZolMdsClient*> m_zol_mds_client = nullptr;
    WBASELIB::WLock m_lock; ///< guards the making of the serializer
    std::shared_ptr<ISerialization> m_serialization;
    WBASELIB::WRelaxed<bool> m_registered = false;
    WBASELIB::WRelaxed<bool> m_overview_subscribed = false;
    WBASELIB::WRelaxed<bool> m_detail_subscribed = false;
};

} // namespace onlinemanager
