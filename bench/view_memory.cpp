#include "view_memory.h"

#include <malloc.h>

#include "cluster.h"

namespace {

double HeapInUse() {
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

/// What the first decision in such a cluster leaves behind.
double ViewMemory(int iNodes, int iTasks) {
    FillRecorders(iNodes, iTasks);
    Recording().UnInit();
    const double fBefore = HeapInUse();
    {
        CTaskContainerMap bindTable;
        unsigned long long ullNumber = 0;
        Recording().TaskSchedule("node", MakeTasks("new", 1), bindTable, ullNumber, false);
    }
    return HeapInUse() - fBefore;
}

}  // namespace

void MeasureViewMemory(Medians& medians) {
    constexpr int NODES = 300;
    constexpr int TASKS = 200;
    ViewMemory(NODES, 1);  // what the store and the heap keep for themselves is there from now on
    medians["ViewMemory/container"] = ViewMemory(10 * NODES, 0) / (10 * NODES);
    medians["ViewMemory/task"] =
        (ViewMemory(NODES, TASKS) - ViewMemory(NODES, 0)) / (NODES * TASKS);
}
