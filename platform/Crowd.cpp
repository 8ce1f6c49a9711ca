#include "platform/Crowd.h"

#include "platform/simulation/ServiceClient.h"
#include "platform/wire/Records.h"
#include "platform/wire/Topics.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace platform
{

namespace
{

constexpr std::chrono::milliseconds kOpenLimit{5000};

/// The answer texts of the module.
constexpr const char* kAcceptMessage = R"({"version":"1.0","method":"AcceptInvite","params":{"terminal":"1"}})";
constexpr const char* kDeclineMessage =
    R"({"version":"1.0","method":"RejectInvite","params":{"terminal":"1","mode":17}})";

} // namespace

class Crowd::Impl : public std::enable_shared_from_this<Crowd::Impl>
{
public:
    Impl(std::shared_ptr<Engine> engine, const CrowdOptions& options)
        : m_engine(std::move(engine)),
          m_options(options),
          m_topics(options.appId, options.companyId),
          m_sessionId(m_engine->NewSessionId()),
          m_epochs(options.count, 0)
    {
    }

    void Start()
    {
        // A weak reference, because this object owns the client.
        m_client = std::make_shared<ServiceClient>(*m_engine, "crowd", std::vector{m_topics.AllUsers()},
                                                   [weak = weak_from_this()](const BackplaneMessage& message)
                                                   {
                                                       if (const auto self = weak.lock())
                                                       {
                                                           self->Receive(message);
                                                       }
                                                   });
        m_client->Start();
        if (!m_engine->GetLoop().IsCurrent())
        {
            m_client->WaitOpen(kOpenLimit);
        }
    }

    void Stop()
    {
        SetAll(false, {});
        m_client->Stop();
    }

    void SetAll(bool online, const Progress& progress)
    {
        const size_t step = std::max<size_t>(m_options.count / 100, 1);
        for (uint32_t i = 0; i < m_options.count; ++i)
        {
            {
                const std::lock_guard lock(m_mutex);
                online ? Enter(i) : Leave(i);
            }
            if (progress && (i + 1) % step == 0 && i + 1 != m_options.count)
            {
                progress(i + 1, m_options.count);
            }
        }
        if (progress)
        {
            progress(m_options.count, m_options.count);
        }
    }

    void SetOne(uint32_t userId, bool online)
    {
        const std::lock_guard lock(m_mutex);
        if (const auto index = IndexOf(userId))
        {
            online ? Enter(*index) : Leave(*index);
        }
    }

    void Vanish(uint32_t userId)
    {
        const std::lock_guard lock(m_mutex);
        if (const auto index = IndexOf(userId))
        {
            EndPresence(*index);
        }
    }

    bool AddTerminal(uint32_t userId, const std::string& deviceId, const std::string& ext)
    {
        const std::lock_guard lock(m_mutex);
        const auto index = IndexOf(userId);
        if (!index || m_epochs[*index] == 0 || deviceId == m_options.deviceId ||
            !m_extras[userId].terminals.emplace(deviceId, ext).second)
        {
            return false;
        }
        PublishPresence(userId, deviceId, MakeRecord(m_epochs[*index], ext, {}));
        return true;
    }

    bool RemoveTerminal(uint32_t userId, const std::string& deviceId)
    {
        const std::lock_guard lock(m_mutex);
        const auto extra = m_extras.find(userId);
        const auto index = IndexOf(userId);
        if (!index || extra == m_extras.end() || extra->second.terminals.erase(deviceId) == 0)
        {
            return false;
        }
        PublishPresence(userId, deviceId, MakeGone(m_epochs[*index]));
        return true;
    }

    void SetCustomInfo(uint32_t userId, const std::string& text)
    {
        const std::lock_guard lock(m_mutex);
        const auto index = IndexOf(userId);
        if (index && m_epochs[*index] != 0)
        {
            m_extras[userId].custom = text;
            PublishPresence(userId, m_options.deviceId, MakeRecord(m_epochs[*index], m_options.ext, text));
        }
    }

    void SetScript(const CrowdScript& script)
    {
        const std::lock_guard lock(m_mutex);
        m_script = script;
    }

    void SetScript(uint32_t userId, const CrowdScript& script)
    {
        const std::lock_guard lock(m_mutex);
        if (IndexOf(userId))
        {
            m_extras[userId].script = script;
        }
    }

    void JoinGroup(uint32_t userId, const std::string& groupId)
    {
        const std::lock_guard lock(m_mutex);
        JoinLocked(userId, groupId);
    }

    void LeaveGroup(uint32_t userId, const std::string& groupId)
    {
        const std::lock_guard lock(m_mutex);
        const auto extra = m_extras.find(userId);
        if (extra != m_extras.end() && extra->second.groups.erase(groupId) != 0)
        {
            PublishMember(userId, groupId, false);
        }
    }

    void SetOnInvited(std::function<void(const Invitation&)> callback)
    {
        const std::lock_guard lock(m_mutex);
        m_onInvited = std::move(callback);
    }

    void SetOnCanceled(std::function<void(const Invitation&)> callback)
    {
        const std::lock_guard lock(m_mutex);
        m_onCanceled = std::move(callback);
    }

    size_t CountOnline() const
    {
        const std::lock_guard lock(m_mutex);
        return m_online;
    }

private:
    /// State that only a few members have.
    struct Extra
    {
        std::optional<CrowdScript> script;
        std::map<std::string, std::string> terminals; ///< further ones: device and extension text
        std::set<std::string> groups;
        std::optional<std::string> custom;
    };

    struct InviteKey
    {
        uint32_t userId;
        std::string inviterId;
        uint32_t inviteId;

        // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy takes the 0 that is compared with for a pointer.
        auto operator<=>(const InviteKey&) const = default;
    };

    std::optional<uint32_t> IndexOf(uint32_t userId) const
    {
        const uint32_t index = userId - m_options.firstUserId;
        return userId >= m_options.firstUserId && index < m_options.count ? std::optional(index) : std::nullopt;
    }

    PresenceRecord MakeRecord(uint64_t epoch, const std::string& ext, const std::string& custom) const
    {
        PresenceRecord record;
        record.online = true;
        record.epoch = epoch;
        record.sessionId = m_sessionId;
        record.ext = ext;
        record.custom = custom;
        return record;
    }

    PresenceRecord MakeGone(uint64_t epoch) const
    {
        PresenceRecord record;
        record.epoch = epoch;
        record.sessionId = m_sessionId;
        return record;
    }

    void PublishPresence(uint32_t userId, const std::string& deviceId, const PresenceRecord& record)
    {
        const auto expiry = record.online ? std::chrono::seconds(0) : m_engine->GetOptions().goneRecordLife;
        m_client->Publish(
            BackplaneMessage{m_topics.Presence(std::to_string(userId), deviceId), record.Encode(), true, expiry});
    }

    void PublishMember(uint32_t userId, const std::string& groupId, bool present)
    {
        const std::string user = std::to_string(userId);
        MemberRecord record;
        record.present = present;
        record.epoch = m_epochs[*IndexOf(userId)];
        if (present)
        {
            record.presenceTopic = m_topics.Presence(user, m_options.deviceId);
        }
        const auto expiry = present ? std::chrono::seconds(0) : m_engine->GetOptions().goneRecordLife;
        m_client->Publish(
            BackplaneMessage{GroupTopics(groupId).Member(user, m_sessionId), record.Encode(), true, expiry});
    }

    void Enter(uint32_t index)
    {
        if (m_epochs[index] == 0)
        {
            m_epochs[index] = Engine::NextEpoch();
            ++m_online;
            PublishPresence(m_options.firstUserId + index, m_options.deviceId,
                            MakeRecord(m_epochs[index], m_options.ext, m_options.custom));
        }
    }

    void Leave(uint32_t index)
    {
        if (const auto extra = m_extras.find(m_options.firstUserId + index); extra != m_extras.end())
        {
            for (const std::string& groupId : std::exchange(extra->second.groups, {}))
            {
                PublishMember(extra->first, groupId, false);
            }
        }
        EndPresence(index);
    }

    void EndPresence(uint32_t index)
    {
        const uint64_t epoch = std::exchange(m_epochs[index], 0);
        if (epoch == 0)
        {
            return;
        }
        --m_online;
        const uint32_t userId = m_options.firstUserId + index;
        PublishPresence(userId, m_options.deviceId, MakeGone(epoch));
        if (const auto extra = m_extras.find(userId); extra != m_extras.end())
        {
            for (const auto& [deviceId, ext] : std::exchange(extra->second.terminals, {}))
            {
                PublishPresence(userId, deviceId, MakeGone(epoch));
            }
            extra->second.groups.clear();
            extra->second.custom.reset();
        }
    }

    void JoinLocked(uint32_t userId, const std::string& groupId)
    {
        const auto index = IndexOf(userId);
        if (index && m_epochs[*index] != 0 && m_extras[userId].groups.insert(groupId).second)
        {
            PublishMember(userId, groupId, true);
        }
    }

    /// [platform]
    void Receive(const BackplaneMessage& message)
    {
        const std::vector<std::string_view> levels = topics::Split(m_topics.Inside(message.topic));
        const std::optional<uint32_t> userId = levels.size() == 2 ? ReadUserId(levels[1]) : std::nullopt;
        if (!userId)
        {
            return;
        }
        const std::optional<PostRecord> record = PostRecord::Decode(message.payload);
        if (!record || !m_serials.IsNew(record->serial))
        {
            return;
        }
        switch (record->kind)
        {
        case PostRecord::Kind::Invite:
            OnInvite(*userId, *record);
            break;
        case PostRecord::Kind::Cancel:
            OnCancel(*userId, *record);
            break;
        case PostRecord::Kind::Answered:
            if (record->fromSession != m_sessionId)
            {
                const std::lock_guard lock(m_mutex);
                m_open.erase(InviteKey{*userId, record->from, record->id});
            }
            break;
        default:
            break;
        }
    }

    /// The index of an online member.
    std::optional<uint32_t> ReadUserId(std::string_view level) const
    {
        uint64_t number = 0;
        for (const char digit : level)
        {
            if (digit < '0' || digit > '9' || number > UINT32_MAX)
            {
                return std::nullopt;
            }
            number = number * 10 + static_cast<uint64_t>(digit - '0');
        }
        if (level.empty() || number > UINT32_MAX || std::to_string(number) != level)
        {
            return std::nullopt;
        }
        const auto userId = static_cast<uint32_t>(number);
        const std::lock_guard lock(m_mutex);
        const auto index = IndexOf(userId);
        return index && m_epochs[*index] != 0 ? std::optional(userId) : std::nullopt;
    }

    void OnInvite(uint32_t userId, const PostRecord& record)
    {
        std::function<void(const Invitation&)> onInvited;
        CrowdScript script;
        {
            const std::lock_guard lock(m_mutex);
            if (!m_open.insert(InviteKey{userId, record.from, record.id}).second)
            {
                return;
            }
            onInvited = m_onInvited;
            const auto extra = m_extras.find(userId);
            script = extra != m_extras.end() && extra->second.script ? *extra->second.script : m_script;
        }
        if (onInvited)
        {
            onInvited(Invitation{userId, record.from, record.id, record.code, record.text});
        }
        if (script.answer == CrowdScript::Answer::Ignore)
        {
            return;
        }
        m_engine->GetLoop().PostAt(EventLoop::Clock::now() + script.after,
                                   script.after.count() == 0 ? EventLoop::Kind::Work : EventLoop::Kind::Timer,
                                   [weak = weak_from_this(), userId, record, script]
                                   {
                                       if (const auto self = weak.lock())
                                       {
                                           self->Answer(userId, record, script);
                                       }
                                   });
    }

    void Answer(uint32_t userId, const PostRecord& invitation, const CrowdScript& script)
    {
        const bool accept = script.answer == CrowdScript::Answer::Accept;
        const std::lock_guard lock(m_mutex);
        const InviteKey key{userId, invitation.from, invitation.id};
        const bool isOnline = m_epochs[*IndexOf(userId)] != 0;
        if (!isOnline || !m_open.contains(key))
        {
            return;
        }
        if (!accept)
        {
            m_open.erase(key);
        }
        PostRecord answer;
        answer.kind = accept ? PostRecord::Kind::Accept : PostRecord::Kind::Decline;
        answer.text = !script.message.empty() ? script.message : accept ? kAcceptMessage : kDeclineMessage;
        answer.from = std::to_string(userId);
        answer.id = invitation.id;
        Send(invitation.replyTopic, answer);

        PostRecord notice;
        notice.kind = PostRecord::Kind::Answered;
        notice.from = invitation.from;
        notice.id = invitation.id;
        Send(m_topics.User(std::to_string(userId)), notice);

        if (accept && !script.joinGroupId.empty())
        {
            JoinLocked(userId, script.joinGroupId);
        }
    }

    void OnCancel(uint32_t userId, const PostRecord& record)
    {
        std::function<void(const Invitation&)> onCanceled;
        {
            const std::lock_guard lock(m_mutex);
            if (m_open.erase(InviteKey{userId, record.from, record.id}) == 0)
            {
                return;
            }
            onCanceled = m_onCanceled;
        }
        if (onCanceled)
        {
            onCanceled(Invitation{userId, record.from, record.id, {}, {}});
        }
    }

    void Send(const std::string& topic, PostRecord& record)
    {
        record.serial = m_engine->NewSerial();
        record.fromSession = m_sessionId;
        m_client->Publish(BackplaneMessage{topic, record.Encode()});
    }

    const std::shared_ptr<Engine> m_engine;
    const CrowdOptions m_options;
    const CompanyTopics m_topics;
    const std::string m_sessionId;
    std::shared_ptr<ServiceClient> m_client;
    SerialFilter m_serials; ///< only on the platform thread

    mutable std::mutex m_mutex;
    std::vector<uint64_t> m_epochs; ///< by member; 0 = offline
    size_t m_online = 0;
    std::unordered_map<uint32_t, Extra> m_extras; ///< by user id
    CrowdScript m_script;
    std::set<InviteKey> m_open; ///< invitations that can still be answered or withdrawn
    std::function<void(const Invitation&)> m_onInvited;
    std::function<void(const Invitation&)> m_onCanceled;
};

Crowd::Crowd(Platform& platform, const CrowdOptions& options)
    : m_impl(std::make_shared<Impl>(platform.GetEngine(), options))
{
    m_impl->Start();
}

Crowd::~Crowd()
{
    m_impl->Stop();
}

void Crowd::ComeOnline(const Progress& progress)
{
    m_impl->SetAll(true, progress);
}

void Crowd::ComeOnline(uint32_t userId)
{
    m_impl->SetOne(userId, true);
}

void Crowd::GoOffline(const Progress& progress)
{
    m_impl->SetAll(false, progress);
}

void Crowd::GoOffline(uint32_t userId)
{
    m_impl->SetOne(userId, false);
}

void Crowd::Vanish(uint32_t userId)
{
    m_impl->Vanish(userId);
}

bool Crowd::AddTerminal(uint32_t userId, const std::string& deviceId, const std::string& ext)
{
    return m_impl->AddTerminal(userId, deviceId, ext);
}

bool Crowd::RemoveTerminal(uint32_t userId, const std::string& deviceId)
{
    return m_impl->RemoveTerminal(userId, deviceId);
}

void Crowd::SetCustomInfo(uint32_t userId, const std::string& text)
{
    m_impl->SetCustomInfo(userId, text);
}

void Crowd::SetScript(const CrowdScript& script)
{
    m_impl->SetScript(script);
}

void Crowd::SetScript(uint32_t userId, const CrowdScript& script)
{
    m_impl->SetScript(userId, script);
}

void Crowd::JoinGroup(uint32_t userId, const std::string& groupId)
{
    m_impl->JoinGroup(userId, groupId);
}

void Crowd::LeaveGroup(uint32_t userId, const std::string& groupId)
{
    m_impl->LeaveGroup(userId, groupId);
}

void Crowd::SetOnInvited(std::function<void(const Invitation&)> callback)
{
    m_impl->SetOnInvited(std::move(callback));
}

void Crowd::SetOnCanceled(std::function<void(const Invitation&)> callback)
{
    m_impl->SetOnCanceled(std::move(callback));
}

size_t Crowd::CountOnline() const
{
    return m_impl->CountOnline();
}

} // namespace platform
