#pragma once

#include <list>
#include <string>

#include "framework_service/base_data.h"

/// What a plug-in says of one container for a task.
struct CPlacementReason {
    CContainerAddr container;
    bool bPossible = false;
    std::string strReason;  ///< why not, as a clause; empty when the container may take the task
};

/// What a plug-in may implement beside IPlugin, to tell why a task finds the place that it finds.
/// Whoever has the IPlugin asks for it:
///
///     if (auto* const pReason = dynamic_cast<IPlacementReason*>(pPlugin)) {
///
/// It is the plug-in's own object and lives as long as that. As with the plug-in's operations, a
/// call runs on the caller's thread, and several may run at once.
class IPlacementReason {
public:
    IPlacementReason() = default;
    virtual ~IPlacementReason();

    /// Appends an entry for each container of the plug-in's types, in the order of the addresses:
    /// may it take the task, as the registries stand now? Decides nothing and changes nothing.
    virtual void ExplainPlacement(const CResourceTask& task,
                                  std::list<CPlacementReason>& reasons) = 0;
};
