#pragma once

#include "cluster_engine/cluster.h"
#include "cluster_engine/input.h"

/// Who has not reported for longer than the silence time is silent. A node's silence sets its flag
/// and an event, no more: containers are judged by their own reports. When many of a type fall
/// silent together the shifts of the type are held, since it is likelier that nobody hears them.

/// At a tick: finds who fell silent, and holds or releases types.
void JudgeSilence(CCluster& cluster);

/// Everybody counts as heard of now.
void RenewReportTimes(CCluster& cluster);

/// A silent one has reported.
void ReturnNode(CCluster& cluster, const std::string& strNodeId, CNodeRecord& node);
void ReturnContainer(CCluster& cluster, const CContainerAddr& addr, CContainerRecord& record);

/// Are the shifts of the type held?
bool IsHeld(const CCluster& cluster, const std::string& strType);

CAnswer ShiftAnyway(CCluster& cluster, const CShiftAnyway& input);
