#include "service_bench.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bare_server.h"
#include "child_process.h"
#include "http_load.h"
#include "reference_host/sqlite_store.h"
#include "service_process.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int TURNS = 9;

constexpr std::size_t AGENTS = 700;
constexpr std::chrono::milliseconds WINDOW{700};

constexpr std::size_t CLIENTS = 64;
constexpr int SINGLE_JOBS = 10;  ///< of a client in one turn, as are the others
constexpr int HUNDRED_JOBS = 2;
constexpr int DRY_RUNS = 10;
constexpr int STORE_WRITES = 500;  ///< of a turn

constexpr char RECORDER[] = "MeroRecord";
const std::vector<std::string> RECORDERS = {"record-01", "record-02", "record-03", "record-04",
                                            "record-05", "record-06", "record-07", "record-08",
                                            "mixed-01",  "mixed-02",  "mixed-03"};
constexpr char ASSIGNMENT[] = "/CloudMain/Engine/Assignment/record-01/MeroRecord/0";

/// What each turn measured, by name.
class CTurns {
public:
    void Add(const std::string& strName, double fValue) { m_values[strName].push_back(fValue); }

    void EnterMedians(Medians& medians) {
        for (auto& [strName, values] : m_values) {
            const auto it = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
            std::nth_element(values.begin(), it, values.end());
            medians[strName] = *it;
        }
    }

private:
    std::map<std::string, std::vector<double>> m_values;
};

/// Each connection asks so many times, with a request that is made from its number and the time.
template <typename MakeRequest>
CHttpLoadResult RunTimes(CHttpLoad& load, int iTimes, const MakeRequest& makeRequest) {
    std::map<std::size_t, int> done;
    return load.Run([&](std::size_t uiConnection) {
        const int iTime = done[uiConnection]++;
        return iTime < iTimes ? makeRequest(uiConnection, iTime) : "";
    });
}

std::string NodeReport(const std::string& strNode) {
    return R"({"input":"node_report","node":")" + strNode + R"("})";
}

/// As long as those of most agents.
std::string ContainerReport(const std::string& strNode, const std::string& strType) {
    return R"({"input":"container_report","node":")" + strNode + R"(","type":")" + strType +
           R"(","total":{"disk":4000000,"net":1000000},"used":{"disk":10,"net":5},)"
           R"("processes":{"recorder":0},"seen":0,"tasks":[]})";
}

/// The agent of each container; two on a node, since more nodes do not find room in the document.
std::string NodeOf(std::size_t uiAgent) {
    return "node-" + std::to_string(uiAgent / 2);
}

std::string TypeOf(std::size_t uiAgent) {
    return uiAgent % 2 == 0 ? RECORDER : "MeroImgDev";
}

/// Writes the document of a cluster of so many agents, and returns its folder.
std::string WriteClusterOfAgents(const CScratchFolder& folder) {
    std::string strNodes;
    for (std::size_t ui = 0; ui < AGENTS; ui += 2) {
        strNodes += (ui == 0 ? "" : ",") + std::string(R"({"Container":[{"ContainerType":")") +
                    TypeOf(ui) + R"("},{"ContainerType":")" + TypeOf(ui + 1) +
                    R"("}],"DomainRole":0,"NodeID":")" + NodeOf(ui) +
                    R"(","NodeIP":"","NodeIPType":0,"NodeRole":4,"Status":"Normal"})";
    }
    const std::filesystem::path folderOfDocuments = folder.In("documents");
    std::filesystem::create_directory(folderOfDocuments);
    std::ofstream(folderOfDocuments / "cluster.json")
        << R"({"ClusterCode":"Main","ClusterForwardType":0,"ClusterName":"","ClusterNode":[)"
        << strNodes << R"(],"ClusterRemark":""})";
    return folderOfDocuments;
}

/// Every connection's agent reports without pause for a while.
CHttpLoadResult ReportForAWhile(CHttpLoad& load, const std::vector<std::string>& requests) {
    const Clock::time_point until = Clock::now() + WINDOW;
    return load.Run([&](std::size_t uiAgent) {
        return Clock::now() < until ? requests[uiAgent] : std::string();
    });
}

void MeasureReports(CTurns& turns) {
    const CScratchFolder folder;
    CChildProcess bare(&RunBareServer);
    const CServiceProcess service(folder, WriteClusterOfAgents(folder));
    CHttpLoad agents(service.GetPort(), AGENTS);
    CHttpLoad agentsOfBare(bare.AwaitPort(), AGENTS);
    RunTimes(agents, 1, [&](std::size_t uiAgent, int /*iTime*/) {
        return agents.MakePost("/api/v1/reports", NodeReport(NodeOf(uiAgent)));
    });
    std::vector<std::string> requests;
    for (std::size_t ui = 0; ui < AGENTS; ++ui) {
        requests.push_back(
            agents.MakePost("/api/v1/reports", ContainerReport(NodeOf(ui), TypeOf(ui))));
    }
    for (int i = 0; i < TURNS; ++i) {
        const CHttpLoadResult ours = ReportForAWhile(agents, requests);
        const CHttpLoadResult theirs = ReportForAWhile(agentsOfBare, requests);
        turns.Add("ServiceReport", ours.GetNanosecondsPerAnswer());
        turns.Add("ServiceReport/99th", ours.Get99thPercentile());
        turns.Add("BareReport", theirs.GetNanosecondsPerAnswer());
        turns.Add("BareReport/99th", theirs.Get99thPercentile());
    }
}

/// The clients of the sample cluster.
class CJobs {
public:
    explicit CJobs(uint16_t uiPort) : m_clients(uiPort, CLIENTS) {}

    /// The recorders report that they run nothing: what ended is forgotten then.
    void Report() {
        std::string strReports;
        for (const std::string& strNode : RECORDERS) {
            strReports += (strReports.empty() ? "" : ",") + NodeReport(strNode) + ',' +
                          ContainerReport(strNode, RECORDER);
        }
        RunTimes(m_clients, 1, [&](std::size_t uiClient, int /*iTime*/) {
            return uiClient == 0 ? m_clients.MakePost("/api/v1/reports", '[' + strReports + ']')
                                 : std::string();
        });
    }

    /// Every client asks for so many jobs, one after the other.
    double Place(const std::string& strPath, int iJobs, int iTasks) {
        const CHttpLoadResult result =
            RunTimes(m_clients, iJobs, [&](std::size_t uiClient, int iJob) {
                std::string strXml;
                for (int i = 0; i < iTasks; ++i) {
                    strXml += "<Task><TaskID>" + TaskOf(uiClient, iJob * iTasks + i) +
                              "</TaskID><Net>1</Net><Disk>1</Disk></Task>";
                }
                return m_clients.MakePost(
                    strPath, R"({"node":"center-01","job_type":1001,"xml":"<TaskList>)" + strXml +
                                 R"(</TaskList>"})");
            });
        return result.GetNanosecondsPerAnswer();
    }

    /// Every client ends its tasks, so that the next turn finds room.
    void End(int iTasks) {
        RunTimes(m_clients, 1, [&](std::size_t uiClient, int /*iTime*/) {
            std::string strTasks;
            for (int i = 0; i < iTasks; ++i) {
                strTasks += (i == 0 ? "\"" : ",\"") + TaskOf(uiClient, i) + '"';
            }
            return m_clients.MakePost("/api/v1/tasks/MeroRecord/end",
                                      R"({"tasks":[)" + strTasks + "]}");
        });
        Report();
    }

private:
    static std::string TaskOf(std::size_t uiClient, int iTask) {
        return "camera-" + std::to_string(uiClient) + '-' + std::to_string(iTask);
    }

    CHttpLoad m_clients;
};

std::shared_ptr<IStore> OpenStore(const std::string& strFile) {
    std::string strError;
    std::shared_ptr<IStore> pStore = CSqliteStore::Open(strFile, strError);
    if (pStore == nullptr) {
        throw std::runtime_error(strError);
    }
    return pStore;
}

/// A text as long as a recorder's assignment is in the middle of a turn, which begins without.
std::string MiddlingAssignment(const std::string& strStoreFile) {
    CStoreAnswer answer;
    if (OpenStore(strStoreFile)->Read(ASSIGNMENT, nullptr, answer) != 0 || !answer.text) {
        throw std::runtime_error("a recorder has no assignment");
    }
    return std::string(answer.text->size() / 2, 'x');
}

double WriteToStore(IStore& store, const std::string& strText) {
    const Clock::time_point begun = Clock::now();
    for (int i = 0; i < STORE_WRITES; ++i) {
        if (store.Write(ASSIGNMENT, strText) != 0) {
            throw std::runtime_error("a store takes no write");
        }
    }
    const std::chrono::duration<double, std::nano> took = Clock::now() - begun;
    return took.count() / STORE_WRITES;
}

void MeasureJobs(CTurns& turns) {
    const CScratchFolder folder;
    const CServiceProcess service(folder, SAMPLE_DIR);
    CJobs jobs(service.GetPort());
    jobs.Report();
    jobs.Place("/api/v1/jobs", SINGLE_JOBS, 1);
    const std::string strText = MiddlingAssignment(service.GetStoreFile());
    jobs.End(SINGLE_JOBS);
    const std::shared_ptr<IStore> pStore = OpenStore(folder.In("alone.db"));
    for (int i = 0; i < TURNS; ++i) {
        turns.Add("ServiceJob/1", jobs.Place("/api/v1/jobs", SINGLE_JOBS, 1));
        turns.Add("ServiceDryRun/1", jobs.Place("/api/v1/dry-runs", DRY_RUNS, 1));
        jobs.End(SINGLE_JOBS);
        turns.Add("StoreWrite", WriteToStore(*pStore, strText));
        turns.Add("ServiceJob/100", jobs.Place("/api/v1/jobs", HUNDRED_JOBS, 100));
        jobs.End(HUNDRED_JOBS * 100);
    }
}

/// Two sets of agents are more than many systems allow at first.
void AllowSockets() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

double PerSecond(const Medians& medians, const char* pszName) {
    return 1e9 / medians.at(pszName);
}

void PrintRates(const Medians& medians) {
    std::printf("service, per second: %.0f reports over 700 connections (bare handler %.0f), ",
                PerSecond(medians, "ServiceReport"), PerSecond(medians, "BareReport"));
    std::printf("%.0f durable jobs of one task (the store alone %.0f writes), ",
                PerSecond(medians, "ServiceJob/1"), PerSecond(medians, "StoreWrite"));
    std::printf("%.0f of 100 tasks, %.0f dry runs\n", PerSecond(medians, "ServiceJob/100"),
                PerSecond(medians, "ServiceDryRun/1"));
    std::fflush(stdout);
}

}  // namespace

void MeasureService(Medians& medians) {
    AllowSockets();
    CTurns turns;
    MeasureReports(turns);
    MeasureJobs(turns);
    turns.EnterMedians(medians);
    PrintRates(medians);
}
