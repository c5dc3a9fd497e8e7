#pragma once

#include <cstdint>

/// The kinds of objects that are counted.
enum HALD_MEMSTAT_TYPE {
    HALD_MEMSTAT_PLUGIN_INFO,
    HALD_MEMSTAT_BUTT,
};

/// How many objects of each kind are alive: zero at the start, and changed without a lock by the
/// thread that loads.
[[gnu::visibility("default")]] extern uint32_t g_hald_memstat[HALD_MEMSTAT_BUTT];
