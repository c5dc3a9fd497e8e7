#pragma once

#include <string>

#include "common_service/data/communication_data.h"

// NOLINTNEXTLINE(bugprone-reserved-identifier): the client library's own name
typedef struct _zhandle zhandle_t;

/// The store's node event callback, with the arguments of the ZooKeeper client. The library knows
/// only its address, which it passes as the watcher of a read; what happens on an event is the
/// host's decision.
[[gnu::visibility("default")]] void ClusterNodeEventWatcher(zhandle_t* zh, int type, int state,
                                                            const char* path, void* watcherCtx);

/// Access to the coordination store. Callable from any thread, also with a registry's mutex held:
/// every call ends, with a code, within a bounded time.
class [[gnu::visibility("default")]] COperCommon {
public:
    /// Reads the node at path into doc. watcher is null or a function of the type of
    /// ClusterNodeEventWatcher, which is then called once on the node's next event; it is set on an
    /// absent node too. bDataEmpty is written by every call:
    ///   not 0, true   the node does not exist, doc is untouched
    ///   not 0, false  the store failed, the text is longer than bufLen, or doc refused it
    ///   0, true       the node exists without data, doc is untouched
    ///   0, false      doc took the text over
    static int GetDataFromZK(const char* path, void* watcher, unsigned int bufLen,
                             CBaseJsonObject* doc, bool& bDataEmpty);

    /// Writes the text of doc, at most bufLen - 1 characters, to the node at path. On failure the
    /// store keeps what it held.
    static int SetDataToZK(const char* path, unsigned int bufLen, CBaseJsonObject* doc);

    /// A dotted IPv4 address as a number in host byte order; 0 for any other text.
    static unsigned int IPToUint(const std::string& strIp);
};
