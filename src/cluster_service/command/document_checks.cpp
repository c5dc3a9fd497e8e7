#include <algorithm>
#include <cstring>
#include <vector>

#include "command/checks.h"
#include "framework_service/cluster_config_znode_info.h"
#include "reference_host/store.h"

namespace {

/// A document may grow by this much when the library writes it: it renders a character as six.
constexpr std::size_t NUMERIC_MAX_GROWTH = 6;

/// The size of the text as the library would write it.
std::size_t RenderedSize(const CCheckedDocument& checked) {
    std::vector<char> buffer(checked.stored.strText.size() * NUMERIC_MAX_GROWTH +
                             checked.pDocument->node.uiBufLen);
    const auto pDocument = checked.pDocument->pMake();
    pDocument->ParseJson(checked.stored.strText.c_str());
    pDocument->ToJson(buffer.data(), static_cast<uint32_t>(buffer.size()));
    return std::strlen(buffer.data());
}

}  // namespace

void CheckPresence(const CCheckedStore& store, Findings& findings) {
    const bool bNothing =
        std::none_of(store.documents.begin(), store.documents.end(),
                     [](const CCheckedDocument& checked) { return checked.stored.bExists; });
    for (const CCheckedDocument& checked : store.documents) {
        if (!checked.stored.bExists && checked.stored.iCode == ORVA_SUCCEED) {
            Add(findings, bNothing ? PSZ_WARNING : PSZ_NOTE, checked.pDocument->node, "is absent");
        } else if (checked.stored.strText.empty() && !checked.fault) {
            Add(findings, PSZ_NOTE, checked.pDocument->node, "is without data");
        }
    }
}

void CheckText(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedDocument& checked : store.documents) {
        if (checked.fault) {
            Add(findings, PSZ_ERROR, checked.pDocument->node, *checked.fault);
        }
    }
}

void CheckSize(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedDocument& checked : store.documents) {
        if (checked.root.isNull()) {
            continue;
        }
        const std::size_t size = std::max(checked.stored.strText.size(), RenderedSize(checked));
        const std::size_t maxSize = checked.pDocument->GetMaxSize();
        if (size > maxSize) {
            Add(findings, PSZ_ERROR, checked.pDocument->node,
                "would take " + std::to_string(size) +
                    " bytes when the service writes it, at most " + std::to_string(maxSize) +
                    " fit");
        } else if (IsNearlyFull(size, maxSize)) {
            Add(findings, PSZ_WARNING, checked.pDocument->node,
                "takes " + std::to_string(size) + " bytes of at most " + std::to_string(maxSize) +
                    ", more than which the service does not write");
        }
    }
}

void CheckThresholds(const CCheckedStore& store, Findings& findings) {
    if (!store.clusterConfig[PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD].isNull()) {
        Add(findings, PSZ_WARNING, STORE_NODE_CLUSTER_CONFIG,
            Quoted(PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD) +
                " is ignored on reading: the thresholds stay at their defaults");
    }
}
