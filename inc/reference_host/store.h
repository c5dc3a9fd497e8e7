#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common_service/oper_common.h"

/// Called once when a watched node is created or written, with the arguments of the ZooKeeper
/// client: its handle, type and state of the event in its numbers, the node's path, and no context.
/// In a store without that client the handle is null, and the state is that of a connected one.
/// From any thread; never with a lock of the store held.
using StoreWatcher = void (*)(zhandle_t* zh, int type, int state, const char* path,
                              void* watcherCtx);

/// What a store itself answers, and COperCommon for it, beside the codes of the store's client and
/// those of the documents.
enum enStoreError {
    STORE_NODE_ABSENT = 109200001,
    STORE_TEXT_TOO_LONG = 109200002,
    STORE_NOT_SET = 109200003,
    STORE_NO_SUPPORT = 109200004,        ///< this store cannot do that
    STORE_CONDITION_FAILED = 109200005,  ///< nothing written: a node is at another version
    STORE_OUTCOME_UNKNOWN = 109200006,   ///< written whole or not at all, now or still to come
    STORE_NAME_HELD = 109200007,         ///< another holds the name
};

/// The version of a node that is not there.
constexpr std::int64_t STORE_VERSION_ABSENT = -1;

/// What a read found.
struct CStoreAnswer {
    bool bExists = false;
    std::optional<std::string> text;  ///< nothing when the node exists without data

    /// Another one after every write of the node, and a higher one as long as it is not taken away;
    /// of use in a commit on the same store only.
    std::int64_t iVersion = STORE_VERSION_ABSENT;
};

/// A node that a commit wants untouched since its version was read.
struct CStoreCondition {
    std::string strPath;
    std::int64_t iVersion = STORE_VERSION_ABSENT;
};

/// A node with the text that a commit gives it.
struct CStoreText {
    std::string strPath;
    std::string strText;
};

/// Called once when a hold is lost, from a thread of the store's own and never with a lock of the
/// store held. It may call the store, and hold the name anew.
using HoldLost = std::function<void()>;

/// A coordination store: a tree of nodes with a text each. Callable from any thread; every call
/// ends within a bounded time.
class [[gnu::visibility("default")]] IStore {
public:
    virtual ~IStore() = default;

    /// Reads a node. A watcher is set whether or not the node exists and stays set until it fires.
    /// Returns 0, with bExists false for an absent node, or a code with the answer untouched.
    virtual int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) = 0;

    /// Writes a node, creating it and its parents where they are missing. Returns 0, or a code with
    /// the store unchanged.
    virtual int Write(const std::string& strPath, const std::string& strText) = 0;

    /// Lists the children of a node, "/" being above all: their bare names in the order of their
    /// bytes, in the place of what the list held. Returns 0, STORE_NODE_ABSENT for an absent node,
    /// or another code; the list is then untouched.
    virtual int List(const std::string& /*strPath*/, std::vector<std::string>& /*children*/) {
        return STORE_NO_SUPPORT;
    }

    /// Writes texts as Write does, all of them or none, if each node that a condition names is
    /// still at its version. The nodes of the conditions need not be those of the texts; without
    /// conditions the texts are written whatever is there. A node may have one text only, else
    /// ORVA_PARA_INVALID.
    ///
    /// Returns 0; STORE_CONDITION_FAILED; STORE_OUTCOME_UNKNOWN, after which a new read may show
    /// either, and a commit with the old conditions does no harm; or another code. With every code
    /// but STORE_OUTCOME_UNKNOWN nothing is written and nothing will be.
    virtual int Commit(const std::vector<CStoreCondition>& /*conditions*/,
                       const std::vector<CStoreText>& /*texts*/) {
        return STORE_NO_SUPPORT;
    }

    /// Holds a name, which of all stores on the same data one does at a time: until Release, until
    /// the hold is lost, or until this object or its process ends. The name is the path of a node,
    /// which nothing else should write. The node gets the text, which says who holds the name. A
    /// commit with its version as a condition is refused from the moment that somebody else has
    /// held the name, also before the loss of the hold is told.
    ///
    /// Returns 0, and the holder is the node; STORE_NAME_HELD, also when this store itself holds
    /// the name, and the holder is the node as whoever holds it wrote it, with an empty text when
    /// that is not there yet; or another code, with the holder untouched. What may have come of a
    /// call that failed so ends with Release.
    virtual int Hold(const std::string& /*strPath*/, const std::string& /*strText*/,
                     const HoldLost& /*onLost*/, CStoreAnswer& /*holder*/) {
        return STORE_NO_SUPPORT;
    }

    /// Lets go of a name that this store holds; one that it does not hold is left alone. The loss
    /// of the hold is not told any more, unless that has begun. Returns 0, or a code: others may
    /// then find the name held until this object ends.
    virtual int Release(const std::string& /*strPath*/) {
        return STORE_NO_SUPPORT;
    }

    /// Tells who holds a name, without taking it: the holder is the node, or absent when nobody
    /// does, whatever the node then holds. Returns 0, or a code with the holder untouched.
    virtual int FindHolder(const std::string& /*strPath*/, CStoreAnswer& /*holder*/) {
        return STORE_NO_SUPPORT;
    }

    /// How long a name may still be found held at most when the process that held it is gone.
    virtual std::chrono::milliseconds GetHoldAfterlife() {
        return std::chrono::milliseconds(0);
    }
};

/// Does a text take so much of its limit that it is time to warn? A write warns by its buffer.
constexpr bool IsNearlyFull(std::size_t size, std::size_t limit) {
    return size * std::uint64_t{100} >= limit * std::uint64_t{80};
}

/// Puts a store behind COperCommon. Until then, and after a null pointer, every store call fails.
/// Calls that are running end on the store that they began with.
[[gnu::visibility("default")]] void SetStore(std::shared_ptr<IStore> pStore);

/// What ClusterNodeEventWatcher does on an event of a node that was read with it; null for nothing.
/// The handler runs on the store's thread, or on the thread that wrote the node, which may hold a
/// registry's mutex. It may itself read the node, which sets the watch anew.
[[gnu::visibility("default")]] void SetNodeEventHandler(
    void (*pHandler)(const std::string& strPath));
