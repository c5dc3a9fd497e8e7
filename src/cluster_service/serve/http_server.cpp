#include "serve/http_server.h"

#include <sys/resource.h>

#include <algorithm>
#include <list>
#include <utility>

#include "serve/doorkeeper.h"
#include "serve/http_exchange.h"
#include "serve/http_loop.h"
#include "serve/listen_address.h"

namespace {

/// One loop works while another waits for the engine.
constexpr int NUMERIC_LOOPS = 2;

/// Files and sockets of the rest of the process.
constexpr rlim_t NUMERIC_OTHER_FILES = 256;

/// As many files may be open as connections are allowed, if the system lets us.
void RaiseFileLimit(unsigned int uiConnections) {
    rlimit limit{};
    const rlim_t uiWanted =
        uiConnections + CHttpContext::NUMERIC_SPARE_CONNECTIONS + NUMERIC_OTHER_FILES;
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < uiWanted) {
        limit.rlim_cur = std::min(uiWanted, limit.rlim_max);
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace

class CHttpServer::CImpl {
public:
    CImpl(HttpHandler handler, CHttpLimits limits, CHttpNews news) {
        m_context.handler = std::move(handler);
        m_context.limits = limits;
        m_context.news = std::move(news);
    }
    ~CImpl() { Stop(); }
    CImpl(const CImpl&) = delete;
    CImpl& operator=(const CImpl&) = delete;

    bool Start(const std::string& strListen, std::string& strWhy);
    const std::string& GetUrl() const { return m_strUrl; }
    void StopListening();
    void Stop();

private:
    bool StartLoops(std::string& strWhy);
    bool StartDoorkeeper(CSocketHandle listener, std::string& strWhy);

    CHttpContext m_context;
    std::string m_strUrl;
    std::list<CHttpLoop> m_loops;
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
    return StartLoops(strWhy) && StartDoorkeeper(std::move(listener), strWhy);
}

bool CHttpServer::CImpl::StartLoops(std::string& strWhy) {
    for (int i = 0; i < NUMERIC_LOOPS; ++i) {
        if (!m_loops.emplace_back(m_context).Start(strWhy)) {
            return false;
        }
    }
    return true;
}

bool CHttpServer::CImpl::StartDoorkeeper(CSocketHandle listener, std::string& strWhy) {
    CDoorkeeper::CDuties duties;
    duties.hasRoom = [this] {
        return m_context.uiConnections <
               m_context.limits.uiConnections + CHttpContext::NUMERIC_SPARE_CONNECTIONS;
    };
    duties.letIn = [this, next = m_loops.begin()](CSocketHandle client) mutable {
        next->LetIn(std::move(client));
        next = std::next(next) == m_loops.end() ? m_loops.begin() : std::next(next);
    };
    m_pDoorkeeper = std::make_unique<CDoorkeeper>(std::move(duties));
    return m_pDoorkeeper->Start(std::move(listener), strWhy);
}

void CHttpServer::CImpl::StopListening() {
    if (m_pDoorkeeper != nullptr) {
        m_pDoorkeeper->StopListening();
    }
}

void CHttpServer::CImpl::Stop() {
    m_pDoorkeeper.reset();
    m_context.bClosing = true;
    for (CHttpLoop& loop : m_loops) {
        loop.End();
    }
    m_loops.clear();
}

CHttpServer::CHttpServer(HttpHandler handler, CHttpLimits limits, CHttpNews news)
    : m_pImpl(std::make_unique<CImpl>(std::move(handler), limits, std::move(news))) {}

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
