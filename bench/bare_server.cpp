#include "bare_server.h"

#include <arpa/inet.h>
#include <json/reader.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

namespace {

constexpr unsigned int THREADS = 2;
constexpr unsigned int CONNECTIONS = 2000;
constexpr std::chrono::milliseconds NUDGE_PAUSE{5};

bool IsJson(const std::string& strBody) {
    thread_local const std::unique_ptr<Json::CharReader> pReader(
        Json::CharReaderBuilder().newCharReader());
    Json::Value json;
    return pReader->parse(strBody.data(), strBody.data() + strBody.size(), &json, nullptr);
}

MHD_Result Answer(MHD_Connection* pConnection, const std::string& strBody) {
    static char answer[] = R"({"result":"done"})";
    MHD_Response* const pResponse =
        MHD_create_response_from_buffer(sizeof answer - 1, answer, MHD_RESPMEM_PERSISTENT);
    const MHD_Result eResult = MHD_queue_response(
        pConnection, IsJson(strBody) ? MHD_HTTP_OK : MHD_HTTP_BAD_REQUEST, pResponse);
    MHD_destroy_response(pResponse);
    return eResult;
}

MHD_Result OnRequest(void* /*pNothing*/, MHD_Connection* pConnection, const char* /*pszUrl*/,
                     const char* /*pszMethod*/, const char* /*pszVersion*/, const char* pData,
                     std::size_t* puiBytes, void** ppBody) {
    if (*ppBody == nullptr) {
        *ppBody = new std::string;
        return MHD_YES;
    }
    auto& strBody = *static_cast<std::string*>(*ppBody);
    if (*puiBytes == 0) {
        return Answer(pConnection, strBody);
    }
    strBody.append(pData, *puiBytes);
    *puiBytes = 0;
    return MHD_YES;
}

void OnEnd(void* /*pNothing*/, MHD_Connection* /*pConnection*/, void** ppBody,
           MHD_RequestTerminationCode /*eCode*/) {
    delete static_cast<std::string*>(*ppBody);
    *ppBody = nullptr;
}

/// A thread of libmicrohttpd that finds exactly 128 events looks for more before it goes on, and
/// sleeps until there is one: without anything new from outside, that is for ever.
void NudgeForEver(uint16_t uiPort) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(uiPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    while (true) {
        std::this_thread::sleep_for(NUDGE_PAUSE);
        const int iSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        connect(iSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        close(iSocket);
    }
}

}  // namespace

void RunBareServer() {
    MHD_Daemon* const pDaemon =
        MHD_start_daemon(MHD_USE_EPOLL_INTERNAL_THREAD, 0, nullptr, nullptr, &OnRequest, nullptr,
                         MHD_OPTION_NOTIFY_COMPLETED, &OnEnd, nullptr, MHD_OPTION_THREAD_POOL_SIZE,
                         THREADS, MHD_OPTION_CONNECTION_LIMIT, CONNECTIONS, MHD_OPTION_END);
    if (pDaemon == nullptr) {
        return;
    }
    const uint16_t uiPort = MHD_get_daemon_info(pDaemon, MHD_DAEMON_INFO_BIND_PORT)->port;
    std::printf("listening on http://127.0.0.1:%d\n", uiPort);
    std::fflush(stdout);
    NudgeForEver(uiPort);
}
