#pragma once

#include "avcore/IZolConnection.h"
#include "avcore/IZolTMsg.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/IPaasTMsg.h"
#include "onlinemanager/SerializationOwner.h"
#include "onlinemanager/Service.h"

namespace onlinemanager
{

/// The end of the platform's channel of transparent messages. The service logs each message and hands it to the
/// serializer, which ignores it. This version keeps the listeners and never calls them, on purpose.
class PaasTMsgImp : public OwnedService<IPaasTMsg, IPaasTMsgNotify>,
                    public avcore::IZolTMsgListener,
                    private SerializationOwner
{
public:
    /// `connection` is the manager's field: every call uses the connection that the field holds at that time.
    explicit PaasTMsgImp(avcore::IZolConnection*& connection);

    bool InitModel(IComponentFactory* factory) override;
    bool UninitModel() override;

    virtual ~PaasTMsgImp() = default;

    void OnUserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override;
    void OnGroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override;

private:
    avcore::IZolConnection*& m_zol_connection;
    WBASELIB::WRelaxed<avcore::IZolTMsg*> m_zol_tmsg = nullptr;
};

} // namespace onlinemanager
