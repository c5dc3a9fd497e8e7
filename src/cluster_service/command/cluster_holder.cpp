#include "command/cluster_holder.h"

#include <json/value.h>
#include <json/writer.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <chrono>
#include <ctime>
#include <thread>

#include "command/exit_code.h"
#include "framework_service/store_path.h"
#include "reference_host/code_text.h"
#include "reference_host/shown_text.h"
#include "reference_host/strict_json.h"

namespace {

constexpr char PSZ_HOLDER_NODE[] = "/Holder";
constexpr char PSZ_SERVICE[] = "service";
constexpr char PSZ_HOST[] = "host";
constexpr char PSZ_PROCESS[] = "process";
constexpr char PSZ_SINCE[] = "since";

constexpr std::chrono::milliseconds HOLD_PAUSE{100};

std::string ThisHost() {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string TimeText(int64_t iSeconds) {
    const auto time = static_cast<std::time_t>(iSeconds);
    std::tm parts{};
    std::array<char, 64> text{};
    if (gmtime_r(&time, &parts) == nullptr) {
        return std::to_string(iSeconds);
    }
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &parts);
    return text.data();
}

std::string LineOf(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

/// As a part of a path: every byte that could mean something there in its hexadecimal form.
std::string UrlPart(const std::string& strText) {
    constexpr char PSZ_DIGITS[] = "0123456789ABCDEF";
    std::string strPart;
    for (const char c : strText) {
        const auto uc = static_cast<unsigned char>(c);
        if (std::isalnum(uc) != 0 || c == '-' || c == '.' || c == '_' || c == '~') {
            strPart += c;
        } else {
            strPart += {'%', PSZ_DIGITS[uc >> 4U], PSZ_DIGITS[uc & 15U]};
        }
    }
    return strPart;
}

std::string TextOf(const Json::Value& root, const char* pszKey) {
    return root[pszKey].isString() ? root[pszKey].asString() : "";
}

int64_t NumberOf(const Json::Value& root, const char* pszKey) {
    return root[pszKey].isInt64() ? root[pszKey].asInt64() : 0;
}

}  // namespace

std::string HolderPath(const std::string& strClusterCode) {
    return PSZ_STORE_ROOT + strClusterCode + PSZ_HOLDER_NODE;
}

CClusterHolder ThisProcess(const std::string& strServiceUrl, int64_t iNow) {
    return {strServiceUrl, ThisHost(), getpid(), iNow};
}

std::string HolderText(const CClusterHolder& holder) {
    Json::Value root;
    root[PSZ_SERVICE] = holder.strService;
    root[PSZ_HOST] = holder.strHost;
    root[PSZ_PROCESS] = static_cast<Json::Int64>(holder.iProcess);
    root[PSZ_SINCE] = static_cast<Json::Int64>(holder.iSince);
    return LineOf(root);
}

CClusterHolder ReadHolder(const CStoreAnswer& holder) {
    Json::Value root;
    if (ParseStrictJson(holder.text.value_or(""), root) || !root.isObject()) {
        return {};
    }
    return {TextOf(root, PSZ_SERVICE), TextOf(root, PSZ_HOST), NumberOf(root, PSZ_PROCESS),
            NumberOf(root, PSZ_SINCE)};
}

std::string HolderWords(const CClusterHolder& holder) {
    std::string strWords = "a service";
    if (!holder.strService.empty()) {
        strWords = "the service at " + ShownText(holder.strService);
    }
    if (holder.iProcess != 0) {
        strWords += ", process " + std::to_string(holder.iProcess);
    }
    if (!holder.strHost.empty()) {
        strWords += " on " + ShownText(holder.strHost);
    }
    if (holder.iSince != 0) {
        strWords += ", since " + TimeText(holder.iSince);
    }
    return strWords;
}

int HoldOrWait(IStore& store, const std::string& strPath, const std::string& strText,
               const HoldLost& onLost, const OnWaiting& onWaiting, CStoreAnswer& holder) {
    const auto begun = std::chrono::steady_clock::now();
    for (;;) {
        const int iCode = store.Hold(strPath, strText, onLost, holder);
        const auto waited = std::chrono::steady_clock::now() - begun;
        if (iCode != STORE_NAME_HELD || waited >= store.GetHoldAfterlife() || !onWaiting(holder)) {
            return iCode;
        }
        std::this_thread::sleep_for(HOLD_PAUSE);
    }
}

CServiceRequest PromotionRequest(const std::string& strNodeId) {
    Json::Value body;
    body["node"] = strNodeId;
    return {"POST", "/api/v1/center-db/promote", LineOf(body)};
}

CServiceRequest RemovalRequest(const std::string& strNodeId, const std::string& strContainerType) {
    return {"DELETE", "/api/v1/containers/" + UrlPart(strContainerType) + "/" + UrlPart(strNodeId),
            ""};
}

int CheckNobodyHolds(IStore& store, const CClusterPlace& place,
                     const std::optional<CServiceRequest>& request, std::ostream& errors) {
    CStoreAnswer answer;
    const int iCode = store.FindHolder(HolderPath(place.strClusterCode), answer);
    if (iCode != 0) {
        errors << PlaceText(place) << ": " << CodeText(iCode) << '\n';
        return EXIT_COULD_NOT;
    }
    if (!answer.bExists) {
        return EXIT_DONE;
    }
    const CClusterHolder holder = ReadHolder(answer);
    errors << PlaceText(place) << " is run by " << HolderWords(holder) << "; nothing was changed\n";
    if (request && !holder.strService.empty()) {
        errors << "ask the service: " << request->pszMethod << ' ' << ShownText(holder.strService)
               << request->strPath << (request->strBody.empty() ? "" : " ")
               << ShownText(request->strBody) << '\n';
    } else {
        errors << "no request to a service does this: stop it first\n";
    }
    errors << "--force changes the store all the same\n";
    return EXIT_REFUSED;
}
