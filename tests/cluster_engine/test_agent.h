#pragma once

#include <map>
#include <string>

#include "cluster_engine/answer.h"
#include "cluster_engine/input.h"

/// What runs on a container's side: it reports what it has, and does what it is answered.
class CTestAgent {
public:
    explicit CTestAgent(CContainerAddr addr) : m_addr(std::move(addr)) {}

    const CContainerAddr& GetAddr() const { return m_addr; }

    CContainerReport Report() const {
        CContainerReport report;
        report.container = m_addr;
        report.total = CFigures{1000, 1000, 1000, 1000, 1000};
        report.used = CFigures();
        report.tasks.emplace();
        report.ullSeen = m_ullSeen;
        for (const auto& [strTaskId, task] : m_tasks) {
            CReportedTask reported;
            reported.strTaskId = strTaskId;
            reported.costs = task.costs;
            report.used->iDisk += task.costs.iDisk;
            report.tasks->push_back(std::move(reported));
        }
        return report;
    }

    void Take(const CAnswer& answer) {
        m_ullSeen = answer.ullNumber;
        for (const CTaskForm& task : answer.takeUp) {
            m_tasks[task.strTaskId] = task;
        }
        for (const std::string& strTaskId : answer.drop) {
            m_tasks.erase(strTaskId);
        }
    }

    /// Runs it without having been told.
    void Run(const std::string& strTaskId) { m_tasks[strTaskId].strTaskId = strTaskId; }

    /// As after a restart that keeps nothing.
    void Forget() {
        m_tasks.clear();
        m_ullSeen = 0;
    }

    const std::map<std::string, CTaskForm>& GetTasks() const { return m_tasks; }

private:
    CContainerAddr m_addr;
    uint64_t m_ullSeen = 0;
    std::map<std::string, CTaskForm> m_tasks;
};
