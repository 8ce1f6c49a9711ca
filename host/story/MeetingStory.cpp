#include "host/story/MeetingStory.h"

#include "avcore/ZolTypes.h"
#include "host/console/Interruption.h"
#include "host/console/ProgressBar.h"
#include "host/story/Actor.h"
#include "host/trace/RecordComponent.h"
#include "host/trace/Trace.h"
#include "onlinehost/EventQueue.h"
#include "onlinehost/LogCenter.h"
#include "onlinehost/LogWatch.h"
#include "onlinehost/Module.h"
#include "onlinehost/Text.h"
#include "platform/Crowd.h"
#include "platform/MonitoringService.h"
#include "platform/Platform.h"

#include <algorithm>
#include <dlfcn.h>
#include <map>
#include <numeric>

namespace host
{

using namespace onlinehost;
using namespace onlinemanager;
using std::chrono::milliseconds;

namespace
{

#ifdef __SANITIZE_ADDRESS__
// Linked with `-z nodelete`, because a leak report cannot name functions of an unloaded module.
constexpr bool kModuleStays = true;
#else
constexpr bool kModuleStays = false;
#endif

constexpr char kAppId[] = "onlinehost-demo";
constexpr uint32_t kCompanyId = 7;
constexpr char kServer[] = "tcp:in-process";
constexpr GUID kMeeting{0x6D656574, 0x696E, 0x672E, {0x6F, 0x6E, 0x6C, 0x69, 0x6E, 0x65, 0x2E, 0x31}};
constexpr uint32_t kMeetingId = 4711;

constexpr unsigned kAnna = 1;
constexpr unsigned kBen = 2;
constexpr unsigned kCarla = 3;

/// The simulated colleagues.
constexpr uint32_t kFirstMember = 1001;
constexpr uint32_t kMembersInvited = 43; // with Ben and Carla 45
constexpr uint32_t kMembersThatAccept = 29;
constexpr uint32_t kOfflineMember = kFirstMember + 2;

/// The time that each user of the company adds to the time limit of a step.
constexpr std::chrono::microseconds kExtraTime{200};

/// These numbers are the host's choice.
enum Terminal : uint32_t
{
    TERMINAL_DESKTOP = 1,
    TERMINAL_LAPTOP = 2,
    TERMINAL_TABLET = 3,
    TERMINAL_PHONE = 4,
};

std::string TerminalName(uint32_t type)
{
    switch (type)
    {
    case TERMINAL_DESKTOP:
        return "desktop";
    case TERMINAL_LAPTOP:
        return "laptop";
    case TERMINAL_TABLET:
        return "tablet";
    case TERMINAL_PHONE:
        return "phone";
    default:
        return "terminal of type " + std::to_string(type);
    }
}

/// The extension text that shows other users the type of a terminal.
std::string ExtensionText(Terminal type)
{
    return R"({"tt":)" + std::to_string(type) + "}";
}

bool IsOnline(const UserOnlineInfo& info)
{
    return info.online_status == 1;
}

/// "laptop", "desktop and phone"
std::string TerminalsOf(const UserOnlineInfo& info)
{
    std::string text;
    for (const UserTerminalInfo& terminal : info.terminals)
    {
        if (terminal.status == 1)
        {
            text += (text.empty() ? "" : " and ") + TerminalName(terminal.terminal_type);
        }
    }
    return text;
}

class MeetingStory
{
public:
    MeetingStory(StoryWorld world, const MeetingOptions& options)
        : m_world(std::move(world)),
          m_options(options),
          m_story(m_world.narrator, m_world.interruption),
          m_limit(options.limit + std::chrono::duration_cast<milliseconds>(options.users * kExtraTime)),
          m_members(options.users)
    {
        std::iota(m_members.begin(), m_members.end(), kFirstMember);
    }

    Story::Tally Tell()
    {
        Scene("Two users, and a second device", [this] { SecondDevice(); });
        Scene("A company of " + GroupDigits(m_options.users) + " comes online", [this] { Company(); });
        Scene("An invitation to 45 colleagues", [this] { Invitation(); });
        Scene("A connection drops and comes back", [this] { LostConnection(); });
        Scene("The monitoring service asks for reports", [this] { Monitoring(); });
        Scene("A message arrives", [this] { Messages(); });
        Scene("The first user leaves the meeting", [this] { FirstLeaves(); });
        Scene("One user comes in through the gateway", [this] { Gateway(); });
        Scene("All users log out", [this] { End(); });
        // A scene that ended early may have left actors behind.
        m_anna.reset();
        m_ben.reset();
        m_carla.reset();
        Scene("The module is unloaded", [this] { Unload(); });
        return m_story.GetTally();
    }

private:
    /// A scene of the story is a chapter of the recording.
    void Scene(const std::string& title, const std::function<void()>& play)
    {
        m_story.Scene(title,
                      [&]
                      {
                          if (m_world.trace != nullptr)
                          {
                              m_world.trace->Chapter(title);
                          }
                          play();
                      });
    }

    std::unique_ptr<Actor> Enter(const std::string& name, unsigned userId, Terminal terminal)
    {
        LoginParam login;
        login.userid = userId;
        login.companyid = kCompanyId;
        login.mutex = "one-device-at-a-time";
        login.terminal = static_cast<quenda::TerminalType>(terminal);
        login.deviceid = name;
        login.appid = kAppId;
        login.token = "token-of-" + std::to_string(userId);
        login.server = kServer;
        auto session = std::make_unique<Component>(m_world.module, m_world.factory, HttpClient::Options{},
                                                   RecordComponent(m_world.trace, name));
        return std::make_unique<Actor>(m_story, name, std::move(session), std::move(login), m_limit,
                                       m_world.interruption);
    }

    /// Returns the actor. A step fails when the scene that creates the actor has failed.
    Actor& Need(const std::unique_ptr<Actor>& actor, const std::string& who)
    {
        if (actor == nullptr)
        {
            m_story.Missed(who, "is logged in", "its login has failed");
        }
        return *actor;
    }
    Actor& Anna()
    {
        return Need(m_anna, "anna-desktop");
    }
    Actor& Ben()
    {
        return Need(m_ben, "ben-laptop");
    }
    Actor& Carla()
    {
        return Need(m_carla, "carla-phone");
    }

    void SecondDevice()
    {
        const std::unique_ptr<Actor> anna = Enter("anna-desktop", kAnna, TERMINAL_DESKTOP);
        const std::unique_ptr<Actor> laptop = Enter("ben-laptop", kBen, TERMINAL_LAPTOP);
        const std::unique_ptr<Actor> tablet = Enter("ben-tablet", kBen, TERMINAL_TABLET);
        const std::string state = "in the office";

        anna->LogsIn();
        laptop->LogsIn();
        laptop->Does("publishes \"" + state + "\"");
        laptop->Has(laptop->Online().Users().SetSelfCustomInfo(state), "the module publishes it", "it refuses");
        SeesUser(*anna, kBen, "user 2 on a laptop, \"" + state + "\"",
                 [&](const UserOnlineInfo& info)
                 { return TerminalsOf(info) == "laptop" && info.terminals.front().custom == state; });

        tablet->StartsLogin(false);
        tablet->Gets("could not log in: 36", {EventKind::LoginSuccess, EventKind::Offline},
                     [](const Event& event)
                     { return event.kind == EventKind::Offline && event.code == avcore::ZOL_PORT_LOGIN_CONFLICT; });
        tablet->Reads(CONNECT_PROPERTY_CONFLICT_DEVICE_ID, "the other device's id", "ben-laptop");
        tablet->Reads(CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE, "its custom state", state);

        tablet->LogsIn(true);
        laptop->Gets("went offline: 50002", {EventKind::Offline},
                     [](const Event& event) { return event.code == ERR_LOGIN_CONFLICT; });
        tablet->Reads(CONNECT_PROPERTY_ONLINE, "whether it is online", "true");
        laptop->Reads(CONNECT_PROPERTY_ONLINE, "whether it is online", "false");

        tablet->LogsOut();
        anna->LogsOut();
        for (const auto* actor : {&anna, &laptop, &tablet})
        {
            (*actor)->HasNothingLeft();
        }
    }

    void Company()
    {
        platform::CrowdOptions crowd;
        crowd.appId = kAppId;
        crowd.companyId = std::to_string(kCompanyId);
        crowd.firstUserId = kFirstMember;
        crowd.count = m_options.users;
        crowd.deviceId = "desktop";
        crowd.ext = ExtensionText(TERMINAL_DESKTOP);
        m_crowd = std::make_unique<platform::Crowd>(m_world.platform, crowd);
        {
            ProgressBar progress(m_world.narrator.Out(), "coming online");
            m_crowd->ComeOnline([&](size_t done, size_t total) { ShowProgress(progress, done, total); });
        }
        m_crowd->AddTerminal(kFirstMember, "phone", ExtensionText(TERMINAL_PHONE));
        m_crowd->AddTerminal(kFirstMember + 1, "tablet", ExtensionText(TERMINAL_TABLET));
        m_crowd->SetCustomInfo(kFirstMember, "back at three");
        m_story.Came("the company",
                     GroupDigits(m_crowd->CountOnline()) + " users are online, two of them on a second terminal");

        m_anna = Enter("anna-desktop", kAnna, TERMINAL_DESKTOP);
        m_anna->LogsIn();
        m_anna->Sees(
            "all " + GroupDigits(m_options.users) + " colleagues online",
            [this] { return Count() == m_members.size(); }, [this] { return GroupDigits(Count()) + " of them"; });
        m_anna->Does("has them on " + TerminalCounts());
        SeesUser(*m_anna, kFirstMember, "user 1001 on a desktop and a phone, \"back at three\"",
                 [](const UserOnlineInfo& info)
                 { return info.terminals.size() == 2 && info.terminals.front().custom == "back at three"; });

        m_ben = Enter("ben-laptop", kBen, TERMINAL_LAPTOP);
        m_ben->LogsIn();
        SeesUser(*m_anna, kBen, "user 2 on a laptop",
                 [](const UserOnlineInfo& info) { return TerminalsOf(info) == "laptop"; });
        m_carla = Enter("carla-phone", kCarla, TERMINAL_PHONE);
        m_carla->LogsIn();
        SeesUser(*m_anna, kCarla, "user 3 on a phone",
                 [](const UserOnlineInfo& info) { return TerminalsOf(info) == "phone"; });
        m_crowd->GoOffline(kOfflineMember);
        SeesUser(*m_anna, kOfflineMember, "user 1003 go offline",
                 [](const UserOnlineInfo& info) { return !IsOnline(info); });
    }

    void ShowProgress(ProgressBar& progress, size_t done, size_t total) const
    {
        if (m_world.narrator.HasProgress())
        {
            progress.Show(done, total);
        }
        m_story.EndIfInterrupted();
    }

    void SeesUser(Actor& actor, unsigned userId, const std::string& expected,
                  const std::function<bool(const UserOnlineInfo&)>& isSo)
    {
        const auto ask = [&] { return actor.Ask({userId}).at(0); };
        actor.Sees(
            expected, [&] { return isSo(ask()); },
            [&]
            {
                const UserOnlineInfo info = ask();
                return "user " + std::to_string(userId) + " " +
                       (IsOnline(info) ? "online on " + TerminalsOf(info) : std::string("offline"));
            });
    }

    /// The number of colleagues that the first user sees online.
    size_t Count()
    {
        const std::vector<UserOnlineInfo> answers = m_anna->Ask(m_members);
        return static_cast<size_t>(std::count_if(answers.begin(), answers.end(), IsOnline));
    }

    std::string TerminalCounts()
    {
        std::map<uint32_t, size_t> counts;
        for (const UserOnlineInfo& info : m_anna->Ask(m_members))
        {
            for (const UserTerminalInfo& terminal : info.terminals)
            {
                counts[terminal.terminal_type] += terminal.status == 1 ? 1 : 0;
            }
        }
        std::string text;
        for (const auto& [type, count] : counts)
        {
            text += (text.empty() ? "" : ", ") + GroupDigits(count) + " x " + TerminalName(type);
        }
        return text;
    }

    void Invitation()
    {
        Actor& anna = Anna();
        Join(anna, TUNNEL_TYPE_PAAS);
        const std::vector<unsigned> invitees = WriteScripts();
        const std::set<unsigned> accepting = Accepting();
        const std::set<unsigned> declining = Declining();

        InviteData data;
        data.inviteCode = 1;
        data.roomCompanyId = kCompanyId;
        data.meetingId = kMeetingId;
        data.userId = kAnna;
        data.userName = "Anna";
        data.terminal = "desktop";
        unsigned inviteId = 0;
        anna.Does("invites " + std::to_string(invitees.size()) + " colleagues: " + ListIds(invitees));
        const bool isSent = anna.Online().Users().InviteUsers(invitees, data, &inviteId);
        anna.Has(isSent && inviteId != 0, "has sent invitation " + std::to_string(inviteId), "the module refuses");

        const unsigned atBen = IsInvited(Ben());
        const unsigned atCarla = IsInvited(Carla());
        Answers(Ben(), atBen, true);
        Join(Ben(), TUNNEL_TYPE_PAAS);
        Answers(Carla(), atCarla, false);
        CollectAnswers(anna, inviteId, accepting, declining);
        anna.GetsOfEach("sees the " + std::to_string(accepting.size()) +
                            " who accepted join the meeting: " + ListIds(accepting),
                        EventKind::UserJoined, accepting);
    }

    /// Sets the answers of the colleagues. The result is the list of all invitees.
    std::vector<unsigned> WriteScripts()
    {
        platform::CrowdScript accept;
        accept.answer = platform::CrowdScript::Answer::Accept;
        accept.joinGroupId = platform::Platform::MeetingGroupId(kMeeting);
        platform::CrowdScript decline;
        decline.answer = platform::CrowdScript::Answer::Decline;
        std::vector<unsigned> invitees{kBen, kCarla};
        for (unsigned member = kFirstMember; member < kFirstMember + kMembersInvited; ++member)
        {
            m_crowd->SetScript(member, Accepts(member) ? accept : decline);
            invitees.push_back(member);
        }
        return invitees;
    }

    static bool Accepts(unsigned member)
    {
        return member < kFirstMember + kMembersThatAccept && member != kOfflineMember;
    }

    static std::set<unsigned> Accepting()
    {
        std::set<unsigned> users{kBen};
        for (unsigned member = kFirstMember; member < kFirstMember + kMembersInvited; ++member)
        {
            if (Accepts(member))
            {
                users.insert(member);
            }
        }
        return users;
    }

    static std::set<unsigned> Declining()
    {
        std::set<unsigned> users{kCarla};
        for (unsigned member = kFirstMember; member < kFirstMember + kMembersInvited; ++member)
        {
            if (!Accepts(member) && member != kOfflineMember)
            {
                users.insert(member);
            }
        }
        return users;
    }

    /// Returns the id of the invitation.
    unsigned IsInvited(Actor& actor)
    {
        return actor
            .Gets("is invited by user 1", {EventKind::InviteIncome},
                  [](const Event& each) {
                      return each.userId == kAnna && each.invitation.userName == "Anna" &&
                             each.invitation.meetingId == kMeetingId;
                  })
            .requestId;
    }

    static void Answers(Actor& actor, unsigned inviteId, bool isAccept)
    {
        actor.Does(isAccept ? "accepts" : "declines");
        actor.Has(actor.Online().Users().AcceptInvite(kAnna, inviteId, isAccept), "has answered", "the module refuses");
    }

    void Join(Actor& actor, TunnelType tunnel)
    {
        JoinData data{};
        data.guid = kMeeting;
        data.user_id = actor.UserId();
        actor.Does(std::string("joins the meeting") + (tunnel == TUNNEL_TYPE_GW ? " through the gateway" : ""));
        actor.Has(actor.Online().Tunnel(tunnel).JoinMeeting(data), "the module accepted the join",
                  "the module refuses");
        actor.Gets("joined the meeting: success", {EventKind::JoinMeetingResult},
                   [tunnel](const Event& event) { return event.tunnel == tunnel && event.code == ERR_SUCCESS; });
    }

    void Leave(Actor& actor, TunnelType tunnel)
    {
        actor.Does("leaves the meeting");
        actor.Has(actor.Online().Tunnel(tunnel).LeaveMeeting(), "the module accepted the leave", "the module refuses");
        actor.Gets("left the meeting: success", {EventKind::LeaveMeetingResult},
                   [tunnel](const Event& event) { return event.tunnel == tunnel && event.code == ERR_SUCCESS; });
    }

    /// Answers come in any order. All carry the one id that the module gave to the invitation.
    void CollectAnswers(Actor& anna, unsigned inviteId, const std::set<unsigned>& accepting,
                        const std::set<unsigned>& declining)
    {
        std::set<unsigned> accepted;
        std::set<unsigned> declined;
        std::set<unsigned> absent;
        const size_t total = accepting.size() + declining.size() + 1;
        while (accepted.size() + declined.size() + absent.size() < total)
        {
            const auto event = anna.Online().Events().TakeIf(
                [&](const Event& each)
                {
                    return each.requestId == inviteId &&
                           (each.kind == EventKind::InviteAccepted || each.kind == EventKind::InviteRejected);
                },
                m_limit);
            if (!event)
            {
                break;
            }
            const bool isAbsent = event->reason == avcore::ZOL_INVITE_REJECT_OFFLINE;
            std::set<unsigned>& answers =
                event->kind == EventKind::InviteAccepted ? accepted : (isAbsent ? absent : declined);
            answers.insert(event->userId);
        }
        Compare(anna, "accepted", accepting, accepted);
        Compare(anna, "declined", declining, declined);
        Compare(anna, "was not online", {kOfflineMember}, absent);
    }

    static void Compare(Actor& actor, const std::string& answer, const std::set<unsigned>& expected,
                        const std::set<unsigned>& came)
    {
        actor.Has(came == expected,
                  "learns who " + answer + ": " + std::to_string(expected.size()) + " (" + ListIds(expected) + ")",
                  std::to_string(came.size()) + " (" + ListIds(came) + ")");
    }

    void LostConnection()
    {
        Actor& anna = Anna();
        Actor& ben = Ben();
        m_story.Tell("the network", "drops ben-laptop for a moment");
        const size_t dropped = m_world.platform.GetFaults().DropConnections(std::to_string(kBen), "ben-laptop");
        m_story.Check(dropped == 1, "the network", "one connection is lost", std::to_string(dropped) + " are lost");
        ben.Gets("lost the connection", {EventKind::ReadyReconnect});
        ben.Gets("reconnects", {EventKind::ReconnectStart});
        ben.Gets("is connected again", {EventKind::ReconnectSucess, EventKind::ReconnectFail},
                 [](const Event& event) { return event.kind == EventKind::ReconnectSucess; });
        anna.GetsOfEach("has seen user 2 leave the meeting", EventKind::UserLeaved, {kBen});
        anna.GetsOfEach("sees user 2 back in the meeting", EventKind::UserJoined, {kBen});
        SeesUser(anna, kBen, "user 2 online again, on a laptop",
                 [](const UserOnlineInfo& info) { return TerminalsOf(info) == "laptop"; });
    }

    void Monitoring()
    {
        using platform::ReportKind;
        Actor& anna = Anna();
        Actor& ben = Ben();
        EventQueue<platform::MonitoringReport> reports;
        const Interruption::Watch watch(m_world.interruption, [&] { reports.CancelWaits(); });
        platform::MonitoringService service(m_world.platform, kAppId, std::to_string(kCompanyId),
                                            [&](const platform::MonitoringReport& report) { reports.Push(report); });

        m_story.Tell("monitoring", "subscribes to the overviews of users 1 and 2");
        for (Actor* const actor : {&anna, &ben})
        {
            service.Subscribe(std::to_string(actor->UserId()), ReportKind::Overview);
            actor->Gets("is asked for quality reports", {EventKind::AVQualitySubscribed});
        }
        for (int measurement = 1; measurement <= 3; ++measurement)
        {
            SendMeasurement(anna);
            GetsReport(reports, anna, "overview");
        }
        m_story.Tell("monitoring", "subscribes to the details of user 1 too");
        service.Subscribe(std::to_string(kAnna), ReportKind::Detail);
        anna.Gets("is asked for quality reports", {EventKind::AVQualitySubscribed});
        SendMeasurement(anna);
        GetsReport(reports, anna, "overview");
        GetsReport(reports, anna, "detail");

        m_story.Tell("monitoring", "unsubscribes from user 1");
        service.Unsubscribe(std::to_string(kAnna), ReportKind::All);
        anna.Gets("is not asked for quality reports any more", {EventKind::AVQualityUnsubscribed});
        // The next report comes from the other user: the module has sent none for the first one.
        SendMeasurement(anna);
        SendMeasurement(ben);
        GetsReport(reports, ben, "overview");
        m_story.Tell("monitoring", "unsubscribes from user 2");
        service.Unsubscribe(std::to_string(kBen), ReportKind::All);
        ben.Gets("is not asked for quality reports any more", {EventKind::AVQualityUnsubscribed});
    }

    static void SendMeasurement(Actor& actor)
    {
        auto info = std::make_shared<AVQualityInfo>();
        info->avQualityLevel = 4;
        info->userId = actor.UserId();
        info->roomId = kMeetingId;
        info->groupId = platform::Platform::MeetingGroupId(kMeeting);
        info->appId = kAppId;
        auto audio = std::make_shared<AudioQualityData>();
        audio->userId = actor.UserId();
        audio->userName = actor.Name();
        audio->protocol = "udp";
        audio->bitrate = "48";
        audio->pktlr = "0.2";
        audio->rtt = "31";
        audio->jitter = "4";
        info->sendAudio.push_back(audio);
        actor.Has(actor.Online().Mds().SendAVQualityInfo(info), "hands a measurement to the module",
                  "the module refuses");
    }

    void GetsReport(EventQueue<platform::MonitoringReport>& reports, const Actor& actor, const std::string& kind)
    {
        const std::string expected = "gets the " + kind + " of " + actor.Name();
        const auto report = reports.Take(m_limit);
        if (!report)
        {
            m_story.Missed("monitoring", expected, "nothing");
        }
        const bool isIt = report->userId == std::to_string(actor.UserId()) && report->deviceId == actor.Name() &&
                          report->json.find(R"("subType":")" + kind + '"') != std::string::npos;
        m_story.Check(isIt, "monitoring", expected + ", " + std::to_string(report->json.size()) + " bytes",
                      "from " + Printable(report->deviceId) + ": " + Printable(report->json));
    }

    void Messages()
    {
        Anna();
        EventQueue<std::string> lines;
        const Interruption::Watch interruption(m_world.interruption, [&] { lines.CancelWaits(); });
        const LogWatch watch(m_world.log, kModuleLogger,
                             [&](std::string_view text)
                             {
                                 if (text.find("MsgIncome") != std::string_view::npos)
                                 {
                                     lines.Push(std::string(text));
                                 }
                             });
        m_story.Tell("ben-laptop", "sends user 1 a message, directly on the platform connection");
        m_world.platform.SendUserMessage(kAppId, std::to_string(kCompanyId), std::to_string(kBen),
                                         std::to_string(kAnna), "Is this seat taken?");
        HasLogged(lines, "PaasTMsgImp::OnUserMsgIncome srcUserId:2 ", " msg:Is this seat taken?.");
        m_story.Tell("ben-laptop", "sends the meeting a message, directly on the platform connection");
        m_world.platform.SendGroupMessage(platform::Platform::MeetingGroupId(kMeeting), std::to_string(kBen),
                                          "Five minutes break");
        HasLogged(lines, "PaasTMsgImp::OnGroupMsgIncome srcUserId:2 ", " msg:Five minutes break.");
    }

    void HasLogged(EventQueue<std::string>& lines, const std::string& begin, const std::string& end)
    {
        const auto line = lines.Take(m_limit);
        m_story.Check(line && line->starts_with(begin) && line->ends_with(end), "the module",
                      "logs " + (line ? Printable(*line) : begin + "..." + end), line ? Printable(*line) : "nothing");
    }

    void FirstLeaves()
    {
        Actor& anna = Anna();
        Actor& ben = Ben();
        Leave(anna, TUNNEL_TYPE_PAAS);
        ben.GetsOfEach("sees user 1 leave the meeting", EventKind::UserLeaved, {kAnna});
    }

    void Gateway()
    {
        Actor& ben = Ben();
        Actor& carla = Carla();
        Join(carla, TUNNEL_TYPE_GW);
        ben.GetsOfEach("sees user 3 join the meeting", EventKind::UserJoined, {kCarla});
        Leave(carla, TUNNEL_TYPE_GW);
        ben.GetsOfEach("sees user 3 leave the meeting", EventKind::UserLeaved, {kCarla});
    }

    void End()
    {
        for (const auto* actor : {&m_anna, &m_ben, &m_carla})
        {
            if (*actor != nullptr)
            {
                (*actor)->LogsOut();
                (*actor)->HasNothingLeft();
            }
        }
        if (m_crowd != nullptr)
        {
            ProgressBar progress(m_world.narrator.Out(), "going offline");
            m_crowd->GoOffline([&](size_t done, size_t total) { ShowProgress(progress, done, total); });
        }
        const size_t left = m_crowd != nullptr ? m_crowd->CountOnline() : 0;
        m_story.Check(left == 0 && m_world.platform.Sessions().empty(), "the company", "all users are offline",
                      GroupDigits(left) + " users and " + std::to_string(m_world.platform.Sessions().size()) +
                          " logins are left");
    }

    void Unload()
    {
        m_story.Check(m_world.module->CanUnload(), "the module", "says that it can be unloaded",
                      "says that objects of it still live");
        const std::string path = m_world.module->Path();
        m_world.module.reset();
        void* const left = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
        m_story.Check(left == nullptr || kModuleStays, "the module", "is unloaded", "is still in memory");
    }

    StoryWorld m_world;
    const MeetingOptions m_options;
    Story m_story;
    const milliseconds m_limit;
    std::vector<unsigned> m_members;
    std::unique_ptr<platform::Crowd> m_crowd;
    std::unique_ptr<Actor> m_anna;
    std::unique_ptr<Actor> m_ben;
    std::unique_ptr<Actor> m_carla;
};

} // namespace

Story::Tally TellMeeting(StoryWorld world, const MeetingOptions& options)
{
    return MeetingStory(std::move(world), options).Tell();
}

} // namespace host
