#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "cluster_engine/event.h"

/// What a shell hands to the engine. All of it is called on the engine's thread.

/// The clock that the library and the plug-ins read while they work on an input.
class IStepClock {
public:
    virtual ~IStepClock() = default;
    virtual void Set(int64_t iSecond) = 0;
};

/// How a call of a plug-in is run.
class IPluginRunner {
public:
    virtual ~IPluginRunner() = default;

    /// Runs the call of that operation, which throws nothing and owns what it works on. True when
    /// it has come back; false when it outlived its limit, and goes on behind our back.
    virtual bool Run(const std::string& strPlugin, const std::string& strOperation,
                     std::shared_ptr<std::function<void()>> pCall) = 0;

    /// Is the plug-in's call that did not come back in time still running?
    virtual bool IsBusy(const std::string& strPlugin) = 0;
};

/// What stands between the host's store calls and the store.
class IStoreGate {
public:
    virtual ~IStoreGate() = default;

    /// From now on writes answer 0 and reach nothing, and what was written is read back.
    virtual void Shut() = 0;

    /// What was written since Shut is forgotten.
    virtual void Open() = 0;

    /// Not every write of that node has to be made at once. The first one is, so that a store that
    /// is gone is found out; those behind it answer 0, take each other's place and are read back,
    /// until WriteWaiting or until a call fails. The last one reaches the store together with the
    /// next write of another node, both or neither, or by WriteWaiting.
    virtual void LetWait(const std::string& strPath) = 0;
    virtual bool IsAnyWaiting() = 0;

    /// Writes what waits; the next write is a first one again. Returns 0, also when nothing waits,
    /// or a code: then it waits on.
    virtual int WriteWaiting() = 0;

    /// Writes texts, by path, all of them or none, and none of them waits. Returns 0 or a code.
    virtual int WriteTogether(std::map<std::string, std::string> texts) = 0;

    /// Did a call run out of time since the last one that went well?
    virtual bool IsAway() = 0;

    /// How many calls have failed so far, for whatever reason but an absent node?
    virtual uint64_t GetFailures() = 0;
};

/// All of them; they outlive the engine.
struct CEngineHost {
    IEventSink& events;
    IPluginRunner& runner;
    IStepClock& clock;
    IStoreGate& gate;
};
