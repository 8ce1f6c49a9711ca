#pragma once

#include "avcore/IZolConnection.h"
#include "avcore/IZolMdsClient.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/IPaasMdsClient.h"
#include "onlinemanager/SerializationOwner.h"
#include "onlinemanager/Service.h"

#include <memory>
#include <string>

namespace onlinemanager
{

/// Sends the reports to which the monitoring service has subscribed, and obeys that service's commands. The first call
/// that needs the platform's client fetches it.
class PaasMdsClientImp : public OwnedService<IPaasMdsClient, IPaasMdsClientNotify>,
                         public avcore::IZolMdsClientListener,
                         private SerializationOwner
{
public:
    static PaasMdsClientImp* Create(avcore::IZolConnection*& connection);

    /// `connection` is the manager's field: every call uses the connection that the field holds at that time.
    explicit PaasMdsClientImp(avcore::IZolConnection*& connection);

    bool InitModel(IComponentFactory* factory) override;
    bool UninitModel() override;
    bool InitMdsClient() override;
    bool SendAVQualityInfo(const std::shared_ptr<AVQualityInfo>& info) override;

    virtual ~PaasMdsClientImp() = default;

    void OnMdsMsgData(const char* msg) override;

    /// Keeps the storage of an object that is registered with the platform: nothing unregisters it, on purpose, so a
    /// command may still arrive.
    void Free();

private:
    bool CheckMdsClient();
    void Send(const std::string& report);
    void Subscribe(const std::string& subType, bool wanted);

    avcore::IZolConnection*& m_zol_connection;
    WBASELIB::WRelaxed<avcore::IZolMdsClient*> m_zol_mds_client = nullptr;
    WBASELIB::WRelaxed<bool> m_registered = false;
    WBASELIB::WRelaxed<bool> m_overview_subscribed = false;
    WBASELIB::WRelaxed<bool> m_detail_subscribed = false;
};

} // namespace onlinemanager
