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

namespace {

/// Joins the session and closes it. True when there was nothing left to join.
bool IsOverOrClose(const std::string& strServers, const clientid_t& session, int iTimeout) {
    zhandle_t* const pHandle = ClientLibraryInit()(strServers.c_str(), IgnoreEvent, iTimeout,
                                                   &session, nullptr, ZOO_NO_LOG_CLIENTENV);
    const auto isAt = [pHandle](int iState) { return zoo_state(pHandle) == iState; };
    for (int iTry = 0;
         iTry < 1000 && !isAt(ZOO_CONNECTED_STATE) && !isAt(ZOO_EXPIRED_SESSION_STATE); ++iTry) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const bool bOver = isAt(ZOO_EXPIRED_SESSION_STATE);
    zookeeper_close(pHandle);
    return bOver;
}

}  // namespace

bool ExpireNewestSession(const std::string& strServers) {
    const clientid_t session = *zoo_client_id(g_pNewestHandle);
    const int iTimeout = zoo_recv_timeout(g_pNewestHandle);
    // Its owner, whose connection the server drops, may take the session back before the close.
    for (int iTry = 0; iTry < 100; ++iTry) {
        if (IsOverOrClose(strServers, session, iTimeout)) {
            return true;
        }
    }
    return false;
}
