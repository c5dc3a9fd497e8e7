#include "framework_service/document_keys.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "support/json_document.h"

namespace {

/// A document, its keys, and a text that has every one of them.
struct CKeyedDocument {
    std::string strName;
    const CDocumentKey& keys;
    std::function<std::unique_ptr<CBaseJsonObject>()> make;
    std::string strText;
};

template <typename Document>
std::unique_ptr<CBaseJsonObject> Make() {
    return std::make_unique<Document>();
}

const std::vector<CKeyedDocument>& Documents() {
    static const std::vector<CKeyedDocument> documents{
        {"Cluster", CLUSTER_DOCUMENT, Make<CClusterZNodeInfo>,
         R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterForwardType":7,
             "ClusterNode":[{"NodeID":"n","NodeIP":"10.0.0.1","NodeIPType":1,"NodeRole":2,
             "DomainRole":3,"Status":"Normal","Container":[{"ContainerType":"t"}]}]})"},
        {"CloudStorage", CLOUD_STORAGE_DOCUMENT, Make<CClusterCloudStorageZNodeInfo>,
         R"({"CloudStorageSet":[{"NvrCode":"n","ServiceType":"s","ProductType":"p","ReqSize":1,
             "ReqPicSize":2,"LowpriBit":3,"NodeList":[{"Code":"c","AllocSize":4,"UsedSize":5,
             "Dns":"d","Path":"/p"}]}]})"},
        {"ClusterConfig", CLUSTER_CONFIG_DOCUMENT, Make<CClusterConfigZNodeInfo>,
         R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true,
             "LoadBalanceThreshold":{"DiskThreshold":1,"NetThreshold":2,"ChannelThreshold":3}})"},
        {"CenterDB", CLUSTER_DB_DOCUMENT, Make<CClusterDBZNodeInfo>,
         R"({"MasterDB":{"NodeCode":"m","NodeIp":"10.0.0.1","DBPort":1,"DBToken":"000"},
             "SlaveDB":[{"NodeCode":"s","NodeIp":"10.0.0.2","DBPort":2,"DBToken":"001"}]})"},
        {"CenterDBVersion", CLUSTER_CDB_VER_DOCUMENT, Make<CClusterDBVerZNodeInfo>,
         R"({"CdbVerSet":[{"NvrCode":"n","CdbVer":"1"}]})"},
        {"Manager", CLUSTER_MGR_DOCUMENT, Make<CClusterMGRZNodeInfo>,
         R"({"MasterMGR":{"NodeCode":"n","NodeIp":"10.0.0.1"}})"},
        {"CGList", CG_LIST_DOCUMENT, Make<CClusterCGInfoList>,
         R"([{"NVRCode":"n","FloatCGCode":"f","FloatIP":"10.0.0.1","DecisionVerNum":"1"}])"},
    };
    return documents;
}

Json::Value Parse(const std::string& strText) {
    Json::Value value;
    std::istringstream(strText) >> value;
    return value;
}

/// Does the document take the text? What it throws is a refusal.
bool IsTaken(const CKeyedDocument& document, const std::string& strText) {
    try {
        return document.make()->ParseJson(strText.c_str()) == 0;
    } catch (const Json::Exception&) {
        return false;
    }
}

/// One key of a document, as WithMember has it.
struct CKeyPlace {
    const CKeyedDocument* pDocument;
    const CDocumentKey* pKey;
    std::string strPath;
    bool bRead;  ///< nothing below the thresholds is
};

std::ostream& operator<<(std::ostream& stream, const CKeyPlace& place) {
    return stream << place.pDocument->strName << ' ' << place.strPath;
}

void AddPlaces(const CKeyedDocument& document, const CDocumentKey& parent, std::string strPath,
               bool bRead, std::vector<CKeyPlace>& places) {
    if (parent.eType != EKeyType::OBJECT) {
        strPath += "[0]";
    }
    for (const CDocumentKey& key : parent.keys) {
        const std::string strKeyPath = strPath + "." + key.pszKey;
        places.push_back({&document, &key, strKeyPath, bRead});
        AddPlaces(document, key, strKeyPath,
                  bRead && key.pszKey != std::string(PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD), places);
    }
}

std::vector<CKeyPlace> EveryKey() {
    std::vector<CKeyPlace> places;
    for (const CKeyedDocument& document : Documents()) {
        AddPlaces(document, document.keys, "", true, places);
    }
    return places;
}

/// Values of other types. Those in the second list refuse even what is optional, for a token and
/// the thresholds.
const std::map<EKeyType, std::vector<std::string>> OTHERS = {
    {EKeyType::STRING, {"null", "1", "true"}},
    {EKeyType::INTEGER, {"null", "\"1\"", "true", "1.5", "2147483648", "-2147483649", "[]", "{}"}},
    {EKeyType::BOOLEAN, {"null", "1", "\"true\"", "[]", "{}"}},
    {EKeyType::OBJECT, {"null", "1", "\"{}\"", "true"}},
    {EKeyType::ARRAY, {"null", "1", "\"[]\"", "{}"}},
    {EKeyType::OBJECT_OR_ARRAY, {"null", "1", "\"[]\"", "true"}},
};
const std::map<EKeyType, std::vector<std::string>> REFUSED_OTHERS = {
    {EKeyType::STRING, {"[]", "{\"a\":1}"}},
    {EKeyType::OBJECT, {"[]"}},
};

class DocumentKeys : public testing::TestWithParam<CKeyPlace> {
protected:
    bool IsTakenWith(std::optional<std::string> jsonText) const {
        const CKeyedDocument& document = *GetParam().pDocument;
        return IsTaken(document, WithMember(document.strText, {GetParam().strPath, jsonText}));
    }

    const bool m_bOptional = GetParam().pKey->eNeed == EKeyNeed::OPTIONAL || !GetParam().bRead;
};

TEST_P(DocumentKeys, AreMissedOnlyWhenTheyAreRequired) {
    EXPECT_TRUE(IsTaken(*GetParam().pDocument, GetParam().pDocument->strText));
    EXPECT_EQ(IsTakenWith(std::nullopt), m_bOptional);
}

TEST_P(DocumentKeys, HaveTheirTypeWhenTheyAreRequired) {
    for (const std::string& strOther : OTHERS.at(GetParam().pKey->eType)) {
        EXPECT_EQ(IsTakenWith(strOther), m_bOptional) << strOther;
    }
    const auto it = REFUSED_OTHERS.find(GetParam().pKey->eType);
    if (it != REFUSED_OTHERS.end() && GetParam().bRead) {
        for (const std::string& strOther : it->second) {
            EXPECT_FALSE(IsTakenWith(strOther)) << strOther;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfAllDocuments, DocumentKeys, testing::ValuesIn(EveryKey()));

bool IsOf(EKeyType eType, const Json::Value& value) {
    switch (eType) {
        case EKeyType::STRING:
            return value.isString();
        case EKeyType::INTEGER:
            return value.isInt();
        case EKeyType::BOOLEAN:
            return value.isBool();
        case EKeyType::OBJECT:
            return value.isObject();
        default:
            return value.isArray();
    }
}

/// Are the members of the value, and of what lies in it, those of the row, each of its type?
void ExpectKeys(const CDocumentKey& parent, const Json::Value& value) {
    ASSERT_TRUE(IsOf(parent.eType, value)) << parent.pszKey;
    const Json::Value& object = value.isArray() ? value[0] : value;
    std::set<std::string> keys;
    for (const CDocumentKey& key : parent.keys) {
        keys.insert(key.pszKey);
        ExpectKeys(key, object[key.pszKey]);
    }
    const auto members = object.isObject() ? object.getMemberNames() : Json::Value::Members();
    EXPECT_EQ(std::set<std::string>(members.begin(), members.end()), keys);
}

TEST(DocumentKeyTable, HoldsWhatTheDocumentWritesAndNothingElse) {
    for (const CKeyedDocument& document : Documents()) {
        const auto pDocument = document.make();
        ASSERT_EQ(pDocument->ParseJson(document.strText.c_str()), 0) << document.strName;
        ExpectKeys(document.keys, Parse(TextOf(*pDocument)));
    }
}

TEST(DocumentKeyTable, ListsTheTextsThatAStatusIsWrittenAs) {
    for (const char* pszStatus : NODE_STATUS_TEXTS) {
        CNode node;
        node.SetMemberStatus(pszStatus == std::string("Removed") ? CLUSTER_MEMBER_REMOVED
                                                                 : CLUSTER_MEMBER_NORMAL);
        Json::Value nodeJson;
        BuildNodeJson(node, nodeJson);
        EXPECT_EQ(nodeJson[PSZ_NODE_STATUS], pszStatus);
    }
}

}  // namespace
