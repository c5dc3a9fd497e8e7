#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>

#include "command/cluster_place.h"
#include "reference_host/store.h"

/// The service that runs a cluster, as the name that it holds in the store tells it. What the text
/// does not tell is empty or 0.
struct CClusterHolder {
    std::string strService;  ///< its URL
    std::string strHost;
    int64_t iProcess = 0;
    int64_t iSince = 0;  ///< in seconds since 1970
};

/// The path of the name that the service of a cluster holds.
std::string HolderPath(const std::string& strClusterCode);

/// This process as a holder.
CClusterHolder ThisProcess(const std::string& strServiceUrl, int64_t iNow);

/// {"host":…,"process":…,"service":…,"since":…}
std::string HolderText(const CClusterHolder& holder);

/// Reads what HolderText has written; a text that is none gives a holder of whom nothing is known.
CClusterHolder ReadHolder(const CStoreAnswer& holder);

/// As a person is told it: the service at http://…, process 7 on alpha, since 2026-03-04 06:00:00
/// UTC
std::string HolderWords(const CClusterHolder& holder);

/// Whether to try again while somebody else has the name.
using OnWaiting = std::function<bool(const CStoreAnswer& holder)>;

/// IStore::Hold, tried again as long as a name can outlive the process that held it: a service that
/// was killed is no longer in the way of the next. onWaiting is called before each pause of a tenth
/// of a second.
int HoldOrWait(IStore& store, const std::string& strPath, const std::string& strText,
               const HoldLost& onLost, const OnWaiting& onWaiting, CStoreAnswer& holder);

/// What to ask a service for, by its interface.
struct CServiceRequest {
    const char* pszMethod;
    std::string strPath;
    std::string strBody;  ///< none when empty
};

CServiceRequest PromotionRequest(const std::string& strNodeId);
CServiceRequest RemovalRequest(const std::string& strNodeId, const std::string& strContainerType);

/// Whether a command may change the cluster: no service holds it. Otherwise says on the stream who
/// does and what to ask the service for instead, if there is such a request. Returns EXIT_DONE,
/// EXIT_REFUSED, or EXIT_COULD_NOT when the store did not answer.
int CheckNobodyHolds(IStore& store, const CClusterPlace& place,
                     const std::optional<CServiceRequest>& request, std::ostream& errors);
