#pragma once

#include <string>
#include <vector>

#include "common_service/logger.h"
#include "serve/service_settings.h"

/// What the command line and the configuration file ask for.
struct COptions {
    std::string strCommand;
    std::string strDir;      ///< of import, diff, export and check
    std::string strSubject;  ///< of show; all when empty
    bool bJson = false;  ///< of show, check, play, agents and the commands that show a difference
    std::string strNodeId;         ///< of remove and promote
    std::string strContainerType;  ///< of remove
    bool bYes = false;             ///< of the commands that change the store, as the next three
    bool bDryRun = false;          ///< of play too, as the next
    bool bForce = false;           ///< also while a service runs the cluster
    std::string strUndoFile;
    std::string strServer = "http://127.0.0.1:8390";  ///< of agents, as the next
    std::string strStory = "sample/day.jsonl";
    bool bStay = false;
    std::string strFile;       ///< of play, as the next
    CJournalSettings journal;  ///< in a new file

    CServiceSettings service;  ///< of serve

    std::string strStore = "sqlite:cluster_service.db";
    std::string strClusterCode = "Main";
    std::string strLibDir;
    std::string strConfigDir;
    std::string strLocalIp;
    std::string strLogLevel = "warning";
    ORVA_LOG_LEVEL eLogLevel = ORVALOG_WARNING;  ///< what strLogLevel names
    std::string strLogFile;
    bool bLogWanted = false;  ///< was one of the two given?
};

/// Fills the options. False, with the exit code, when there is nothing left to do: help was asked
/// for and printed, or the usage is wrong and was explained. subjects is what show may show.
bool ParseOptions(int argc, char** argv, const std::vector<std::string>& subjects,
                  COptions& options, int& iExitCode);
