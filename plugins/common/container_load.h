#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "framework_service/base_data.h"
#include "framework_service/container.h"
#include "framework_service/resource_task.h"

inline constexpr std::size_t RESOURCE_TYPES = 5;

/// What a task costs of every RESOURCE_TYPE; a negative cost counts as nothing.
using TaskCosts = std::array<int32_t, RESOURCE_TYPES>;

inline TaskCosts CostsOf(const CResourceTask& task) {
    return {std::max(task.GetCpu(), 0), std::max(task.GetMem(), 0), std::max(task.GetIO(), 0),
            std::max(task.GetNet(), 0), std::max(task.GetDisk(), 0)};
}

/// The figures of every RESOURCE_TYPE, wide enough for sums.
using ResourceFigures = std::array<int64_t, RESOURCE_TYPES>;

/// How full a container is, as a schedule sees it. What it reports as used and what its tasks cost
/// are two views of the same thing, of which the larger counts: a task that was just placed is not
/// reported yet, and not all that is used belongs to a task.
class CContainerLoad {
public:
    CContainerLoad() = default;

    /// taskSum is what the container's tasks cost together.
    CContainerLoad(const CContainer& container, const ResourceFigures& taskSum);

    std::size_t GetTaskCount() const { return m_uiTasks; }

    /// Does every cost still fit? A cost of nothing always fits.
    bool HasRoomFor(const TaskCosts& costs) const { return FindShortage(costs) == RESOURCE_TYPES; }

    /// The first cost that does not fit, as a clause with its figures; empty when all fit.
    std::string WhyNoRoomFor(const TaskCosts& costs) const;

    /// Used over total; infinite where the container has not reported a total.
    double GetRatio(RESOURCE_TYPE eType) const;

    void Take(const TaskCosts& costs);
    void Give(const TaskCosts& costs);

private:
    /// The first RESOURCE_TYPE of which too little is left; RESOURCE_TYPES when there is none.
    std::size_t FindShortage(const TaskCosts& costs) const;

    ResourceFigures m_used{};
    std::array<int32_t, RESOURCE_TYPES> m_total{};
    uint32_t m_uiTasks = 0;
};

/// What a plug-in spreads its tasks by: the lower, the sooner a container gets a task.
using LoadFunc = double (*)(const CContainerLoad&);
