#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cluster_engine/forms.h"
#include "cluster_engine/json_fields.h"

/// What questions ask of a running cluster and no registry of the library has.

/// A plug-in, what it takes and how it behaves.
struct CPluginView {
    std::string strName;
    std::vector<uint32_t> jobTypes;
    std::vector<std::string> types;
    bool bOutOfService = false;
    std::map<std::string, uint32_t> failures;  ///< by operation: those since it last went well

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("name", self.strName);
        form.Need("job_types", self.jobTypes);
        form.Need("types", self.types);
        form.Need("out_of_service", self.bOutOfService);
        form.Need("failures", self.failures);
    }
};

/// Work that has to leave a container, or whose container left.
struct CShiftView {
    std::string strNodeId;  ///< empty when the container left
    std::string strType;
    std::string strCause;
    int64_t iStarted = 0;
    uint32_t uiWaiting = 0;  ///< tasks that found no room yet
    int64_t iNextTry = 0;
    bool bGivenUp = false;  ///< tried only when room appears
    bool bDraining = false;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.MayId("node", self.strNodeId);
        form.Id("type", self.strType);
        form.Need("cause", self.strCause);
        form.Need("started", self.iStarted);
        form.Need("waiting", self.uiWaiting);
        form.Need("next_try", self.iNextTry);
        form.Need("given_up", self.bGivenUp);
        form.Need("draining", self.bDraining);
    }
};

struct CEngineView {
    bool bSettling = true;
    bool bStoreAway = false;
    std::vector<CPluginView> plugins;
    std::vector<CShiftView> shifts;      ///< those that run, by container
    std::vector<std::string> heldTypes;  ///< too many of them fell silent together
    std::vector<std::string> draining;   ///< nodes
};
