#include "serve/http_server.h"

#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "serve/doorkeeper.h"
#include "serve/http_exchange.h"
#include "serve/listen_address.h"

namespace {

/// A connection's memory: the head of a request, and a piece of its body or answer.
constexpr std::size_t NUMERIC_CONNECTION_BYTES = 32768;

/// Connections beyond those allowed, so that who comes too many can be told.
constexpr unsigned int NUMERIC_SPARE_CONNECTIONS = 100;

/// A thread of libmicrohttpd takes 128 events at once. When it gets as many it looks for more
/// before it goes on, and sleeps until there is one: with fewer connections, and its own event, it
/// never does.
constexpr unsigned int NUMERIC_THREAD_CONNECTIONS = 126;

/// So long, at most, answers may be on their way when the server stops.
constexpr std::chrono::milliseconds NUMERIC_FAREWELL{1000};

/// Files and sockets of the rest of the process.
constexpr rlim_t NUMERIC_OTHER_FILES = 256;

struct CDaemonDeleter {
    void operator()(MHD_Daemon* pDaemon) const { MHD_stop_daemon(pDaemon); }
};

/// As many files may be open as connections are allowed, if the system lets us.
void RaiseFileLimit(unsigned int uiConnections) {
    rlimit limit{};
    const rlim_t uiWanted = uiConnections + NUMERIC_SPARE_CONNECTIONS + NUMERIC_OTHER_FILES;
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < uiWanted) {
        limit.rlim_cur = std::min(uiWanted, limit.rlim_max);
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace

class CHttpServer::CImpl {
public:
    CImpl(HttpHandler handler, CHttpLimits limits) : m_connections(limits.uiConnections) {
        m_context.handler = std::move(handler);
        m_context.limits = limits;
    }
    ~CImpl() { Stop(); }
    CImpl(const CImpl&) = delete;
    CImpl& operator=(const CImpl&) = delete;

    bool Start(const std::string& strListen, std::string& strWhy);
    const std::string& GetUrl() const { return m_strUrl; }
    void StopListening();
    void Stop();

private:
    bool StartDaemon(std::string& strWhy);
    bool StartDoorkeeper(CSocketHandle listener, std::string& strWhy);

    /// @name What libmicrohttpd calls, on the connection's thread
    /// @{
    static void OnConnection(void* pSelf, MHD_Connection* pConnection, void** ppOurs,
                             MHD_ConnectionNotificationCode eCode);
    static void* OnUrl(void* pSelf, const char* pszUrl, MHD_Connection* pConnection);
    static MHD_Result OnRequest(void* pSelf, MHD_Connection* pConnection, const char* pszUrl,
                                const char* pszMethod, const char* pszVersion, const char* pData,
                                std::size_t* puiBytes, void** ppExchange);
    static void OnEnd(void* pSelf, MHD_Connection* pConnection, void** ppExchange,
                      MHD_RequestTerminationCode eCode);
    /// @}

    CHttpContext m_context;
    std::string m_strUrl;
    CHttpConnections m_connections;
    std::unique_ptr<MHD_Daemon, CDaemonDeleter> m_pDaemon;
    std::unique_ptr<CDoorkeeper> m_pDoorkeeper;
};

bool CHttpServer::CImpl::Start(const std::string& strListen, std::string& strWhy) {
    CListenAddress address;
    if (!address.Parse(strListen, strWhy)) {
        return false;
    }
    CSocketHandle listener = address.Listen(strWhy);
    if (listener.Get() < 0) {
        return false;
    }
    m_strUrl = "http://" + address.GetText();
    m_context.hosts = address.GetHosts();
    RaiseFileLimit(m_context.limits.uiConnections);
    return StartDaemon(strWhy) && StartDoorkeeper(std::move(listener), strWhy);
}

/// The daemon listens nowhere: quiescing it while it works is a race within it that can end the
/// process. The doorkeeper hands it the connections.
bool CHttpServer::CImpl::StartDaemon(std::string& strWhy) {
    const CHttpLimits& limits = m_context.limits;
    const unsigned int uiMost = limits.uiConnections + NUMERIC_SPARE_CONNECTIONS;
    const unsigned int uiThreads = uiMost / NUMERIC_THREAD_CONNECTIONS + 1;
    m_pDaemon.reset(MHD_start_daemon(
        MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_NO_LISTEN_SOCKET, 0,
        nullptr, nullptr, &OnRequest, this,                 //
        MHD_OPTION_NOTIFY_CONNECTION, &OnConnection, this,  //
        MHD_OPTION_URI_LOG_CALLBACK, &OnUrl, this,          //
        MHD_OPTION_NOTIFY_COMPLETED, &OnEnd, this,          //
        MHD_OPTION_THREAD_POOL_SIZE, uiThreads,             //
        MHD_OPTION_CONNECTION_LIMIT, uiThreads * NUMERIC_THREAD_CONNECTIONS,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, NUMERIC_CONNECTION_BYTES,
        // Later than the doorkeeper, who tells why.
        MHD_OPTION_CONNECTION_TIMEOUT, limits.uiSeconds + 1, MHD_OPTION_END));
    if (m_pDaemon == nullptr) {
        strWhy = std::string("cannot start the server's threads: ") + std::strerror(errno);
    }
    return m_pDaemon != nullptr;
}

bool CHttpServer::CImpl::StartDoorkeeper(CSocketHandle listener, std::string& strWhy) {
    CDoorkeeper::CDuties duties;
    duties.letIn = [this](CSocketHandle client) {
        // Closes the socket when it cannot take it.
        sockaddr_in nobody{};
        MHD_add_connection(m_pDaemon.get(), client.Release(),
                           reinterpret_cast<const sockaddr*>(&nobody), sizeof nobody);
    };
    duties.round = [this] { m_context.pPlace->WakeAll(); };
    duties.uiMost = m_context.limits.uiConnections + NUMERIC_SPARE_CONNECTIONS;
    duties.patience = std::chrono::seconds(m_context.limits.uiSeconds);
    m_pDoorkeeper = std::make_unique<CDoorkeeper>(m_connections, std::move(duties));
    return m_pDoorkeeper->Start(std::move(listener), strWhy);
}

void CHttpServer::CImpl::StopListening() {
    if (m_pDoorkeeper != nullptr) {
        m_pDoorkeeper->StopListening();
    }
}

void CHttpServer::CImpl::Stop() {
    m_pDoorkeeper.reset();
    m_context.pPlace->AwaitArrivals(NUMERIC_FAREWELL);
    m_context.pPlace->Close();
    m_pDaemon.reset();
}

void CHttpServer::CImpl::OnConnection(void* pSelf, MHD_Connection* pConnection, void** ppOurs,
                                      MHD_ConnectionNotificationCode eCode) {
    CHttpConnections& connections = static_cast<CImpl*>(pSelf)->m_connections;
    if (eCode == MHD_CONNECTION_NOTIFY_STARTED) {
        *ppOurs = connections.Open(
            MHD_get_connection_info(pConnection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd);
    } else {
        connections.Close(static_cast<CHttpConnection*>(*ppOurs));
    }
}

void* CHttpServer::CImpl::OnUrl(void* pSelf, const char* pszUrl, MHD_Connection* pConnection) {
    void* pOurs =
        MHD_get_connection_info(pConnection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context;
    return new CHttpExchange(static_cast<CImpl*>(pSelf)->m_context,
                             *static_cast<CHttpConnection*>(pOurs), pszUrl);
}

MHD_Result CHttpServer::CImpl::OnRequest(void* /*pSelf*/, MHD_Connection* pConnection,
                                         const char* /*pszUrl*/, const char* pszMethod,
                                         const char* /*pszVersion*/, const char* pData,
                                         std::size_t* puiBytes, void** ppExchange) {
    auto* pExchange = static_cast<CHttpExchange*>(*ppExchange);
    return pExchange->Go(pConnection, pszMethod, pData, *puiBytes) ? MHD_YES : MHD_NO;
}

void CHttpServer::CImpl::OnEnd(void* /*pSelf*/, MHD_Connection* /*pConnection*/, void** ppExchange,
                               MHD_RequestTerminationCode /*eCode*/) {
    delete static_cast<CHttpExchange*>(*ppExchange);
    *ppExchange = nullptr;
}

CHttpServer::CHttpServer(HttpHandler handler, CHttpLimits limits)
    : m_pImpl(std::make_unique<CImpl>(std::move(handler), limits)) {}

CHttpServer::~CHttpServer() = default;

bool CHttpServer::Start(const std::string& strListen, std::string& strWhy) {
    return m_pImpl->Start(strListen, strWhy);
}

std::string CHttpServer::GetUrl() const {
    return m_pImpl->GetUrl();
}

void CHttpServer::StopListening() {
    m_pImpl->StopListening();
}

void CHttpServer::Stop() {
    m_pImpl->Stop();
}
