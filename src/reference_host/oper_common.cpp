#include "common_service/oper_common.h"

#include <arpa/inet.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "operation_log/operation_log.h"
#include "reference_host/store.h"
#include "reference_host/strict_json.h"

using namespace operation_log;

namespace {

constexpr char PSZ_READ[] = "read store node";
constexpr char PSZ_WRITE[] = "write store node";

/// The store behind the front, and the lock under which it is changed. A call works on a copy of
/// the pointer, so that a store that is taken away lives until the calls in it have ended.
struct CFront {
    std::mutex mutex;
    std::shared_ptr<IStore> pStore;
};

CFront& Front() {
    static CFront& front = *new CFront;
    return front;
}

std::shared_ptr<IStore> CurrentStore() {
    const std::lock_guard<std::mutex> guard(Front().mutex);
    return Front().pStore;
}

std::atomic<void (*)(const std::string&)> g_pNodeEventHandler{nullptr};

/// A large text, taken from the calling thread's spare one and given back to it: the texts of
/// documents follow each other, and none has to be allocated anew. A call within a call finds no
/// spare text and has one of its own.
class CReusedText {
public:
    CReusedText() : m_strText(std::move(Spare())) {}
    ~CReusedText() { Spare() = std::move(m_strText); }
    CReusedText(const CReusedText&) = delete;
    CReusedText& operator=(const CReusedText&) = delete;

    std::string& operator*() { return m_strText; }

private:
    static std::string& Spare() {
        thread_local std::string strSpare;
        return strSpare;
    }

    std::string m_strText;
};

/// Asks the document, and turns whatever it throws into a code and a line of the caller.
template <typename Question>
int AskDocument(const CPlacedText& operation, const std::string& strPath,
                const Question& question) {
    std::string strReason = "unknown";
    try {
        return question();
    } catch (const std::exception& exception) {
        strReason = exception.what();
    } catch (...) {
    }
    return LogFailure(operation, ORVA_DATA_INVALID, "document of %s threw an exception: %s",
                      strPath.c_str(), strReason.c_str());
}

/// Was the text cut to fit its buffer? Only one that fills it can have been. Of those, a whole one
/// ends in the writer's only line feed or can be parsed; but the head of a number is a number.
bool IsCut(const std::string& strText, unsigned int uiBufLen) {
    if (strText.size() + 1 < uiBufLen) {
        return false;
    }
    if (strText.size() == uiBufLen) {
        return true;
    }
    if (!strText.empty() && strText.back() == '\n') {
        return false;
    }
    Json::Value root;
    return ParseStrictJson(strText, root) || root.isNumeric();
}

int RenderDocument(CBaseJsonObject& doc, unsigned int uiBufLen, std::string& strText) {
    strText.resize(uiBufLen);
    const int iRet = doc.ToJson(strText.data(), uiBufLen);
    strText.resize(strnlen(strText.data(), uiBufLen));
    return iRet;
}

}  // namespace

void SetStore(std::shared_ptr<IStore> pStore) {
    const std::lock_guard<std::mutex> guard(Front().mutex);
    Front().pStore.swap(pStore);
}

void SetNodeEventHandler(void (*pHandler)(const std::string& strPath)) {
    g_pNodeEventHandler = pHandler;
}

void ClusterNodeEventWatcher(zhandle_t*, int, int, const char* path, void*) {
    const auto pHandler = g_pNodeEventHandler.load();
    if (pHandler != nullptr && path != nullptr) {
        pHandler(path);
    }
}

int COperCommon::GetDataFromZK(const char* path, void* watcher, unsigned int bufLen,
                               CBaseJsonObject* doc, bool& bDataEmpty) {
    bDataEmpty = false;
    if (path == nullptr || doc == nullptr) {
        return ORVA_PARA_INVALID;
    }
    const std::shared_ptr<IStore> pStore = CurrentStore();
    if (pStore == nullptr) {
        return STORE_NOT_SET;
    }
    CReusedText text;
    (*text).clear();
    CStoreAnswer answer{false, std::move(*text)};
    const int iRet = pStore->Read(path, reinterpret_cast<StoreWatcher>(watcher), answer);
    if (iRet != ORVA_SUCCEED) {
        return iRet;
    }
    if (!answer.text || answer.text->empty()) {
        bDataEmpty = true;
        return answer.bExists ? static_cast<int>(ORVA_SUCCEED) : STORE_NODE_ABSENT;
    }
    if (answer.text->size() >= bufLen) {
        return LogFailure(PSZ_READ, STORE_TEXT_TOO_LONG, "text of %s has %zu characters, buffer %u",
                          path, answer.text->size(), bufLen);
    }
    *text = std::move(*answer.text);
    return AskDocument(PSZ_READ, path, [&] { return doc->ParseJson((*text).c_str()); });
}

int COperCommon::SetDataToZK(const char* path, unsigned int bufLen, CBaseJsonObject* doc) {
    if (path == nullptr || doc == nullptr || bufLen == 0) {
        return ORVA_PARA_INVALID;
    }
    const std::shared_ptr<IStore> pStore = CurrentStore();
    if (pStore == nullptr) {
        return STORE_NOT_SET;
    }
    std::string strText;
    const int iRet =
        AskDocument(PSZ_WRITE, path, [&] { return RenderDocument(*doc, bufLen, strText); });
    if (iRet != ORVA_SUCCEED) {
        return iRet;
    }
    if (IsCut(strText, bufLen)) {
        return LogFailure(PSZ_WRITE, ORVA_DATA_INVALID,
                          "text of %s takes %zu of a buffer of %u and is not whole", path,
                          strText.size(), bufLen);
    }
    if (IsNearlyFull(strText.size(), bufLen)) {
        LogWarning(PSZ_WRITE, "text of %s takes %zu of a buffer of %u", path, strText.size(),
                   bufLen);
    }
    return pStore->Write(path, strText);
}

unsigned int COperCommon::IPToUint(const std::string& strIp) {
    in_addr address{};
    return inet_pton(AF_INET, strIp.c_str(), &address) == 1 ? ntohl(address.s_addr) : 0;
}
