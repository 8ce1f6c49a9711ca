#include "onlinemanager/PaasTMsgImp.h"

#include "commonutil/OrbLogUtil.h"
#include "commonutil/StringUtil.h"

namespace onlinemanager
{

using commonutil::TextOrEmpty;

PaasTMsgImp::PaasTMsgImp(avcore::IZolConnection*& connection) : m_zol_connection(connection)
{
    ORB_LOG("%s()", "PaasTMsgImp");
}

bool PaasTMsgImp::InitModel(IComponentFactory* /*factory*/)
{
    ORB_LOG("%s()", "InitModel");
    if (m_zol_connection == nullptr)
    {
        ORB_LOG("PaasTMsgImp::InitModel Failed, m_zol_connection = nullptr.");
        return false;
    }
    if (m_zol_tmsg != nullptr)
    {
        return true;
    }
    void* component = nullptr;
    if (m_zol_connection->GetComponent(avcore::IID_IZolTMsg, &component) < 0 || component == nullptr)
    {
        ORB_LOG("PaasTMsgImp::InitModel Get Zol TMsg Component Fail.");
        return false;
    }
    m_zol_tmsg = static_cast<avcore::IZolTMsg*>(component);
    m_zol_tmsg->AddListener(this);
    return true;
}

bool PaasTMsgImp::UninitModel()
{
    if (avcore::IZolTMsg* const component = m_zol_tmsg)
    {
        component->RemoveListener(this);
        m_zol_tmsg = nullptr;
    }
    return true;
}

// The id is printed as a signed number, on purpose: log filters look for -1 where the id is 4294967295.
void PaasTMsgImp::OnUserMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg)
{
    ORB_LOG("PaasTMsgImp::OnUserMsgIncome srcUserId:%s msgId:%d msg:%s.", TextOrEmpty(srcUserId),
            static_cast<int>(msgId), TextOrEmpty(msg));
    if (CheckSerialization())
    {
        m_serialization->ParseTMsgInfo(TextOrEmpty(msg));
    }
}

void PaasTMsgImp::OnGroupMsgIncome(const char* srcUserId, unsigned int msgId, const char* msg)
{
    ORB_LOG("PaasTMsgImp::OnGroupMsgIncome srcUserId:%s msgId:%d msg:%s.", TextOrEmpty(srcUserId),
            static_cast<int>(msgId), TextOrEmpty(msg));
    if (CheckSerialization())
    {
        m_serialization->ParseTMsgInfo(TextOrEmpty(msg));
    }
}

} // namespace onlinemanager
