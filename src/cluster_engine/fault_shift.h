#pragma once

#include "cluster_engine/cluster.h"

/// The work of a container that cannot do it goes elsewhere, what finds no room waits. One shift a
/// container at a time. What waits is tried with growing pauses, and when room appears.

/// At a tick: shifts the work of silent containers, where the configuration and the type allow it,
/// and tries what waits.
void ShiftFaults(CCluster& cluster);

/// Shifts what may move out of a container, for whatever reason, and leaves waiting what finds no
/// room. One that is usable is drained.
void BeginShift(CCluster& cluster, const CContainerAddr& addr, bool bReschedule,
                const std::string& strCause);

/// The container does its work itself again: what still waits stays with it.
void EndShift(CCluster& cluster, const CContainerAddr& addr, const std::string& strCause);

/// Work without a container waits from now on.
void WaitHomeless(CCluster& cluster, const std::string& strType);

/// The container is about to report these figures: is that room for something that waits?
void NoticeRoom(CCluster& cluster, const CContainerAddr& addr, const CFigures& total,
                const CFigures& used);

/// At a tick: work that its container was handed and has not taken up in time goes elsewhere.
void MoveNotTakenUp(CCluster& cluster);
