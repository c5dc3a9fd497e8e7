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

std::string FindFileDamage(const std::string& strFile) {
    return CSqliteStore::FindDamage(strFile);
}

/// Stands for a file that is too damaged to be opened, and hands out nothing.
class CDamagedStore : public IStore {
public:
    int Read(const std::string&, StoreWatcher, CStoreAnswer&) override { return CODE_DAMAGED; }
    int Write(const std::string&, const std::string&) override { return CODE_DAMAGED; }

private:
    static constexpr int CODE_DAMAGED = 11;  ///< SQLite's SQLITE_CORRUPT
};

std::shared_ptr<IStore> OpenFile(const std::string& strFile, EOpenStore eOpen,
                                 std::string& strError) {
    std::error_code error;
    const bool bThere = std::filesystem::exists(strFile, error);
    const bool bMayBeMissing = eOpen == EOpenStore::TO_CREATE || eOpen == EOpenStore::TO_FORESEE;
    if (!bThere && !bMayBeMissing) {
        strError = "no such file";
        return nullptr;
    }
    const bool bLooksOnly = eOpen == EOpenStore::TO_READ || eOpen == EOpenStore::TO_CHECK ||
                            (eOpen == EOpenStore::TO_FORESEE && bThere);
    if (!bLooksOnly) {
        return CSqliteStore::Open(strFile, strError);
    }
    std::shared_ptr<IStore> pStore = CSqliteStore::OpenReadOnly(strFile, strError);
    if (pStore == nullptr && eOpen == EOpenStore::TO_CHECK && !FindFileDamage(strFile).empty()) {
        pStore = std::make_shared<CDamagedStore>();
    }
    return pStore;
}

std::shared_ptr<IStore> OpenServers(const std::string& strServers, EOpenStore, std::string&) {
    CZooKeeperOptions options;
    options.strServers = strServers;
    return std::make_shared<CZooKeeperStore>(options);
}

std::shared_ptr<IStore> OpenMemory(const std::string&, EOpenStore, std::string&) {
    return std::make_shared<CMemoryStore>();
}

std::string FindNoDamage(const std::string&) {
    return "";
}

struct CStoreKind {
    const char* pszPrefix;
    std::string (*pCheck)(const std::string& strRest);
    std::shared_ptr<IStore> (*pOpen)(const std::string& strRest, EOpenStore eOpen,
                                     std::string& strError);
    std::string (*pFindDamage)(const std::string& strRest);
    bool bKept;
};

constexpr CStoreKind STORE_KINDS[] = {
    {"sqlite:", CheckFile, OpenFile, FindFileDamage, true},
    {"zookeeper:", CheckServers, OpenServers, FindNoDamage, true},
    {"memory", CheckNothing, OpenMemory, FindNoDamage, false},
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

std::string FindStoreDamage(const std::string& strName) {
    std::string strRest;
    const CStoreKind* pKind = FindKind(strName, strRest);
    return pKind == nullptr ? "" : pKind->pFindDamage(strRest);
}
