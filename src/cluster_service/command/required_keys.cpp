#include "command/required_keys.h"

#include <cstddef>

#include "command/json_text.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"
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

}  // namespace

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

std::optional<std::string> FindKeyFault(const std::vector<CRequiredKey>& keys,
                                        const std::string& strText, const Json::Value& root) {
    for (const CRequiredKey& key : keys) {
        if (auto fault = CKeySearch(key, strText).FindFault(root)) {
            return fault;
        }
    }
    return std::nullopt;
}
