#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "cluster_engine/answer.h"
#include "cluster_engine/engine_view.h"
#include "cluster_engine/event.h"
#include "cluster_engine/host.h"
#include "cluster_engine/input.h"
#include "cluster_engine/settings.h"
#include "framework_service/resource_task.h"

class CCluster;

/// Hears, on the engine's thread, that a step of a load went well: what was loaded, as "the
/// cluster", and what was found, as "3 nodes, 6 containers".
using OnLoadStep = std::function<void(const std::string& strWhat, const std::string& strFound)>;

/// What running a cluster means, behind one door: Load, then Apply for each input and Commit after
/// one or several. It has no thread, no socket and no clock: time comes with the inputs and never
/// goes back. The same state, plug-ins and inputs at the same times give the same answers, events
/// and documents.
///
/// The library beneath it is made of process-wide objects: a process has one engine, loaded once.
/// All calls come from one thread.
class CClusterEngine {
public:
    /// What the host hands in outlives the engine.
    CClusterEngine(const CEngineHost& host, const CEngineSettings& settings);
    ~CClusterEngine();
    CClusterEngine(const CClusterEngine&) = delete;
    CClusterEngine& operator=(const CClusterEngine&) = delete;

    /// Loads plug-ins and documents in the order that the library asks for, and what the engine
    /// itself keeps in the store. Returns 0; or a code, with the reason in strWhy and no input
    /// accepted. May be called again then.
    int Load(int64_t iSecond, std::string& strWhy, const OnLoadStep& onStep = nullptr);

    /// Goes on from the state of another life instead: what that one would have done, this one
    /// does. The store holds what it held then. Returns as the other, and may not be called again.
    int Load(const Json::Value& state, std::string& strWhy);

    /// The whole state as one JSON object: right after a commit that went well, and while the store
    /// is there, so that nothing waits to be written or told.
    Json::Value GetState() const;

    /// What there is to ask of it beside the registries, as of the last input.
    CEngineView GetView() const;

    /// The standard tasks that were read last, by name.
    const std::map<std::string, CResourceTask>& GetStandardTasks() const;

    /// Carries an input out. One that is refused has changed nothing. What the answer promises
    /// counts when the next Commit went well.
    CAnswer Apply(const CInput& input);

    /// Makes durable what the inputs since the last commit changed, and tells the event sink of it.
    /// Returns 0, or the store's code: what is not written is tried again by the next call, and no
    /// answer counts that promised something durable.
    int Commit();

private:
    void Step(int64_t iSecond);
    CAnswer Dispatch(const CInput& input);
    bool NeedsCommit(const CInput& input, const CAnswer& answer) const;
    bool IsDirty() const;
    CAnswer Tick(const CTick& tick);

    std::unique_ptr<CCluster> m_pCluster;
};
