#include "cluster_engine/random_run.h"

#include "cluster_engine/engine_fixture.h"

namespace {

constexpr uint32_t NUMERIC_RECORD_JOB = 1001;

const char* const TYPES[] = {"MeroRecord", "MeroImgDev", "MeroCloudStorage"};

}  // namespace

std::string CRandomInputs::Cluster() {
    std::vector<CStoredNode> nodes;
    for (int i = 1; i <= 5; ++i) {
        const std::string strNumber = std::to_string(i);
        nodes.push_back({"n" + strNumber,
                         {"MeroRecord", i % 2 == 0 ? "MeroImgDev" : "MeroCloudStorage"},
                         "Normal",
                         "10.0.0." + strNumber});
    }
    return ClusterText(nodes);
}

CInput CRandomInputs::Next() {
    if (m_dice.Below(3) == 0) {
        m_iNow += m_dice.Below(200) == 0 ? 100 : 1;
        return {m_iNow, CTick()};
    }
    return {m_iNow, Body()};
}

InputBody CRandomInputs::Body() {
    const std::size_t uiKind = m_dice.Below(40);
    return uiKind < 26 ? Report() : uiKind < 32 ? Record() : uiKind < 36 ? Membership() : Record();
}

InputBody CRandomInputs::Report() {
    if (m_dice.Below(10) == 0) {
        CNodeReport report;
        report.strNodeId = Node();
        report.total = CFigures{100, 100, 100, 100, 1000};
        report.used = CFigures{static_cast<int32_t>(m_dice.Below(100)), 1, 2, 3, 4};
        return report;
    }
    if (m_dice.Below(10) == 0) {
        CNvrReport report;
        report.strNvr = Node();
        report.iTotal = 1000;
        report.iUsed = static_cast<int32_t>(m_dice.Below(4) * 100);
        report.iMu = report.iScu = ORVA_STATUS_RUN;
        report.iImgu = m_dice.Below(2) == 0 ? ORVA_STATUS_RUN : 0;
        return report;
    }
    const CContainerAddr addr(Node(), TYPES[m_dice.Below(3)]);
    CContainerReport report = ReportOf(addr);
    if (addr.GetContainerType() == TYPES[2]) {
        report.tasks.reset();
        report.iMessageType = CONTAINER_STATUS_REPORT_REQ;
        report.parameters = {{"pool", "p" + addr.GetNodeId()}};
    }
    if (m_dice.Below(8) == 0) {
        report.total.reset();
        report.used.reset();
    }
    if (m_dice.Below(12) == 0) {
        report.processes = {{"writer", static_cast<int32_t>(m_dice.Below(3))}};
    }
    if (report.tasks && m_dice.Below(6) == 0) {
        report.tasks->clear();
    }
    if (m_dice.Below(2) == 0) {
        report.ullSeen = ~uint64_t{0} >> 1U;
    }
    return report;
}

InputBody CRandomInputs::Record() {
    switch (m_dice.Below(8)) {
        case 0: {
            CEndTasks end;
            end.strType = TYPES[0];
            end.tasks = {Task(), Task()};
            return end;
        }
        case 1: {
            CHighSpeed download;
            download.iBitRate = 1 + static_cast<int32_t>(m_dice.Below(20));
            download.bPicture = m_dice.Below(2) == 0;
            return download;
        }
        case 2: {
            CExplain explain;
            explain.strType = TYPES[0];
            explain.strTaskId = Task();
            return explain;
        }
        case 3:
            return m_dice.Below(2) == 0 ? InputBody(CNextMasterVersion())
                                        : InputBody(CBalanceNow());
        default: {
            CJob job;
            job.strNodeId = "n1";
            job.uiJobType = NUMERIC_RECORD_JOB;
            job.strXml = JobXml({{Task(), static_cast<int32_t>(m_dice.Below(50))},
                                 {Task() + "m", 10, m_dice.Below(4) != 0}});
            return job;
        }
    }
}

InputBody CRandomInputs::Membership() {
    switch (m_dice.Below(6)) {
        case 0: {
            CJoin join;
            join.strNodeId = Node();
            join.strIp = "10.0.1." + std::to_string(m_dice.Below(9));
            join.types = {TYPES[0]};
            return join;
        }
        case 1: {
            CLeave leave;
            leave.strNodeId = Node();
            leave.strType = m_dice.Below(2) == 0 ? TYPES[0] : "";
            return leave;
        }
        case 2: {
            CDrain drain;
            drain.strNodeId = Node();
            return drain;
        }
        case 3: {
            CCgAdd add;
            add.strNodeId = Node();
            add.strFloatCode = "f" + add.strNodeId;
            add.strFloatIp = "10.0.2." + std::to_string(m_dice.Below(9));
            return add;
        }
        case 4: {
            CReadmit readmit;
            readmit.strPlugin = "recording";
            return readmit;
        }
        default: {
            CMemberStatus status;
            status.nodes = {Node()};
            status.eStatus = m_dice.Below(3) == 0 ? EMemberStatus::REMOVED : EMemberStatus::NORMAL;
            return status;
        }
    }
}
