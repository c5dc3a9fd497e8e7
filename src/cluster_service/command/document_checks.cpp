#include <algorithm>
#include <cstring>
#include <utility>
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

void Add(Findings& findings, EWeight eWeight, const CCheckedDocument& document,
         std::string strWhat) {
    findings.push_back({eWeight, document.strName, {std::nullopt, "", std::move(strWhat)}});
}

void Add(Findings& findings, EWeight eWeight, const CCheckedDocument& document,
         const CDocumentEntry& entry, std::string strWhat) {
    findings.push_back(
        {eWeight, document.strName, FaultAt(document.stored.strText, entry, std::move(strWhat))});
}

void CheckPresence(const CCheckedStore& store, Findings& findings) {
    const bool bNothing =
        std::none_of(store.documents.begin(), store.documents.end(),
                     [](const CCheckedDocument& checked) { return checked.stored.bExists; });
    for (const CCheckedDocument& checked : store.documents) {
        if (!checked.stored.bExists) {
            Add(findings, bNothing ? EWeight::WARNING : EWeight::NOTE, checked, "is absent");
        } else if (checked.stored.strText.empty() && !checked.fault) {
            Add(findings, EWeight::NOTE, checked, "is without data");
        }
    }
}

void CheckText(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedDocument& checked : store.documents) {
        if (checked.fault) {
            findings.push_back({EWeight::ERROR, checked.strName, *checked.fault});
        }
    }
}

void CheckSize(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedDocument& checked : store.documents) {
        if (!checked.IsGood()) {
            continue;
        }
        const std::size_t size = std::max(checked.stored.strText.size(), RenderedSize(checked));
        const std::size_t maxSize = checked.pDocument->GetMaxSize();
        if (size > maxSize) {
            Add(findings, EWeight::ERROR, checked,
                "would take " + std::to_string(size) +
                    " bytes when the service writes it, at most " + std::to_string(maxSize) +
                    " fit");
        } else if (IsNearlyFull(size, maxSize)) {
            Add(findings, EWeight::WARNING, checked,
                "takes " + std::to_string(size) + " bytes of at most " + std::to_string(maxSize) +
                    ", more than which the service does not write");
        }
    }
}

void CheckThresholds(const CCheckedStore& store, Findings& findings) {
    const CCheckedDocument& document = store.Get(STORE_NODE_CLUSTER_CONFIG);
    const CDocumentEntry thresholds = MemberOf(document.Root(), PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD);
    if (thresholds.pValue->isObject() && !thresholds.pValue->isNull()) {
        Add(findings, EWeight::WARNING, document, thresholds,
            "is ignored on reading: the thresholds stay at their defaults");
    }
}
