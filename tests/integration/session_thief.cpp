#include "session_thief.h"

#include <dlfcn.h>
#define THREADED
#include <zookeeper/zookeeper.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using Init = decltype(&zookeeper_init);

std::atomic<zhandle_t*> g_pNewestHandle{nullptr};

Init ClientLibraryInit() {
    return reinterpret_cast<Init>(dlsym(RTLD_NEXT, "zookeeper_init"));
}

void IgnoreEvent(zhandle_t*, int, int, const char*, void*) {}

}  // namespace

/// Stands before the client library's own, to get hold of the handle that the store keeps hidden.
zhandle_t* zookeeper_init(const char* host, watcher_fn fn, int recv_timeout,
                          const clientid_t* clientid, void* context, int flags) {
    g_pNewestHandle = ClientLibraryInit()(host, fn, recv_timeout, clientid, context, flags);
    return g_pNewestHandle;
}

bool ExpireNewestSession(const std::string& strServers) {
    zhandle_t* const pStolen = g_pNewestHandle;
    zhandle_t* const pHandle =
        ClientLibraryInit()(strServers.c_str(), IgnoreEvent, zoo_recv_timeout(pStolen),
                            zoo_client_id(pStolen), nullptr, ZOO_NO_LOG_CLIENTENV);
    if (!pHandle) {
        return false;
    }
    for (int iTry = 0; iTry < 1000 && zoo_state(pHandle) != ZOO_CONNECTED_STATE; ++iTry) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const bool bJoined = zoo_state(pHandle) == ZOO_CONNECTED_STATE;
    zookeeper_close(pHandle);
    return bJoined;
}
