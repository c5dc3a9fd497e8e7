#include "command/open_store.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <sstream>
#include <string_view>

#include "reference_host/memory_store.h"
#include "reference_host/sqlite_store.h"
#include "reference_host/zookeeper_store.h"

namespace {

constexpr unsigned int NUMERIC_MAX_PORT = 65535;

bool IsPort(std::string_view strText) {
    unsigned int uiPort = 0;
    const char* pszEnd = strText.data() + strText.size();
    const auto result = std::from_chars(strText.data(), pszEnd, uiPort);
    return result.ec == std::errc() && result.ptr == pszEnd && uiPort > 0 &&
           uiPort <= NUMERIC_MAX_PORT;
}

std::string CheckNothing(const std::string& strRest) {
    return strRest.empty() ? "" : "nothing may follow";
}

std::string CheckFile(const std::string& strFile) {
    return strFile.empty() ? "a file must follow" : "";
}

/// "HOST:PORT,HOST:PORT", and "/FOLDER" behind the last.
std::string CheckServers(const std::string& strServers) {
    std::istringstream stream(strServers.substr(0, strServers.find('/')) + ",");
    for (std::string strServer; std::getline(stream, strServer, ',');) {
        const auto colon = strServer.rfind(':');
        if (colon == std::string::npos || colon == 0 || !IsPort(strServer.substr(colon + 1))) {
            return "\"" + strServer + "\" is not HOST:PORT";
        }
    }
    return "";
}

std::shared_ptr<IStore> OpenFile(const std::string& strFile, EOpenStore eOpen,
                                 std::string& strError) {
    std::error_code error;
    if (eOpen != EOpenStore::TO_CREATE && !std::filesystem::exists(strFile, error)) {
        strError = "no such file";
        return nullptr;
    }
    return eOpen == EOpenStore::TO_READ ? CSqliteStore::OpenReadOnly(strFile, strError)
                                        : CSqliteStore::Open(strFile, strError);
}

std::shared_ptr<IStore> OpenServers(const std::string& strServers, EOpenStore, std::string&) {
    CZooKeeperOptions options;
    options.strServers = strServers;
    return std::make_shared<CZooKeeperStore>(options);
}

std::shared_ptr<IStore> OpenMemory(const std::string&, EOpenStore, std::string&) {
    return std::make_shared<CMemoryStore>();
}

struct CStoreKind {
    const char* pszPrefix;
    std::string (*pCheck)(const std::string& strRest);
    std::shared_ptr<IStore> (*pOpen)(const std::string& strRest, EOpenStore eOpen,
                                     std::string& strError);
    bool bKept;
};

constexpr CStoreKind STORE_KINDS[] = {
    {"sqlite:", CheckFile, OpenFile, true},
    {"zookeeper:", CheckServers, OpenServers, true},
    {"memory", CheckNothing, OpenMemory, false},
};

/// The kind of a name, null if there is none; strRest is what follows its prefix.
const CStoreKind* FindKind(const std::string& strName, std::string& strRest) {
    for (const CStoreKind& kind : STORE_KINDS) {
        const std::string_view strPrefix = kind.pszPrefix;
        if (strName.compare(0, strPrefix.size(), strPrefix) == 0) {
            strRest = strName.substr(strPrefix.size());
            return &kind;
        }
    }
    return nullptr;
}

}  // namespace

std::string CheckStoreName(const std::string& strName) {
    std::string strRest;
    const CStoreKind* pKind = FindKind(strName, strRest);
    const std::string strFault = pKind == nullptr ? "no such kind of store; there are sqlite:FILE, "
                                                    "zookeeper:HOST:PORT,HOST:PORT and memory"
                                                  : pKind->pCheck(strRest);
    return strFault.empty() ? "" : "\"" + strName + "\": " + strFault;
}

std::shared_ptr<IStore> OpenStore(const std::string& strName, EOpenStore eOpen,
                                  std::string& strError) {
    std::string strRest;
    const CStoreKind* pKind = FindKind(strName, strRest);
    if (pKind == nullptr) {
        strError = CheckStoreName(strName);
        return nullptr;
    }
    return pKind->pOpen(strRest, eOpen, strError);
}

bool IsStoreKept(const std::string& strName) {
    std::string strRest;
    const CStoreKind* pKind = FindKind(strName, strRest);
    return pKind != nullptr && pKind->bKept;
}
