#include "cluster_engine/library_document.h"

#include <utility>

#include "common_service/tarn_def.h"

namespace {

std::string WhyUnreadable(int iCode) {
    return iCode == ORVA_DATA_INVALID ? "not the data that is expected"
                                      : "code " + std::to_string(iCode);
}

}  // namespace

std::string LibraryText(CBaseJsonObject& document) {
    std::string strText(std::size_t{2} * NUMERIC_DOCUMENT_BYTES, '\0');
    document.ToJson(strText.data(), static_cast<uint32_t>(strText.size()));
    strText.resize(strText.find('\0'));
    return strText;
}

CAnswer ReadLibraryDocument(CCluster& cluster, const ORVA_STORE_NODE& node,
                            CBaseJsonObject& document, bool& bAbsent) {
    const uint64_t ullFailures = cluster.host.gate.GetFailures();
    const int iCode = cluster.store.ReadDocument(node.pszSuffix, node.uiBufLen, document, bAbsent);
    if (iCode == ORVA_SUCCEED) {
        return {};
    }
    return cluster.host.gate.GetFailures() != ullFailures
               ? CAnswer::Refuse(EFault::STORE_FAILED, node.pszSuffix)
               : RefuseText(cluster, node, WhyUnreadable(iCode));
}

CAnswer WriteLibraryDocument(CCluster& cluster, const ORVA_STORE_NODE& node,
                             CBaseJsonObject& document) {
    const int iCode = cluster.store.WriteDocument(node.pszSuffix, node.uiBufLen, document);
    return iCode == ORVA_SUCCEED ? CAnswer() : RefuseWrite(node, iCode);
}

CAnswer RefuseWrite(const ORVA_STORE_NODE& node, int iCode) {
    return CAnswer::Refuse(
        iCode == ORVA_DATA_INVALID ? EFault::DOCUMENT_FULL : EFault::STORE_FAILED, node.pszSuffix);
}

CAnswer RefuseText(CCluster& cluster, const ORVA_STORE_NODE& node, const std::string& strWhy) {
    CEvent event;
    event.eEvent = EEvent::DOCUMENT_UNREADABLE;
    event.strCause = std::string(node.pszSuffix) + ": " + strWhy;
    cluster.Tell(std::move(event));
    return CAnswer::Refuse(EFault::DOCUMENT_UNREADABLE,
                           std::string(node.pszSuffix) + ": " + strWhy);
}

void TellReloaded(CCluster& cluster, const ORVA_STORE_NODE& node) {
    CEvent event;
    event.eEvent = EEvent::DOCUMENT_RELOADED;
    event.strCause = node.pszSuffix;
    cluster.Tell(std::move(event));
}
