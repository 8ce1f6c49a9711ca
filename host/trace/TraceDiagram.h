#pragma once

#include "host/trace/TraceCall.h"
#include "host/trace/TraceNames.h"
#include "host/trace/TraceWriter.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace host
{

class DiagramCall;

/// The devices and subjects that a diagram shows. An empty list chooses all.
struct DiagramChoice
{
    std::vector<std::string> devices{};
    std::vector<TraceSubject> subjects{};
};

/// Makes a diagram for people from the calls of a recording.
///
/// - Creation and destruction of a component are folded into notes, other calls that only connect objects are left out.
/// - An event that several listeners get is one arrow. What an operation returns is shown where it says more than
///   success.
/// - Reads of the host that find nothing are left out.
/// - Equal calls and events that follow each other are one arrow with their number: "OnInviteAccepted(user 1001 ...
///   user 1029) x29". Events about different users may change their places for it, events about the same user never do.
/// - What belongs to no chosen device or subject is left out.
///
/// Keeps no more than a diagram can show. Only one thread at a time may use it.
class TraceDiagram
{
public:
    explicit TraceDiagram(DiagramChoice choice);
    ~TraceDiagram();
    TraceDiagram(const TraceDiagram&) = delete;
    TraceDiagram& operator=(const TraceDiagram&) = delete;

    /// Components are numbered from 0, in the order in which they are added.
    void AddComponent(const std::string& device);

    /// A chapter of the recording begins.
    void Chapter(const std::string& title, TraceTime time);

    /// A call begins on a thread, inside `outer`, or outside of every other call when that is null. The result is valid
    /// until its `End`.
    DiagramCall* Begin(int thread, DiagramCall* outer, const TraceCall& call, TraceTime time);
    void End(int thread, DiagramCall* call, const TraceResult& result, TraceTime time);

    /// The diagram. No call may be recorded afterwards.
    std::string Text();

    /// Chosen devices that were not recorded.
    std::vector<std::string> UnknownDevices() const;
    /// The devices that were recorded, each once.
    std::vector<std::string> Devices() const;

private:
    struct Item;
    using Items = std::list<Item>;
    class Renderer;

    void Settle(Items::iterator item);
    void SettleThread(int thread);
    bool IsWanted(const DiagramCall& call) const;
    bool IsChosenDevice(uint32_t component) const;
    void Fold(Items::iterator item);
    bool Merge(Items::iterator item);
    void Limit(Items::iterator item);

    const DiagramChoice m_choice;
    std::vector<std::string> m_devices;                   ///< by component
    std::map<std::string, std::set<std::string>> m_users; ///< that log in on a device
    Items m_items;
    std::map<int, Items::iterator> m_last; ///< each thread's last outermost call, which may go on with another listener
    size_t m_folded = 0;                   ///< set-up calls that no note counts
    size_t m_dropped = 0;                  ///< calls that came when there was no more room
};

} // namespace host
