#include "command/document_fault.h"

#include <algorithm>
#include <exception>
#include <set>
#include <utility>

#include "command/json_keys.h"
#include "command/key_fault.h"
#include "common_service/logger.h"
#include "common_service/tarn_def.h"
#include "framework_service/base_data.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/code_text.h"
#include "reference_host/strict_json.h"

namespace {

/// What the JSON reader takes, of objects and lists within each other.
constexpr std::size_t NUMERIC_MAX_DEPTH = 1000;

constexpr char PSZ_BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";

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
std::optional<std::string> FindLoadFailure(const CStoreDocument& document,
                                           const std::string& strText) {
    const CSilence silence;
    try {
        const int iCode = document.pMake()->ParseJson(strText.c_str());
        return iCode == ORVA_SUCCEED ? std::nullopt : std::make_optional(CodeText(iCode));
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

/// A fault of the text itself, with the path of keys that leads there.
CDocumentFault TextFaultAt(const std::string& strText, std::size_t offset, const char* pszUnderKey,
                           const std::string& strWhat) {
    const std::string strPath = KeyPathAt(strText, offset);
    return {PlaceAt(strText, offset), strPath, (strPath.empty() ? "" : pszUnderKey) + strWhat};
}

/// What makes the text none at all.
std::optional<CDocumentFault> FindTextFault(const CStoreDocument& document,
                                            const std::string& strText) {
    if (strText.size() > document.GetMaxSize()) {
        return CDocumentFault{std::nullopt, "",
                              "is too long: " + std::to_string(strText.size()) +
                                  " bytes, at most " + std::to_string(document.GetMaxSize())};
    }
    if (strText.compare(0, 3, PSZ_BYTE_ORDER_MARK) == 0) {
        return TextFaultAt(strText, 0, "", "a byte order mark");
    }
    if (const auto offset = strText.find('\0'); offset != std::string::npos) {
        return TextFaultAt(strText, offset, "has ", "a zero byte");
    }
    if (const auto offset = FindNonUtf8(strText)) {
        return TextFaultAt(strText, *offset, "has ", "a byte that is no UTF-8");
    }
    return std::nullopt;
}

/// What the JSON reader complains of. It gives no place to a text that is nested too deeply for it.
CDocumentFault FaultOf(const std::string& strText, const CJsonFault& jsonFault) {
    if (jsonFault.iLine == 0) {
        return {PlaceAt(strText, OffsetBelow(strText, NUMERIC_MAX_DEPTH)), "", "nested too deeply"};
    }
    std::size_t offset = OffsetOf(strText, jsonFault.iLine, jsonFault.iColumn);
    std::string strReason = jsonFault.strReason;
    const std::size_t before = strText.find_last_not_of(" \t\r\n", offset - (offset > 0 ? 1 : 0));
    const bool bAtEnd =
        offset < strText.size() && (strText[offset] == '}' || strText[offset] == ']');
    if (bAtEnd && before != std::string::npos && strText[before] == ',') {
        offset = before;
        strReason = "a comma with nothing behind it";
    }
    return TextFaultAt(strText, offset, "is broken: ", strReason);
}

/// The first of the required keys, else of the others.
std::optional<CDocumentFault> FirstKeyFault(const CStoreDocument& document,
                                            const std::string& strText, const Json::Value& root) {
    const std::vector<CKeyFault> faults = FindKeyFaults(document.keys, strText, root);
    const auto it = std::find_if(faults.begin(), faults.end(), [](const CKeyFault& fault) {
        return fault.eNeed == EKeyNeed::REQUIRED;
    });
    if (it != faults.end()) {
        return it->fault;
    }
    return faults.empty() ? std::nullopt : std::make_optional(faults.front().fault);
}

std::string AddressText(const CContainerAddr& addr) {
    return "\"" + addr.GetContainerType() + "\" on node \"" + addr.GetNodeId() + "\"";
}

}  // namespace

std::string TextOf(const CDocumentFault& fault) {
    std::string strText;
    if (fault.place) {
        strText = "line " + std::to_string(fault.place->iLine) + ", column " +
                  std::to_string(fault.place->iColumn) + ": ";
    }
    if (!fault.strPath.empty()) {
        strText.append("\"").append(fault.strPath).append("\" ");
    }
    return strText + fault.strWhat;
}

CDocumentFault FaultAt(const std::string& strText, const CDocumentEntry& entry,
                       std::string strWhat) {
    const auto offset = static_cast<std::size_t>(entry.pValue->getOffsetStart());
    return {PlaceAt(strText, offset), entry.strPath, std::move(strWhat)};
}

std::optional<CDocumentFault> FindFault(const CStoreDocument& document,
                                        const std::string& strText) {
    if (auto fault = FindTextFault(document, strText)) {
        return fault;
    }
    Json::Value root;
    if (const auto fault = ParseStrictJson(strText, root)) {
        return FaultOf(strText, *fault);
    }
    const auto failure = FindLoadFailure(document, strText);
    if (!failure) {
        return std::nullopt;
    }
    if (auto fault = FirstKeyFault(document, strText, root)) {
        return fault;
    }
    return CDocumentFault{
        std::nullopt, "",
        std::string("is not what a ") + document.pszFile + " must be: " + *failure};
}

std::vector<CDocumentFault> FindContainerClashes(const std::string& strText,
                                                 const Json::Value& cluster) {
    std::vector<CDocumentFault> clashes;
    std::set<CContainerAddr> addresses;
    const CDocumentEntry nodes = MemberOf({"", &cluster}, PSZ_CLUSTER_NODE);
    if (!nodes.pValue->isArray()) {
        return clashes;
    }
    for (const CDocumentEntry& node : ElementsOf(nodes)) {
        const CDocumentEntry containers = MemberOf(node, PSZ_NODE_CONTAINER);
        if (!containers.pValue->isArray()) {
            continue;
        }
        for (const CDocumentEntry& container : ElementsOf(containers)) {
            const CDocumentEntry type = MemberOf(container, PSZ_NODE_CONTAINER_TYPE);
            const CContainerAddr addr(TextOf(MemberOf(node, PSZ_NODE_ID)), TextOf(type));
            const auto [it, bNew] = addresses.insert(addr);
            if (!bNew) {
                clashes.push_back(
                    FaultAt(strText, type,
                            "is " + AddressText(addr) +
                                (*it == addr ? " once more"
                                             : ", which reads the same as " + AddressText(*it)) +
                                ": the cluster does not load"));
            }
        }
    }
    return clashes;
}

std::optional<CDocumentFault> FindRefusal(const CStoreDocument& document,
                                          const std::string& strText) {
    if (auto fault = FindFault(document, strText)) {
        return fault;
    }
    if (&document.node != &STORE_NODE_CLUSTER) {
        return std::nullopt;
    }
    Json::Value root;
    ParseStrictJson(strText, root);
    const std::vector<CDocumentFault> clashes = FindContainerClashes(strText, root);
    return clashes.empty() ? std::nullopt : std::make_optional(clashes.front());
}
