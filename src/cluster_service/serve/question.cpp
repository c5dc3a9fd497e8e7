#include "serve/question.h"

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "serve/service_error.h"

namespace {

constexpr unsigned int NUMERIC_OK = 200;
constexpr unsigned int NUMERIC_NOT_MODIFIED = 304;

std::string TagOf(const std::string& strText) {
    char szTag[24];
    std::snprintf(szTag, sizeof(szTag), "\"%016zx\"", std::hash<std::string>()(strText));
    return szTag;
}

/// A tag holds no quotation mark within: it is in the list when it is anywhere in its text.
bool HasTag(const std::string& strIfNoneMatch, const std::string& strTag) {
    return strIfNoneMatch == "*" || strIfNoneMatch.find(strTag) != std::string::npos;
}

void Tag(const CHttpRequest& request, CHttpReply& reply) {
    const std::string strTag = TagOf(*reply.pBody);
    if (HasTag(request.strIfNoneMatch, strTag)) {
        reply.uiStatus = NUMERIC_NOT_MODIFIED;
        reply.pBody = std::make_shared<const std::string>();
    }
    reply.headers["ETag"] = strTag;
    reply.headers["Cache-Control"] = "no-cache";
}

}  // namespace

void AnswerQuestion(const CAsked& asked, Question question, bool bNeedsCluster) {
    const ViewPointer pView = asked.context.view.Get();
    if (bNeedsCluster && (!pView->strNotReady.empty() || !pView->moment)) {
        return asked.pReplyTo->Send(ErrorReply(EServiceFault::NOT_READY, pView->strNotReady));
    }
    CHttpReply reply = question(asked, *pView);
    if (reply.uiStatus == NUMERIC_OK) {
        Tag(asked.request, reply);
    }
    asked.pReplyTo->Send(std::move(reply));
}
