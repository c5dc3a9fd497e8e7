#include "cluster_engine/forms.h"

#include <algorithm>
#include <tuple>

namespace {

auto Tie(const CFigures& figures) {
    return std::tie(figures.iCpu, figures.iMem, figures.iIo, figures.iNet, figures.iDisk);
}

}  // namespace

CSystemResource CFigures::ToResource() const {
    CSystemResource resource;
    resource.SetCpu(iCpu);
    resource.SetMem(iMem);
    resource.SetIO(iIo);
    resource.SetNet(iNet);
    resource.SetDisk(iDisk);
    return resource;
}

CFigures FiguresOf(const CSystemResource& resource) {
    return {resource.GetCpu(), resource.GetMem(), resource.GetIO(), resource.GetNet(),
            resource.GetDisk()};
}

bool CFigures::operator==(const CFigures& other) const {
    return Tie(*this) == Tie(other);
}

bool CFigures::IsBelowZero() const {
    return std::min({iCpu, iMem, iIo, iNet, iDisk}) < 0;
}

bool CFigures::IsAbove(int32_t iMost) const {
    return std::max({iCpu, iMem, iIo, iNet, iDisk}) > iMost;
}

CTaskForm::CTaskForm(const CResourceTask& task)
    : strTaskId(task.GetTaskId()),
      strName(task.GetTaskName()),
      bMovable(task.IsSupportShift()),
      costs{task.GetCpu(), task.GetMem(), task.GetIO(), task.GetNet(), task.GetDisk()} {
    task.GetAllPrivateInfo(privateInfo);
}

CResourceTask CTaskForm::ToTask() const {
    CResourceTask task;
    task.SetTaskId(strTaskId);
    task.SetTaskName(strName);
    task.SetSupportShift(bMovable);
    task.SetCpu(costs.iCpu);
    task.SetMem(costs.iMem);
    task.SetIO(costs.iIo);
    task.SetNet(costs.iNet);
    task.SetDisk(costs.iDisk);
    for (const auto& [strKey, strValue] : privateInfo) {
        task.InsertSingleKeyValue(strKey, strValue);
    }
    return task;
}

bool CTaskForm::operator==(const CTaskForm& other) const {
    return std::tie(strTaskId, strName, bMovable, costs, privateInfo) ==
           std::tie(other.strTaskId, other.strName, other.bMovable, other.costs, other.privateInfo);
}
