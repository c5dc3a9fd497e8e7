#include "common_service/memstat.h"

uint32_t g_hald_memstat[HALD_MEMSTAT_BUTT] = {};
