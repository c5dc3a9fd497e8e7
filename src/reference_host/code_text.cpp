#include "reference_host/code_text.h"

#include <sqlite3.h>
#define THREADED
#include <zookeeper/zookeeper.h>

#include <algorithm>

#include "common_service/tarn_def.h"
#include "reference_host/store.h"

const std::vector<CNamedCode>& NamedCodes() {
    static const std::vector<CNamedCode> codes{
        {ORVA_FAIL, "ORVA_FAIL", "it failed"},
        {ORVA_PARA_INVALID, "ORVA_PARA_INVALID", "a value is not allowed, or too large"},
        {ORVA_ALLOC_MEMORY_ERROR, "ORVA_ALLOC_MEMORY_ERROR", "out of memory"},
        {ORVA_SYS_NO_SUPPORT, "ORVA_SYS_NO_SUPPORT", "not supported"},
        {ORVA_XML_INVALID, "ORVA_XML_INVALID", "not the XML that is expected"},
        {ORVA_DATA_INVALID, "ORVA_DATA_INVALID", "not the data that is expected"},
        {ORVA_TARN_FCG_CODE_EXIST, "ORVA_TARN_FCG_CODE_EXIST", "the float code is taken"},
        {ORVA_TARN_FCG_IP_EXIST, "ORVA_TARN_FCG_IP_EXIST", "the float address is taken"},
        {ORVA_TARN_NODE_HAS_BEEN_CG, "ORVA_TARN_NODE_HAS_BEEN_CG", "the node has a CG entry"},
        {ORVA_TARN_FCG_EXCEED_MAX, "ORVA_TARN_FCG_EXCEED_MAX", "no room for another CG entry"},
        {ORVA_TARN_CG_NODE_NOT_EXIST, "ORVA_TARN_CG_NODE_NOT_EXIST", "no such node"},
        {STORE_NODE_ABSENT, "STORE_NODE_ABSENT", "not in the store"},
        {STORE_TEXT_TOO_LONG, "STORE_TEXT_TOO_LONG", "longer than a service reads"},
        {STORE_NOT_SET, "STORE_NOT_SET", "no store is open"},
        {STORE_NO_SUPPORT, "STORE_NO_SUPPORT", "this kind of store cannot do that"},
        {STORE_CONDITION_FAILED, "STORE_CONDITION_FAILED", "the store has changed meanwhile"},
        {STORE_OUTCOME_UNKNOWN, "STORE_OUTCOME_UNKNOWN", "whether it was written is not known"},
        {STORE_NAME_HELD, "STORE_NAME_HELD", "another holds the name"},
        {SQLITE_PERM, "SQLITE_PERM", "the store's file may not be used"},
        {SQLITE_BUSY, "SQLITE_BUSY", "another program keeps the store's file locked"},
        {SQLITE_LOCKED, "SQLITE_LOCKED", "the store's file is locked"},
        {SQLITE_NOMEM, "SQLITE_NOMEM", "out of memory"},
        {SQLITE_READONLY, "SQLITE_READONLY", "the store's file may not be written"},
        {SQLITE_IOERR, "SQLITE_IOERR", "reading or writing the store's file failed"},
        {SQLITE_CORRUPT, "SQLITE_CORRUPT", "the store's file is damaged"},
        {SQLITE_FULL, "SQLITE_FULL", "the disk is full"},
        {SQLITE_CANTOPEN, "SQLITE_CANTOPEN", "the store's file cannot be opened"},
        {SQLITE_PROTOCOL, "SQLITE_PROTOCOL", "the store's file stays locked"},
        {SQLITE_TOOBIG, "SQLITE_TOOBIG", "too large for the store"},
        {SQLITE_NOTADB, "SQLITE_NOTADB", "the file is no store, or of a later release"},
        {ZRUNTIMEINCONSISTENCY, "ZRUNTIMEINCONSISTENCY", "the server contradicts itself"},
        {ZDATAINCONSISTENCY, "ZDATAINCONSISTENCY", "the server's data contradict themselves"},
        {ZCONNECTIONLOSS, "ZCONNECTIONLOSS", "no server answers"},
        {ZMARSHALLINGERROR, "ZMARSHALLINGERROR", "the server's answer is not readable"},
        {ZUNIMPLEMENTED, "ZUNIMPLEMENTED", "the server does not know the request"},
        {ZOPERATIONTIMEOUT, "ZOPERATIONTIMEOUT", "the server did not answer in time"},
        {ZBADARGUMENTS, "ZBADARGUMENTS", "the server refuses the request as malformed"},
        {ZINVALIDSTATE, "ZINVALIDSTATE", "the connection is closed"},
        {ZNONODE, "ZNONODE", "the folder of the store is not there"},
        {ZNOAUTH, "ZNOAUTH", "the server does not permit it"},
        {ZBADVERSION, "ZBADVERSION", "the node has changed meanwhile"},
        {ZNOCHILDRENFOREPHEMERALS, "ZNOCHILDRENFOREPHEMERALS", "nothing can be below this node"},
        {ZNODEEXISTS, "ZNODEEXISTS", "the node is there already"},
        {ZNOTEMPTY, "ZNOTEMPTY", "there are nodes below this node"},
        {ZSESSIONEXPIRED, "ZSESSIONEXPIRED", "the servers have ended the session"},
        {ZINVALIDACL, "ZINVALIDACL", "the server refuses the permissions"},
        {ZAUTHFAILED, "ZAUTHFAILED", "the server does not accept who asks"},
        {ZCLOSING, "ZCLOSING", "the connection is being closed"},
        {ZSESSIONMOVED, "ZSESSIONMOVED", "the session has moved to another server"},
        {ZNOTREADONLY, "ZNOTREADONLY", "the server cannot write now"},
        {ZTHROTTLEDOP, "ZTHROTTLEDOP", "the server has too much to do"},
    };
    return codes;
}

std::string CodeText(int iCode) {
    const std::string strNumber = "code " + std::to_string(iCode);
    const std::vector<CNamedCode>& codes = NamedCodes();
    const auto it = std::find_if(codes.begin(), codes.end(),
                                 [iCode](const CNamedCode& code) { return code.iCode == iCode; });
    return it == codes.end()
               ? strNumber
               : std::string(it->pszWords) + " (" + it->pszName + ", " + strNumber + ")";
}
