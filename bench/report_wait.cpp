#include "report_wait.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "cluster.h"
#include "framework_service/container_mgr.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int TASKS = 100;
constexpr int WINDOWS = 9;
constexpr auto WINDOW = std::chrono::milliseconds(300);
constexpr auto PERIOD = std::chrono::microseconds(200);

/// The longest report of one window, in nanoseconds.
double LongestWait() {
    const CSystemResource resource;
    const CContainerAddr addr = AddressOf(0);
    Clock::duration longest{};
    const Clock::time_point tEnd = Clock::now() + WINDOW;
    for (Clock::time_point tNext = Clock::now(); tNext < tEnd; tNext += PERIOD) {
        std::this_thread::sleep_until(tNext);
        const Clock::time_point tStart = Clock::now();
        CContainerMgr::Instance().SetSystemResource(addr, resource, resource);
        longest = std::max(longest, Clock::now() - tStart);
    }
    return static_cast<double>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(longest).count());
}

double MedianLongestWait() {
    std::vector<double> waits;
    for (int i = 0; i < WINDOWS; ++i) {
        waits.push_back(LongestWait());
    }
    std::nth_element(waits.begin(), waits.begin() + WINDOWS / 2, waits.end());
    return waits[WINDOWS / 2];
}

/// The same beside a thread that reads all of that many containers without pause.
double MedianLongestWaitBesideReader(int iContainers) {
    FillContainers(iContainers, TASKS);
    std::atomic<bool> bStop{false};
    std::thread reader([&bStop] {
        while (!bStop) {
            ContainerMap containers;
            CContainerMgr::Instance().GetAllContainer(containers);
        }
    });
    const double fWait = MedianLongestWait();
    bStop = true;
    reader.join();
    return fWait;
}

}  // namespace

void MeasureReportWait(Medians& medians) {
    FillContainers(600, TASKS);
    medians["ReportWait/alone"] = MedianLongestWait();
    medians["ReportWait/600"] = MedianLongestWaitBesideReader(600);
    medians["ReportWait/6000"] = MedianLongestWaitBesideReader(6000);
}
