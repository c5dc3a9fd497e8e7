#include <sqlite3.h>

#include <stdexcept>

#include "common_service/oper_common.h"
#include "log_lines/log_lines.h"
#include "reference_host/sqlite_store.h"
#include "support/text_document.h"

// The lines of the ZooKeeper store take a server, and stand in the integration tests.

namespace {

std::shared_ptr<CSqliteStore> OpenSqlite(CScene& scene) {
    std::string strError;
    return CSqliteStore::Open(scene.strDir + "/store", strError, 10);
}

int Read(CTextDocument& document, unsigned int uiBufLen) {
    bool bDataEmpty = false;
    return COperCommon::GetDataFromZK("/a", nullptr, uiBufLen, &document, bDataEmpty);
}

int Write(CTextDocument& document, unsigned int uiBufLen) {
    return COperCommon::SetDataToZK("/a", uiBufLen, &document);
}

/// A store that someone else has taken the table from.
std::shared_ptr<CSqliteStore> OpenRobbed(CScene& scene) {
    auto pStore = OpenSqlite(scene);
    pStore->Write("/a", "text");
    sqlite3* pDatabase = nullptr;
    sqlite3_open((scene.strDir + "/store").c_str(), &pDatabase);
    sqlite3_exec(pDatabase, "DROP TABLE node", nullptr, nullptr, nullptr);
    sqlite3_close(pDatabase);
    return pStore;
}

const std::vector<CScenario> STORE_FRONT = {
    {"ReadTextBeyondTheBuffer",
     [](CScene& scene) {
         scene.store.Put("/a", "12345678");
         CTextDocument document;
         Read(document, 8);
     },
     {"ERR|oper_common|GetDataFromZK|read store node|109200002|text of /a has 8 characters, buffer "
      "8"}},
    {"ReadDocumentThrows",
     [](CScene& scene) {
         scene.store.Put("/a", "text");
         CTextDocument document;
         document.m_onCall = [] { throw std::runtime_error("bad text"); };
         Read(document, 8);
     },
     {"ERR|oper_common|GetDataFromZK|read store node|109100053|document of /a threw an exception: "
      "bad text"}},
    {"ReadDocumentThrowsANumber",
     [](CScene& scene) {
         scene.store.Put("/a", "text");
         CTextDocument document;
         document.m_onCall = [] { throw 17; };
         Read(document, 8);
     },
     {"ERR|oper_common|GetDataFromZK|read store node|109100053|document of /a threw an exception: "
      "unknown"}},
    {"WriteDocumentThrows",
     [](CScene&) {
         CTextDocument document;
         document.m_onCall = [] { throw std::runtime_error("bad text"); };
         Write(document, 8);
     },
     {"ERR|oper_common|SetDataToZK|write store node|109100053|document of /a threw an exception: "
      "bad text"}},
    {"WriteCutText",
     [](CScene&) {
         CTextDocument document("{\"a\":1");
         Write(document, 7);
     },
     {"ERR|oper_common|SetDataToZK|write store node|109100053|text of /a takes 6 of a buffer of 7 "
      "and is not whole"}},
    {"WriteNearlyFull",
     [](CScene&) {
         CTextDocument document("[1]\n");
         Write(document, 5);
     },
     {"WARNING|oper_common|SetDataToZK|write store node||text of /a takes 4 of a buffer of 5"}},
};

const std::vector<CScenario> SQLITE = {
    {"OpenFails",
     [](CScene& scene) {
         std::string strError;
         CSqliteStore::Open(scene.strDir, strError, 10);
     },
     {"ERR|sqlite_store|Open|open sqlite store|14|DIR: unable to open database file"}},
    {"ReadFails",
     [](CScene& scene) {
         CStoreAnswer answer;
         OpenRobbed(scene)->Read("/a", nullptr, answer);
     },
     {"ERR|sqlite_store|Read|read sqlite store|1|DIR/store: SQL logic error"}},
    {"WriteFails",
     [](CScene& scene) { OpenRobbed(scene)->Write("/a", "text"); },
     {"ERR|sqlite_store|Write|write sqlite store|1|DIR/store: SQL logic error"}},
    {"ListFails",
     [](CScene& scene) {
         std::vector<std::string> children;
         OpenRobbed(scene)->List("/", children);
     },
     {"ERR|sqlite_store|List|read sqlite store|1|DIR/store: SQL logic error"}},
    {"CommitFails",
     [](CScene& scene) {
         OpenRobbed(scene)->Commit({}, {{"/a", "text"}});
     },
     {"ERR|sqlite_store|Commit|commit to sqlite store|1|DIR/store: SQL logic error"}},
};

INSTANTIATE_TEST_SUITE_P(StoreFront, LogTexts, testing::ValuesIn(STORE_FRONT), NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(SqliteStore, LogTexts, testing::ValuesIn(SQLITE), NAME_OF_PARAMETER);

}  // namespace
