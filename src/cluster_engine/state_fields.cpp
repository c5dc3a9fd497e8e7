#include "cluster_engine/state_fields.h"

#include <list>

CTableTask::CTableTask(const CResourceTask& of) : task(of) {
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> infos;
    of.GetAllocInfoList(infos);
    allocations.assign(infos.begin(), infos.end());
}

CTableTask::operator CResourceTask() const {
    CResourceTask made = task.ToTask();
    for (const CTableAllocation& allocation : allocations) {
        made.SetAllocInfoList(allocation.info);
    }
    return made;
}
