#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "serve/http.h"
#include "serve/loop_mail.h"
#include "serve/service_error.h"

/// The way of one answer from whoever gives it, on any thread, to the connection that waits for it.
/// What comes after the connection has gone, or after the first answer, goes nowhere.
class CHttpAnswer : public std::enable_shared_from_this<CHttpAnswer> {
public:
    explicit CHttpAnswer(std::shared_ptr<CLoopMail> pMail) : m_pMail(std::move(pMail)) {}

    /// @name On any thread
    /// @{
    void Send(CHttpReply reply);
    void Stream(const char* pszType, std::unique_ptr<IReplyStream> pStream);

    /// An error, if nobody has answered.
    void Fail(EServiceFault eFault);
    /// @}

    /// @name On the connection's thread
    /// @{

    /// Gives the answer to the connection, or lets it rest until there is one; of a stream the
    /// header alone if bHead. False: the connection must end.
    bool Give(MHD_Connection* pConnection, bool bHead);

    /// Has an answer been given that is not a stream?
    bool IsUnderWay() const;

    /// Lets a stream look whether it has something; its client's going is noticed so.
    void LookAtStream();

    /// The next piece of the stream, as libmicrohttpd's content readers answer.
    ssize_t Read(char* pBuffer, std::size_t uiMost);

    /// The request is over: what streams is destroyed.
    void End();
    /// @}

private:
    struct CContent {
        CHttpReply reply;
        std::unique_ptr<IReplyStream> pStream;  ///< in place of the reply's body
    };

    void Take(CContent content);
    std::optional<CContent> TakeContent();
    bool Queue(MHD_Connection* pConnection, CContent content);
    void BeginStream(MHD_Connection* pConnection, std::unique_ptr<IReplyStream> pStream);

    const std::shared_ptr<CLoopMail> m_pMail;
    CRest m_rest;

    mutable std::mutex m_mutex;  ///< guards the next three
    bool m_bAnswered = false;
    bool m_bUnderWay = false;           ///< to be sent whole before the server stops
    std::optional<CContent> m_content;  ///< between the answer and its way to the connection

    /// @name The connection's thread alone
    /// @{
    MHD_Connection* m_pConnection = nullptr;  ///< of the stream
    std::unique_ptr<IReplyStream> m_pStream;
    std::string m_strText;  ///< read from the stream
    std::size_t m_uiSent = 0;
    bool m_bStreamEnds = false;
    /// @}
};
