#include <iostream>
#include <memory>
#include <string>

#include "reference_host/sqlite_store.h"
#include "reference_host/zookeeper_store.h"
#include "support/name_holder_process.h"

namespace {

std::shared_ptr<IStore> OpenStore(const std::string& strStore) {
    const std::string strPlace = strStore.substr(strStore.find(':') + 1);
    if (strStore.rfind("zookeeper:", 0) == 0) {
        return std::make_shared<CZooKeeperStore>(
            CZooKeeperOptions{strPlace, NAME_HOLDER_SESSION, std::chrono::seconds(20)});
    }
    std::string strError;
    return CSqliteStore::Open(strPlace, strError);
}

void Say(const std::string& strLine) {
    std::cout << strLine + "\n" << std::flush;
}

}  // namespace

/// name_holder STORE PATH TEXT: holds a name and tells how it goes, a line each, until its input
/// ends. A line "release" lets go of it, a line "commit" writes below it what a holder may.
int main(int argc, char** argv) {
    const std::shared_ptr<IStore> pStore = argc == 4 ? OpenStore(argv[1]) : nullptr;
    if (pStore == nullptr) {
        return 2;
    }
    const std::string strPath = argv[2];
    CStoreAnswer holder;
    const int iRet = pStore->Hold(
        strPath, argv[3], [] { Say("lost"); }, holder);
    Say(iRet == 0                 ? "held"
        : iRet == STORE_NAME_HELD ? "refused, held by " + holder.text.value_or("")
                                  : "code " + std::to_string(iRet));
    for (std::string strLine; std::getline(std::cin, strLine);) {
        if (strLine == "release") {
            Say("released, code " + std::to_string(pStore->Release(strPath)));
        } else if (strLine == "commit") {
            const int iCode =
                pStore->Commit({{strPath, holder.iVersion}}, {{strPath + "Commit", argv[3]}});
            Say("committed, code " + std::to_string(iCode));
        }
    }
}
