#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "framework_service/IPlugin.h"
#include "framework_service/base_data.h"
#include "framework_service/container.h"
#include "framework_service/resource_task.h"
#include "reference_host/memory_store.h"

/// The data that the benchmarks run on.

/// The memory store behind the library.
CMemoryStore& BenchStore();

/// Installs the store and a logger for errors alone, and loads the plug-ins.
void InstallBenchHost();

/// Tasks with six private pairs each, and ids that begin with the text.
std::list<CResourceTask> MakeTasks(const std::string& strOf, int iTasks);
std::list<CResourceTask> MakeTasks(int iTasks);

/// The plug-in that schedules recorders.
IPlugin& Recording();

/// The address of the recorder on node i.
CContainerAddr RecorderAddress(int i);

/// So much disk, and enough of the net.
CSystemResource Figures(int iDisk);

/// Fills both registries with so many nodes, each with a recorder that has that many tasks of its
/// own, and an image device without any. Each recorder has room for a few times its tasks.
void FillRecorders(int iNodes, int iTasks);

/// The address of container i; two on each node.
CContainerAddr AddressOf(int i);

/// Fills the container registry with iContainers of iTasks tasks each, all of the type of their
/// address.
void FillContainers(int iContainers, int iTasks);

/// The same with these containers: loaded first, then each reports its tasks, as in a running
/// cluster.
void StartCluster(const ContainerMap& containers, int iTasks);

/// A cluster document of so many tenths of what the store's limit of 65,535 characters allows, and
/// a cloud storage document for its nodes.
std::string MakeClusterText(int iTenths);
std::string MakeCloudStorageText(int iTenths);

/// The same data as a container holds, in plain standard containers.
struct PlainTask {
    std::string strId;
    std::string strName;
    std::map<std::string, std::string> privateInfo;
};

struct PlainContainer {
    std::string strNodeId;
    std::string strType;
    std::list<PlainTask> tasks;
};

std::map<std::string, PlainContainer> MakePlainContainers(int iContainers, int iTasks);
