#pragma once

#include <string>

/// The extended parameters of a cloud storage container by which a plug-in learns what there is to
/// allocate. Sizes are decimal, in the unit of the containers' allocations.
///
/// A pool that the container offers, each under a word of its own, which may be any text:
///
///     Pool.1.Code = pool-a                    how allocations name it; unique in the cluster
///     Pool.1.Size = 12000                     1 or more
///     Pool.1.Dns  = pool-a.storage.example    where its server is; may be left out
///     Pool.1.Path = /volume                   its place there; may be left out
///
/// What was decided for the container's node and is not in its reported allocations yet, by the
/// code of the pool; kept there by whoever hands requests to the nodes, until the node has reported
/// or was given up on:
///
///     Taken.pool-a = 300                      allocated; counts as allocated from the pool
///     Released.pool-a = 200                   reduced; is not taken back a second time
inline constexpr char PSZ_POOL_PARAM[] = "Pool.";
inline constexpr char PSZ_POOL_CODE[] = "Code";
inline constexpr char PSZ_POOL_SIZE[] = "Size";
inline constexpr char PSZ_POOL_DNS[] = "Dns";
inline constexpr char PSZ_POOL_PATH[] = "Path";
inline constexpr char PSZ_TAKEN_PARAM[] = "Taken.";
inline constexpr char PSZ_RELEASED_PARAM[] = "Released.";

/// The key of a pool's field, as PSZ_POOL_SIZE.
inline std::string PoolParam(const std::string& strPool, const char* pszField) {
    return PSZ_POOL_PARAM + strPool + "." + pszField;
}

inline std::string TakenParam(const std::string& strCode) {
    return PSZ_TAKEN_PARAM + strCode;
}

inline std::string ReleasedParam(const std::string& strCode) {
    return PSZ_RELEASED_PARAM + strCode;
}
