#include "xml_target.h"

#include <filesystem>

#include "common_service/tarn_def.h"
#include "common_service/xml.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/resource_task.h"
#include "framework_service/standard_task_mgr.h"
#include "support/reconfigure.h"
#include "support/temp_dir.h"
#include "target.h"

namespace {

/// The document as it writes itself on its own.
template <typename Document>
std::string Dump(Document& document) {
    PELU::CXml xml(nullptr);
    document.DumpToXml(xml);
    unsigned int uiLen = 0;
    const char* pszXml = xml.GetXMLStream(uiLen);
    Require(pszXml != nullptr, "what was written is a document");
    Require(std::string(pszXml).size() == uiLen, "a document tells its length");
    return pszXml;
}

/// Goes to the first element below the root, whatever the names.
bool EnterRoot(PELU::CXml& xml) {
    return xml.NextElem() && xml.IntoElem();
}

int ReadFromBelowRoot(PELU::CXml& xml, CClusterDBZNodeInfo& document) {
    return EnterRoot(xml) ? document.ParseFromXml(xml) : static_cast<int>(ORVA_XML_INVALID);
}

}  // namespace

void FeedDatabaseXml(const std::string& strInput) {
    std::string strText = strInput;
    for (int i = 0; i < 3; ++i) {
        PELU::CXml xml(nullptr);
        CClusterDBZNodeInfo document;
        const bool bRead =
            xml.Parse(strText.c_str()) && ReadFromBelowRoot(xml, document) == ORVA_SUCCEED;
        Require(bRead || i == 0, "an arrangement reads its own XML");
        if (!bRead) {
            return;
        }
        const std::string strDumped = Dump(document);
        Require(i < 2 || strDumped == strText, "XML that was read back stays as it is");
        strText = strDumped;
    }
}

void FeedManagerXml(const std::string& strInput) {
    PELU::CXml xml(nullptr);
    CClusterMGRZNodeInfo document;
    if (!xml.Parse(strInput.c_str()) || document.ParseFromXml(xml) != ORVA_SUCCEED) {
        return;
    }
    Require(document.GetMasterMGR().GetMGRType() == TARN_E_DOMAIN_MAIN,
            "a master is a main manager");
    PELU::CXml dumped(nullptr);
    Require(dumped.Parse(Dump(document).c_str()), "what was written is XML");
    Require(document.ParseFromXml(dumped) == ORVA_XML_INVALID,
            "the written form is not the one that is read");
}

void FeedCGListXml(const std::string& strInput) {
    PELU::CXml xml(nullptr);
    CClusterCGInfoList document;
    if (!xml.Parse(strInput.c_str())) {
        return;
    }
    const int iRet = document.ParseXml(xml);
    PELU::CXml dumped(nullptr);
    Require(dumped.Parse(Dump(document).c_str()), "what was written is XML");
    if (iRet == ORVA_SUCCEED && document.Empty()) {
        CClusterCGInfoList again;
        Require(again.ParseXml(dumped) == ORVA_SUCCEED && again.Empty(), "an empty list is read");
    }
}

void FeedPrivateInfoXml(const std::string& strInput) {
    PELU::CXml xml(nullptr);
    if (!xml.Parse(strInput.c_str())) {
        return;
    }
    EnterRoot(xml);
    CResourceTask task;
    const int iRet = task.ParsePrivateInfoFromXml(xml);
    KeyValueMap privateInfo;
    task.GetAllPrivateInfo(privateInfo);
    Require((iRet == ORVA_SUCCEED) == !privateInfo.empty(), "pairs are what is read");
    for (const auto& [strKey, strValue] : privateInfo) {
        int iValue = 0;
        Require(task.GetIntValueByKey(strKey, iValue) == ORVA_SUCCEED, "each value is a number");
    }
}

void FeedTaskFile(const std::string& strInput) {
    static const CTempDir folder;
    static const bool bMade = std::filesystem::create_directory(folder.File("taskmodel"));
    Require(bMade, "the folder is fresh");
    Reconfigure(&CHostSettings::strConfigDir, folder.GetPath());
    folder.WriteFile("taskmodel/input.xml", strInput);
    Require(CStdTaskMgr::Instance().Load() == ORVA_SUCCEED, "a load always succeeds");
    CResourceTask task;
    CStdTaskMgr::Instance().GetStandardTask("DEFAULT", task);
}
