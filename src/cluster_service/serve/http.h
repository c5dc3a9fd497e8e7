#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

/// What a client asked, whole.
struct CHttpRequest {
    std::string strMethod;                     ///< "GET", also for HEAD
    std::string strPath;                       ///< as it was sent, still percent-encoded
    std::map<std::string, std::string> query;  ///< decoded; of a name twice the last one counts
    std::string strBody;
    std::string strIfNoneMatch;
    std::string strLastEventId;
};

/// What it is answered.
struct CHttpReply {
    unsigned int uiStatus = 200;
    const char* pszType = "application/json";
    std::shared_ptr<const std::string> pBody;  ///< shared, so that what seldom changes is made once
    std::map<std::string, std::string> headers;  ///< beside Content-Type and Content-Length

    CHttpReply() = default;
    CHttpReply(unsigned int status, std::string strBody)
        : uiStatus(status), pBody(std::make_shared<const std::string>(std::move(strBody))) {}
};

/// A text that comes as time goes on, for as long as its client listens.
class IReplyStream {
public:
    virtual ~IReplyStream() = default;

    /// Appends what there is by now, at most some tens of kilobytes; nothing when there is nothing
    /// yet. False at the end. On a thread of the server, after each wake and now and then without,
    /// so that a stream may say that it is alive: a client that is gone is noticed by writing to it
    /// alone.
    virtual bool Read(std::string& strText) = 0;

    /// The server wants to be told when Read has something again. wake may be called on any thread,
    /// any number of times, until the stream is destroyed.
    virtual void Listen(std::function<void()> wake) = 0;
};

/// The place where the answer to one request goes: once, from any thread, now or later. When the
/// last copy goes without an answer, the client gets a named error.
class IReplyTo {
public:
    virtual ~IReplyTo() = default;
    virtual void Send(CHttpReply reply) = 0;

    /// Status 200 and the stream, from now until it ends, the client goes or the server stops.
    virtual void Stream(const char* pszType, std::unique_ptr<IReplyStream> pStream) = 0;
};

/// Answers a request. Called on a thread of the server, which waits for it to return.
using HttpHandler =
    std::function<void(const CHttpRequest& request, std::shared_ptr<IReplyTo> pReplyTo)>;
