#include "service_fixture.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "reference_host/sqlite_store.h"

namespace {

constexpr char PSZ_ROOT[] = "/CloudMain";

std::shared_ptr<CSqliteStore> OpenStore(const std::string& strFile) {
    std::string strError;
    auto pStore = CSqliteStore::Open(strFile, strError);
    if (pStore == nullptr) {
        throw std::runtime_error(strError);
    }
    return pStore;
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string strJoined;
    for (const std::string& strText : texts) {
        strJoined.append(strJoined.empty() ? "" : ",").append(strText);
    }
    return strJoined;
}

}  // namespace

std::string NodeText(const std::string& strId, const std::string& strIp,
                     const std::vector<std::string>& containers, const std::string& strStatus) {
    std::vector<std::string> containerTexts;
    for (const std::string& strType : containers) {
        containerTexts.push_back(R"({"ContainerType":")" + strType + "\"}");
    }
    return R"({"NodeID":")" + strId + R"(","NodeIP":")" + strIp +
           R"(","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":")" + strStatus +
           R"(","Container":[)" + Joined(containerTexts) + "]}";
}

std::string ClusterText(const std::vector<std::string>& nodes) {
    return R"({"ClusterName":"n","ClusterRemark":"r","ClusterCode":"Main","ClusterForwardType":7,)"
           R"("ClusterNode":[)" +
           Joined(nodes) + "]}\n";
}

std::string CloudStorageText(const std::string& strNodeId) {
    return R"({"CloudStorageSet":[{"NvrCode":")" + strNodeId +
           R"(","ServiceType":"s","ProductType":"p","ReqSize":50,"ReqPicSize":5,"LowpriBit":1}]})"
           "\n";
}

std::string CgText(const std::string& strNodeId, const std::string& strFloatCode,
                   const std::string& strFloatIp) {
    return R"({"NVRCode":")" + strNodeId + R"(","FloatCGCode":")" + strFloatCode +
           R"(","FloatIP":")" + strFloatIp + R"(","DecisionVerNum":"7"})";
}

std::string DatabaseText(const std::string& strMaster, const std::vector<std::string>& slaves) {
    const auto record = [](const std::string& strNodeId) {
        return R"({"NodeCode":")" + strNodeId + R"(","NodeIp":"ip-)" + strNodeId +
               R"(","DBPort":6001,"DBToken":"t"})";
    };
    std::vector<std::string> slaveTexts;
    std::transform(slaves.begin(), slaves.end(), std::back_inserter(slaveTexts), record);
    return R"({"MasterDB":)" + record(strMaster) + R"(,"SlaveDB":[)" + Joined(slaveTexts) + "]}";
}

CProcessResult CServiceTest::Run(const std::vector<std::string>& arguments) const {
    return RunOn("sqlite:store.db", arguments);
}

CProcessResult CServiceTest::RunTyping(const std::string& strTyped,
                                       const std::vector<std::string>& arguments) const {
    return RunOn("sqlite:store.db", arguments, CTerminal{strTyped});
}

CProcessResult CServiceTest::RunOn(const std::string& strStore,
                                   const std::vector<std::string>& arguments,
                                   const std::optional<CTerminal>& terminal) const {
    std::vector<std::string> all{"--store", strStore};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunProcess(PSZ_PROGRAM, all, m_dir.GetPath(), terminal);
}

void CServiceTest::WriteDocument(const std::string& strFile, const std::string& strText) const {
    std::filesystem::create_directory(File("documents"));
    m_dir.WriteFile("documents/" + strFile, strText);
}

CProcessResult CServiceTest::ImportDocuments() const {
    return Run({"import", "documents"});
}

std::optional<std::string> CServiceTest::Stored(const std::string& strSuffix) const {
    CStoreAnswer answer;
    if (OpenStore(File("store.db"))->Read(PSZ_ROOT + strSuffix, nullptr, answer) != 0) {
        throw std::runtime_error("cannot read " + strSuffix);
    }
    return answer.text;
}

void CServiceTest::Put(const std::string& strSuffix, const std::string& strText) const {
    if (OpenStore(File("store.db"))->Write(PSZ_ROOT + strSuffix, strText) != 0) {
        throw std::runtime_error("cannot write " + strSuffix);
    }
}

std::string ReadText(const std::string& strFile) {
    std::ostringstream text;
    text << std::ifstream(strFile, std::ios::binary).rdbuf();
    return text.str();
}
