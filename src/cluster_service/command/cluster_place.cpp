#include "command/cluster_place.h"

#include <list>
#include <vector>

#include "command/joined.h"
#include "framework_service/store_path.h"
#include "reference_host/code_text.h"
#include "reference_host/shown_text.h"

namespace {

/// The codes of the clusters whose roots these are.
std::list<std::string> ClusterCodes(const std::vector<std::string>& nodes) {
    const std::string strStem = std::string(PSZ_STORE_ROOT).substr(1);
    std::list<std::string> codes;
    for (const std::string& strNode : nodes) {
        if (strNode.compare(0, strStem.size(), strStem) == 0) {
            codes.push_back(strNode.substr(strStem.size()));
        }
    }
    return codes;
}

}  // namespace

std::string PlaceText(const CClusterPlace& place) {
    return "cluster " + ShownText(place.strClusterCode) + " in " + ShownText(place.strStore);
}

bool IsPlaceThere(IStore& store, const CClusterPlace& place, EMayBeMissing eMayBeMissing,
                  std::ostream& errors) {
    std::vector<std::string> nodes;
    int iCode = store.List("/", nodes);
    if (iCode == STORE_NODE_ABSENT) {
        errors << ShownText(place.strStore) << ": the folder is not there\n";
        return false;
    }
    std::vector<std::string> documents;
    if (iCode == 0) {
        iCode = store.List(PSZ_STORE_ROOT + place.strClusterCode, documents);
    }
    if (iCode == STORE_NODE_ABSENT) {
        if (eMayBeMissing == EMayBeMissing::CLUSTER) {
            return true;
        }
        errors << "no " << PlaceText(place)
               << "; the clusters there: " << Joined(ClusterCodes(nodes)) << '\n';
        return false;
    }
    if (iCode != 0) {
        errors << PlaceText(place) << ": " << CodeText(iCode) << '\n';
    }
    return iCode == 0;
}
