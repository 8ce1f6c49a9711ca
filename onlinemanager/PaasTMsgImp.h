#pragma once

#include "avcore/IZolConnection.h"
#include "avcore/IZolTMsg.h"
#include "common/wbaselib/wlock.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/IPaasTMsg.h"
#include "onlinemanager/ISerialization.h"
#include "onlinemanager/NotifyList.h"
#include "onlinemanager/ServiceUse.h"

#include <memory>

namespace onlinemanager
{

/// The end of the platform's channel of transparent messages: they are logged and handed to the serializer, which leaves them
/// alone. The listeners are kept for a later version and not called.
class PaasTMsgImp : public IPaasTMsg, public avcore::IZolTMsgListener
{
public:
    /// `connection` is the manager's field: what it holds at the time of a call is used.
    explicit PaasTMsgImp(avcore::IZolConnection*& connection);

    PaasTMsgImp(const PaasTMsgImp&) = delete;
    PaasTMsgImp& operator=(const PaasTMsgImp&) = delete;

    void AddNotify(IPaasTMsgNotify* notify) override;
    void RemoveNotify(IPaasTMsgNotify* notify) override;
    void RemoveAllNotify() override;
    bool InitModel(IComponentFactory* factory) override;
    bool UninitModel() override;

    virtual ~PaasTMsgImp();

    void OnUserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override;
    void OnGroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg) override;

    /// Gives the storage back without running the destructor, as the component tears all its services down.
    void Free();

    ServiceUse m_use;

private:
    bool CheckSerialization();

    NotifyList<IPaasTMsgNotify> m_notify_list;
    avcore::IZolConnection*& m_zol_connection;
    WBASELIB::WRelaxed<avcore::IZolTMsg*> m_zol_tmsg = nullptr;
    WBASELIB::WLock m_lock; ///< guards the making of the serializer
    std::shared_ptr<ISerialization> m_serialization;
};

} // namespace onlinemanager
