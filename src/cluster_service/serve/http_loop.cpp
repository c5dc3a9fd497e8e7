#include "serve/http_loop.h"

#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <thread>
#include <unordered_map>
#include <utility>

#include "serve/loop_mail.h"

namespace {

using Clock = CHttpExchange::Clock;

/// A connection's memory: the head of a request, so large that most floods are told what they are,
/// or a piece of a body or answer. All of it is cleared for each request, which takes time.
constexpr std::size_t NUMERIC_CONNECTION_BYTES = 32768;

/// So long a loop waits for the answers to what it has just asked before it goes on without them.
constexpr std::chrono::milliseconds NUMERIC_MOMENT{2};

/// So often requests are looked at that take too long, and streams may say that they are alive.
constexpr std::chrono::milliseconds NUMERIC_LOOK{500};

/// So long, at most, answers may be on their way when the loop ends.
constexpr std::chrono::milliseconds NUMERIC_FAREWELL{1000};

struct CDaemonDeleter {
    void operator()(MHD_Daemon* pDaemon) const { MHD_stop_daemon(pDaemon); }
};

/// A client's connection and the request on it.
struct CConnection {
    CClient client;                            ///< whose socket libmicrohttpd has
    int iSocket = -1;                          ///< that one
    std::optional<CHttpExchange> exchange;     ///< once the first line of a request is here
    Clock::time_point without = Clock::now();  ///< since when there is none
};

CConnection& OursOf(MHD_Connection* pConnection) {
    return *static_cast<CConnection*>(
        MHD_get_connection_info(pConnection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
}

}  // namespace

class CHttpLoop::CImpl {
public:
    explicit CImpl(CHttpContext& context) : m_context(context) {}
    ~CImpl();
    CImpl(const CImpl&) = delete;
    CImpl& operator=(const CImpl&) = delete;

    bool Start(std::string& strWhy);
    void LetIn(CSocketHandle client);
    void End();

private:
    void Run();
    void Turn();
    void TakeMail();
    void Look();
    bool HasMore() const;
    bool HasAnswersUnderWay() const;
    void EndRests();

    /// @name What libmicrohttpd calls
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

    CHttpContext& m_context;
    const std::shared_ptr<CLoopMail> m_pMail = std::make_shared<CLoopMail>();
    std::atomic<bool> m_bEnd{false};
    std::thread m_thread;

    /// @name The loop's thread alone, once it runs
    /// @{
    std::unique_ptr<MHD_Daemon, CDaemonDeleter> m_pDaemon;
    std::unordered_map<CConnection*, std::unique_ptr<CConnection>> m_connections;
    CClient* m_pArriving = nullptr;  ///< whom libmicrohttpd is given
    Clock::time_point m_looked;
    /// @}
};

CHttpLoop::CImpl::~CImpl() {
    if (m_thread.joinable()) {
        End();
        m_thread.join();
    }
}

/// The daemon listens nowhere: the doorkeeper lets the clients in.
bool CHttpLoop::CImpl::Start(std::string& strWhy) {
    if (!m_pMail->Open()) {
        strWhy = std::string("cannot make an event: ") + std::strerror(errno);
        return false;
    }
    const CHttpLimits& limits = m_context.limits;
    m_pDaemon.reset(MHD_start_daemon(
        MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_NO_LISTEN_SOCKET, 0, nullptr, nullptr,
        &OnRequest, this,                                   //
        MHD_OPTION_NOTIFY_CONNECTION, &OnConnection, this,  //
        MHD_OPTION_URI_LOG_CALLBACK, &OnUrl, this,          //
        MHD_OPTION_NOTIFY_COMPLETED, &OnEnd, this,          //
        MHD_OPTION_CONNECTION_LIMIT, limits.uiConnections + CHttpContext::NUMERIC_SPARE_CONNECTIONS,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, NUMERIC_CONNECTION_BYTES,
        // Later than the look that tells why.
        MHD_OPTION_CONNECTION_TIMEOUT, limits.uiSeconds + 1, MHD_OPTION_END));
    if (m_pDaemon == nullptr) {
        strWhy = std::string("cannot start a server's loop: ") + std::strerror(errno);
        return false;
    }
    m_thread = std::thread([this] { Run(); });
    return true;
}

void CHttpLoop::CImpl::End() {
    m_bEnd = true;
    m_pMail->Wake();
}

/// Clients are counted as they come, not as loops get to them.
void CHttpLoop::CImpl::LetIn(CSocketHandle client) {
    const bool bTooMany = ++m_context.uiConnections > m_context.limits.uiConnections;
    m_pMail->Add({std::move(client), Seat(&m_context.uiConnections), bTooMany});
}

void CHttpLoop::CImpl::Run() {
    while (!m_bEnd) {
        Turn();
    }
    const Clock::time_point deadline = Clock::now() + NUMERIC_FAREWELL;
    while (HasAnswersUnderWay() && Clock::now() < deadline) {
        Turn();
    }
    EndRests();
    m_pDaemon.reset();
}

void CHttpLoop::CImpl::Turn() {
    TakeMail();
    MHD_run(m_pDaemon.get());
    m_context.news.onAsked();
    Look();
    m_pMail->AwaitExpected(NUMERIC_MOMENT);
    if (!HasMore()) {
        const auto* pInfo = MHD_get_daemon_info(m_pDaemon.get(), MHD_DAEMON_INFO_EPOLL_FD);
        m_pMail->Sleep(pInfo->epoll_fd, NUMERIC_LOOK);
    }
}

void CHttpLoop::CImpl::TakeMail() {
    CLoopMail::CContents contents = m_pMail->Take();
    for (CClient& client : contents.clients) {
        m_pArriving = &client;
        // Closes the socket when it cannot take it.
        sockaddr_in nobody{};
        MHD_add_connection(m_pDaemon.get(), client.socket.Release(),
                           reinterpret_cast<const sockaddr*>(&nobody), sizeof nobody);
    }
    for (MHD_Connection* const pConnection : contents.woken) {
        MHD_resume_connection(pConnection);
    }
}

void CHttpLoop::CImpl::Look() {
    const Clock::time_point now = Clock::now();
    if (now - m_looked < NUMERIC_LOOK) {
        return;
    }
    m_looked = now;
    // One that says nothing ends after half of that by itself: this one lets a first line drip in.
    const auto most = std::chrono::seconds(2 * m_context.limits.uiSeconds);
    for (const auto& [pConnection, pOwned] : m_connections) {
        if (pConnection->exchange) {
            pConnection->exchange->Look(now);
        } else if (now - pConnection->without >= most) {
            shutdown(pConnection->iSocket, SHUT_RDWR);
        }
    }
}

/// Is there more to do at once?
bool CHttpLoop::CImpl::HasMore() const {
    MHD_UNSIGNED_LONG_LONG ullMilliseconds = 0;
    return MHD_get_timeout(m_pDaemon.get(), &ullMilliseconds) == MHD_YES && ullMilliseconds == 0;
}

bool CHttpLoop::CImpl::HasAnswersUnderWay() const {
    return std::any_of(m_connections.begin(), m_connections.end(), [](const auto& connection) {
        return connection.first->exchange && connection.first->exchange->IsUnderWay();
    });
}

/// libmicrohttpd must not be stopped while a connection is suspended.
void CHttpLoop::CImpl::EndRests() {
    for (const auto& [pConnection, pOwned] : m_connections) {
        if (pConnection->exchange) {
            pConnection->exchange->EndRest();
        }
    }
    m_pMail->Take();  // whoever was let in last is let go
}

void CHttpLoop::CImpl::OnConnection(void* pSelf, MHD_Connection* pConnection, void** ppOurs,
                                    MHD_ConnectionNotificationCode eCode) {
    auto& self = *static_cast<CImpl*>(pSelf);
    if (eCode == MHD_CONNECTION_NOTIFY_STARTED) {
        auto pOurs = std::make_unique<CConnection>();
        pOurs->client = std::move(*self.m_pArriving);
        pOurs->iSocket =
            MHD_get_connection_info(pConnection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
        *ppOurs = pOurs.get();
        self.m_connections.emplace(pOurs.get(), std::move(pOurs));
    } else {
        self.m_connections.erase(static_cast<CConnection*>(*ppOurs));
    }
}

void* CHttpLoop::CImpl::OnUrl(void* pSelf, const char* pszUrl, MHD_Connection* pConnection) {
    auto& self = *static_cast<CImpl*>(pSelf);
    CConnection& ours = OursOf(pConnection);
    return &ours.exchange.emplace(self.m_context, self.m_pMail, pConnection, ours.client.bTooMany,
                                  pszUrl);
}

MHD_Result CHttpLoop::CImpl::OnRequest(void* /*pSelf*/, MHD_Connection* /*pConnection*/,
                                       const char* /*pszUrl*/, const char* pszMethod,
                                       const char* /*pszVersion*/, const char* pData,
                                       std::size_t* puiBytes, void** ppExchange) {
    auto* pExchange = static_cast<CHttpExchange*>(*ppExchange);
    return pExchange->Go(pszMethod, pData, *puiBytes) ? MHD_YES : MHD_NO;
}

void CHttpLoop::CImpl::OnEnd(void* /*pSelf*/, MHD_Connection* pConnection, void** /*ppExchange*/,
                             MHD_RequestTerminationCode /*eCode*/) {
    CConnection& ours = OursOf(pConnection);
    ours.exchange.reset();
    ours.without = Clock::now();
}

CHttpLoop::CHttpLoop(CHttpContext& context) : m_pImpl(std::make_unique<CImpl>(context)) {}

CHttpLoop::~CHttpLoop() = default;

bool CHttpLoop::Start(std::string& strWhy) {
    return m_pImpl->Start(strWhy);
}

void CHttpLoop::LetIn(CSocketHandle client) {
    m_pImpl->LetIn(std::move(client));
}

void CHttpLoop::End() {
    m_pImpl->End();
}
