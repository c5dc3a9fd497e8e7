#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "common_service/oper_common.h"

/// Called once when a watched node is created or written, with the arguments of the ZooKeeper
/// client: its handle, type and state of the event in its numbers, the node's path, and no context.
/// In a store without that client the handle is null, and the state is that of a connected one.
/// From any thread; never with a lock of the store held.
using StoreWatcher = void (*)(zhandle_t* zh, int type, int state, const char* path,
                              void* watcherCtx);

/// What a read found.
struct CStoreAnswer {
    bool bExists = false;
    std::optional<std::string> text;  ///< nothing when the node exists without data
};

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
};

/// Does a text take so much of its limit that it is time to warn? A write warns by its buffer.
constexpr bool IsNearlyFull(std::size_t size, std::size_t limit) {
    return size * std::uint64_t{100} >= limit * std::uint64_t{80};
}

/// What COperCommon itself answers, beside the store's codes and those of the documents.
enum enStoreError {
    STORE_NODE_ABSENT = 109200001,
    STORE_TEXT_TOO_LONG = 109200002,
    STORE_NOT_SET = 109200003,
};

/// Puts a store behind COperCommon. Until then, and after a null pointer, every store call fails.
/// Calls that are running end on the store that they began with.
[[gnu::visibility("default")]] void SetStore(std::shared_ptr<IStore> pStore);

/// What ClusterNodeEventWatcher does on an event of a node that was read with it; null for nothing.
/// The handler runs on the store's thread, or on the thread that wrote the node, which may hold a
/// registry's mutex. It may itself read the node, which sets the watch anew.
[[gnu::visibility("default")]] void SetNodeEventHandler(
    void (*pHandler)(const std::string& strPath));
