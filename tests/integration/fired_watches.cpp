#include "fired_watches.h"

#include <condition_variable>
#include <map>
#include <mutex>

namespace {

std::mutex g_mutex;
std::condition_variable g_fired;
std::map<std::string, int> g_mapCount;

}  // namespace

void RecordFired(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(g_mutex);
    ++g_mapCount[strPath];
    g_fired.notify_all();
}

void RecordFired(zhandle_t*, int, int, const char* path, void*) {
    RecordFired(path);
}

int CountFired(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(g_mutex);
    return g_mapCount[strPath];
}

bool AwaitFired(const std::string& strPath, int iCount, std::chrono::milliseconds limit) {
    std::unique_lock<std::mutex> lock(g_mutex);
    return g_fired.wait_for(lock, limit, [&] { return g_mapCount[strPath] >= iCount; });
}
