#pragma once

#include <ostream>
#include <string>

/// What the command line says about agents.
struct CAgentsOptions {
    std::string strServer;  ///< as in "http://127.0.0.1:8390"
    std::string strStory;   ///< the file with the story that they live
    bool bJson = false;     ///< for programs
    bool bStay = false;     ///< the agents go on behind the story, until SIGINT or SIGTERM
};

/// Waits for the service, lives the story with it (live_story.h), and shows what happens, the
/// service's containers before and after. Returns an exit code: EXIT_REFUSED when something was not
/// as the story expects, or the service shows other tasks than the agents have.
int Agents(const CAgentsOptions& options, std::ostream& output, std::ostream& errors);
