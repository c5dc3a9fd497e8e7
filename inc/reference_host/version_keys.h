#pragma once

/// The keys of the version document: an object with the two numbers, and nothing else.
inline constexpr char PSZ_DECISION_VER_NUM[] = "DecisionVerNum";
inline constexpr char PSZ_MASTER_VER_NUM[] = "MasterVerNum";
