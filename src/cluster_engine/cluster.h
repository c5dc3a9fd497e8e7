#pragma once

#include <deque>
#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cluster_engine/assignments.h"
#include "cluster_engine/engine_store.h"
#include "cluster_engine/event.h"
#include "cluster_engine/host.h"
#include "cluster_engine/plugin_gate.h"
#include "cluster_engine/settings.h"
#include "cluster_engine/state.h"

/// What the rules work on. It belongs to the engine and is used on its thread alone; beside it a
/// rule uses the library's registries.
class CCluster {
public:
    /// A task by type and id.
    using TaskKey = std::pair<std::string, std::string>;

    /// The newest first.
    using DecisionHistory = std::map<TaskKey, std::vector<CDecision>>;

    CCluster(const CEngineHost& engineHost, const CEngineSettings& engineSettings);
    CCluster(const CCluster&) = delete;
    CCluster& operator=(const CCluster&) = delete;

    CEngineHost host;
    const CEngineSettings settings;
    CClusterState state;
    CEngineStore store;
    CAssignments assignments;
    CPluginGate plugins;
    DecisionHistory decisions;
    std::deque<TaskKey> nowhere;  ///< tasks whose newest decision, when noted, gave no place

    /// Empty again, as before a load; the time stays.
    void Begin();

    /// Told when what it speaks of is committed. The time is the engine's.
    void Tell(CEvent event);

    /// Told at once: that nothing can be committed.
    void TellNow(CEvent event);

    /// Hands what was told to the sink.
    void TellSink();

    /// What was told and not handed over did not happen.
    void ForgetEvents() { m_events.clear(); }

    /// Notes what was decided about a task; the oldest of more than the settings keep goes. Of
    /// tasks that are nowhere any more, as many are kept as the settings say.
    void Note(const std::string& strType, const std::string& strTaskId, CDecision decision);
    std::vector<CDecision> Decisions(const std::string& strType,
                                     const std::string& strTaskId) const;

    /// Sees to it that a placement bears a number higher than any before: takes the next one where
    /// the plug-in's is none, an old one, or one that the library has not given out. Returns 0 or
    /// the store's code.
    int RaiseDecision(unsigned long long& ullDecision);

    /// Gives the library's tables of the plug-in's containers what the assignments say, where they
    /// say otherwise.
    void RestoreTables(const CPluginRecord& plugin);

    /// @name An input that is refused in the end
    /// @{
    struct CMark {
        CClusterState state;
        CAssignments::CMark assignments;
        std::size_t uiEvents;
        DecisionHistory decisions;
    };
    CMark Remember() const;

    /// Everything is again as it was, the library's tables too, but what plug-ins and the store did
    /// wrong meanwhile: that happened.
    void GoBack(CMark mark);
    /// @}

private:
    void ForgetNowhere();

    std::vector<CEvent> m_events;
};

/// An event about a container.
CEvent ContainerEvent(EEvent eEvent, const CContainerAddr& addr, std::string strCause = {});

/// One about tasks of a container.
CEvent TasksEvent(EEvent eEvent, const CContainerAddr& addr, const std::list<std::string>& taskIds,
                  std::string strCause = {});
