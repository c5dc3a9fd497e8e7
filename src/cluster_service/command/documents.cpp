#include "command/documents.h"

#include <json/reader.h>

#include <algorithm>
#include <exception>
#include <sstream>
#include <utility>

#include "common_service/bounded_string.h"
#include "common_service/data/version_znode.h"
#include "common_service/logger.h"
#include "common_service/oper_common.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/schedule_mgr.h"
#include "reference_host/store.h"
#include "reference_host/version_keys.h"

namespace {

template <bool (Json::Value::*... pTests)() const>
bool IsAnyOf(const Json::Value& value) {
    return ((value.*pTests)() || ...);
}

const CKeyType STRING{IsAnyOf<&Json::Value::isString>, "a string"};
const CKeyType INTEGER{IsAnyOf<&Json::Value::isInt>, "an integer"};
const CKeyType VERSION_NUMBER{IsAnyOf<&Json::Value::isUInt64>, "a version number"};
const CKeyType BOOLEAN{IsAnyOf<&Json::Value::isBool>, "true or false"};
const CKeyType ARRAY{IsAnyOf<&Json::Value::isArray>, "an array"};
const CKeyType OBJECT{IsAnyOf<&Json::Value::isObject>, "an object"};
const CKeyType OBJECTS{IsAnyOf<&Json::Value::isObject, &Json::Value::isArray>,
                       "an object or an array"};

const std::vector<CRequiredKey> CLUSTER_KEYS{
    {{}, PSZ_CLUSTER_NAME, STRING},
    {{}, PSZ_CLUSTER_REMARK, STRING},
    {{}, PSZ_CLUSTER_CODE, STRING},
    {{PSZ_CLUSTER_NODE}, PSZ_NODE_ID, STRING},
    {{PSZ_CLUSTER_NODE}, PSZ_NODE_IP, STRING},
    {{PSZ_CLUSTER_NODE}, PSZ_NODE_IP_TYPE, INTEGER},
    {{PSZ_CLUSTER_NODE}, PSZ_NODE_ROLE, INTEGER},
    {{PSZ_CLUSTER_NODE}, PSZ_NODE_DOMAIN_ROLE, INTEGER},
    {{PSZ_CLUSTER_NODE}, PSZ_NODE_STATUS, STRING},
    {{PSZ_CLUSTER_NODE, PSZ_NODE_CONTAINER}, PSZ_NODE_CONTAINER_TYPE, STRING},
};

const std::vector<CRequiredKey> CLOUD_STORAGE_KEYS{
    {{}, PSZ_CLOUD_STORAGE_SET, ARRAY},
    {{PSZ_CLOUD_STORAGE_SET}, PSZ_CLOUD_STORAGE_NVRCODE, STRING},
    {{PSZ_CLOUD_STORAGE_SET}, PSZ_CLOUD_STORAGE_SERVICE_TYPE, STRING},
    {{PSZ_CLOUD_STORAGE_SET}, PSZ_CLOUD_STORAGE_PRODUCT_TYPE, STRING},
    {{PSZ_CLOUD_STORAGE_SET}, PSZ_CLOUD_STORAGE_REQ, INTEGER},
    {{PSZ_CLOUD_STORAGE_SET}, PSZ_CLOUD_STORAGE_REQ_PIC, INTEGER},
    {{PSZ_CLOUD_STORAGE_SET}, PSZ_CLOUD_STORAGE_LOWPRI_BIT, INTEGER},
    {{PSZ_CLOUD_STORAGE_SET, PSZ_CLOUD_STORAGE_NODE_LIST}, PSZ_CLOUD_STORAGE_CODE, STRING},
    {{PSZ_CLOUD_STORAGE_SET, PSZ_CLOUD_STORAGE_NODE_LIST}, PSZ_CLOUD_STORAGE_ALLOC_SIZE, INTEGER},
    {{PSZ_CLOUD_STORAGE_SET, PSZ_CLOUD_STORAGE_NODE_LIST}, PSZ_CLOUD_STORAGE_USED_SIZE, INTEGER},
    {{PSZ_CLOUD_STORAGE_SET, PSZ_CLOUD_STORAGE_NODE_LIST}, PSZ_CLOUD_STORAGE_DNS, STRING},
    {{PSZ_CLOUD_STORAGE_SET, PSZ_CLOUD_STORAGE_NODE_LIST}, PSZ_CLOUD_STORAGE_PATH, STRING},
};

const std::vector<CRequiredKey> CLUSTER_CONFIG_KEYS{
    {{}, PSZ_CLUSTER_LOAD_BALANCE, BOOLEAN},
    {{}, PSZ_CLUSTER_FAULT_SHIFT, BOOLEAN},
    {{}, PSZ_CLUSTER_LOAD_BALANCE_ONE_PERIOD, BOOLEAN},
};

const std::vector<CRequiredKey> CENTER_DB_KEYS{
    {{}, PSZ_CLUSTER_DB_MASTER, OBJECT},
    {{}, PSZ_CLUSTER_DB_SLAVE, OBJECTS},
    {{PSZ_CLUSTER_DB_MASTER}, PSZ_CLUSTER_DB_NODE, STRING},
    {{PSZ_CLUSTER_DB_MASTER}, PSZ_CLUSTER_DB_IP, STRING},
    {{PSZ_CLUSTER_DB_MASTER}, PSZ_CLUSTER_DB_PORT, INTEGER},
    {{PSZ_CLUSTER_DB_SLAVE}, PSZ_CLUSTER_DB_NODE, STRING},
    {{PSZ_CLUSTER_DB_SLAVE}, PSZ_CLUSTER_DB_IP, STRING},
    {{PSZ_CLUSTER_DB_SLAVE}, PSZ_CLUSTER_DB_PORT, INTEGER},
};

const std::vector<CRequiredKey> MANAGER_KEYS{
    {{}, PSZ_CLUSTER_MGR_MASTER, OBJECT},
    {{PSZ_CLUSTER_MGR_MASTER}, PSZ_CLUSTER_MGR_NODE, STRING},
    {{PSZ_CLUSTER_MGR_MASTER}, PSZ_CLUSTER_MGR_IP, STRING},
};

const std::vector<CRequiredKey> CG_LIST_KEYS{
    {{}, PSZ_CG_NVRCODE, STRING},
    {{}, PSZ_CG_FLOAT_CODE, STRING},
    {{}, PSZ_CG_FLOAT_IP, STRING},
    {{}, PSZ_CG_DECISION_VER_NUM, STRING},
};

const std::vector<CRequiredKey> VERSION_KEYS{
    {{}, PSZ_DECISION_VER_NUM, VERSION_NUMBER},
    {{}, PSZ_MASTER_VER_NUM, VERSION_NUMBER},
};

template <class Document>
std::unique_ptr<CBaseJsonObject> Make() {
    return std::make_unique<Document>();
}

/// A document that is its own text, so that the store holds what the author wrote.
class CTextDocument : public CBaseJsonObject {
public:
    explicit CTextDocument(std::string strText = {}) : m_strText(std::move(strText)) {}

    int32_t ParseJson(const char* pszJson) override {
        m_strText = pszJson;
        return ORVA_SUCCEED;
    }

    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override {
        return strncpy_s(pszJson, iMaxLen, m_strText.data(), m_strText.size()) == 0 ? ORVA_SUCCEED
                                                                                    : ORVA_FAIL;
    }

    const std::string& GetText() const { return m_strText; }

private:
    std::string m_strText;
};

std::string PlaceOf(const std::string& strText, std::size_t offset) {
    const auto end = strText.begin() + static_cast<std::ptrdiff_t>(offset);
    const auto iLine = 1 + std::count(strText.begin(), end, '\n');
    const auto iColumn =
        1 +
        std::distance(std::find(std::make_reverse_iterator(end), strText.rend(), '\n').base(), end);
    return "line " + std::to_string(iLine) + ", column " + std::to_string(iColumn);
}

/// The reader's first complaint, "* Line 1, Column 2\n  Reason\n", on one line.
std::string FirstComplaint(const std::string& strComplaints) {
    std::istringstream stream(strComplaints);
    std::string strPlace;
    std::string strReason;
    std::getline(stream >> std::ws, strPlace);
    std::getline(stream >> std::ws, strReason);
    std::replace(strPlace.begin(), strPlace.end(), 'L', 'l');
    std::replace(strPlace.begin(), strPlace.end(), 'C', 'c');
    return strPlace.substr(strPlace.find('l')) + ": " + strReason;
}

/// Looks for a required key everywhere that its path leads to.
class CKeySearch {
public:
    CKeySearch(const CRequiredKey& key, const std::string& strText)
        : m_key(key), m_strText(strText) {}

    /// What is wrong first below a value that lies at this depth of the path; nothing if all is
    /// well.
    std::optional<std::string> FindFault(const Json::Value& value, const std::string& strName = {},
                                         std::size_t depth = 0) const {
        if (value.isArray()) {
            return FindFaultInElements(value, strName, depth);
        }
        if (!value.isObject()) {
            return Fault(strName, "is no object", value);
        }
        if (depth == m_key.path.size()) {
            return FindFaultInKey(value, strName);
        }
        const Json::Value& next = value[m_key.path[depth]];
        return IsAnyOf<&Json::Value::isObject, &Json::Value::isArray>(next)
                   ? FindFault(next, Join(strName, m_key.path[depth]), depth + 1)
                   : std::nullopt;
    }

private:
    static std::string Join(const std::string& strName, const char* pszKey) {
        return strName.empty() ? pszKey : strName + "." + pszKey;
    }

    std::optional<std::string> FindFaultInElements(const Json::Value& array,
                                                   const std::string& strName,
                                                   std::size_t depth) const {
        for (Json::ArrayIndex uiIndex = 0; uiIndex < array.size(); ++uiIndex) {
            const std::string strElement = strName + "[" + std::to_string(uiIndex) + "]";
            if (auto fault = FindFault(array[uiIndex], strElement, depth)) {
                return fault;
            }
        }
        return std::nullopt;
    }

    std::optional<std::string> FindFaultInKey(const Json::Value& object,
                                              const std::string& strName) const {
        const Json::Value& member = object[m_key.pszKey];
        if (member.isNull()) {
            return Fault(Join(strName, m_key.pszKey), "is missing", object);
        }
        if (!m_key.type.pIs(member)) {
            return Fault(Join(strName, m_key.pszKey), std::string("is not ") + m_key.type.pszName,
                         member);
        }
        return std::nullopt;
    }

    std::optional<std::string> Fault(const std::string& strName, const std::string& strWhat,
                                     const Json::Value& value) const {
        const auto offset = static_cast<std::size_t>(value.getOffsetStart());
        return PlaceOf(m_strText, offset) + ": " +
               (strName.empty() ? "the document" : "\"" + strName + "\"") + " " + strWhat;
    }

    const CRequiredKey& m_key;
    const std::string& m_strText;
};

/// While it lives nothing is logged.
class CSilence {
public:
    CSilence() { OMAdapter::getInstance().setLogger(nullptr); }
    ~CSilence() { OMAdapter::getInstance().setLogger(m_pLogger); }
    CSilence(const CSilence&) = delete;
    CSilence& operator=(const CSilence&) = delete;

private:
    Logger* const m_pLogger = OMAdapter::getInstance().getLogger();
};

/// Why the library does not take the text; nothing if it does.
std::optional<std::string> FindRefusal(const CStoreDocument& document, const std::string& strText) {
    const CSilence silence;
    try {
        const int iCode = document.pMake()->ParseJson(strText.c_str());
        return iCode == ORVA_SUCCEED ? std::nullopt
                                     : std::make_optional("code " + std::to_string(iCode));
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

/// The place for which the library refuses a text.
std::optional<std::string> FindKeyFault(const CStoreDocument& document, const std::string& strText,
                                        const Json::Value& root) {
    for (const CRequiredKey& key : document.requiredKeys) {
        if (auto fault = CKeySearch(key, strText).FindFault(root)) {
            return fault;
        }
    }
    return std::nullopt;
}

}  // namespace

const std::vector<CStoreDocument>& StoreDocuments() {
    static const std::vector<CStoreDocument> documents{
        {STORE_NODE_CLUSTER, "cluster.json", Make<CClusterZNodeInfo>, CLUSTER_KEYS},
        {STORE_NODE_CLOUD_STORAGE, "cloud_storage.json", Make<CClusterCloudStorageZNodeInfo>,
         CLOUD_STORAGE_KEYS},
        {STORE_NODE_CLUSTER_CONFIG, "cluster_config.json", Make<CClusterConfigZNodeInfo>,
         CLUSTER_CONFIG_KEYS},
        {STORE_NODE_CENTER_DB, "center_db.json", Make<CClusterDBZNodeInfo>, CENTER_DB_KEYS},
        {STORE_NODE_MGR, "manager.json", Make<CClusterMGRZNodeInfo>, MANAGER_KEYS},
        {STORE_NODE_CG_LIST, "cg_list.json", Make<CClusterCGInfoList>, CG_LIST_KEYS},
        {STORE_NODE_VERSION, "version.json", Make<CVersionZNode>, VERSION_KEYS},
    };
    return documents;
}

const CStoreDocument& FindDocument(const ORVA_STORE_NODE& node) {
    return *std::find_if(
        StoreDocuments().begin(), StoreDocuments().end(),
        [&node](const CStoreDocument& document) { return &document.node == &node; });
}

std::optional<std::string> ParseText(const std::string& strText, Json::Value& root) {
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    const std::unique_ptr<Json::CharReader> pReader(builder.newCharReader());
    std::string strComplaints;
    try {
        if (pReader->parse(strText.data(), strText.data() + strText.size(), &root,
                           &strComplaints)) {
            return std::nullopt;
        }
    } catch (const std::exception& exception) {
        return exception.what();
    }
    return FirstComplaint(strComplaints);
}

std::optional<std::string> FindFault(const CStoreDocument& document, const std::string& strText) {
    if (strText.size() > document.GetMaxSize()) {
        return "is too long: " + std::to_string(strText.size()) + " bytes, at most " +
               std::to_string(document.GetMaxSize());
    }
    if (const auto pos = strText.find('\0'); pos != std::string::npos) {
        return PlaceOf(strText, pos) + ": a zero byte";
    }
    Json::Value root;
    if (auto fault = ParseText(strText, root)) {
        return fault;
    }
    const auto refusal = FindRefusal(document, strText);
    if (!refusal) {
        return std::nullopt;
    }
    if (auto fault = FindKeyFault(document, strText, root)) {
        return fault;
    }
    return std::string("is not what a ") + document.pszFile + " must be: " + *refusal;
}

CStoredText ReadFromStore(const CStoreDocument& document) {
    CTextDocument text;
    bool bDataEmpty = false;
    CStoredText stored;
    stored.iCode = COperCommon::GetDataFromZK(StorePath(document).c_str(), nullptr,
                                              document.node.uiBufLen, &text, bDataEmpty);
    if (stored.iCode == STORE_NODE_ABSENT) {
        return {};
    }
    stored.bExists = stored.iCode == ORVA_SUCCEED;
    stored.strText = text.GetText();
    return stored;
}

int WriteToStore(const CStoreDocument& document, const std::string& strText) {
    CTextDocument text(strText);
    return COperCommon::SetDataToZK(StorePath(document).c_str(), document.node.uiBufLen, &text);
}

bool StoreAnswered(const CStoreDocument& document, int iCode, std::ostream& errors) {
    if (iCode != ORVA_SUCCEED) {
        errors << StorePath(document) << ": the store answered code " << iCode
               << ", the log says why\n";
    }
    return iCode == ORVA_SUCCEED;
}

std::string StorePath(const CStoreDocument& document) {
    return StorePath(document.node);
}
