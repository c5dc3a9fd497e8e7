#pragma once

#include <ostream>
#include <string>

struct CCheckOptions {
    std::string strDir;    ///< a folder whose files take the place of the store's documents
    std::string strStore;  ///< the store's name
    bool bJson = false;
};

/// Reads every document of the store, or its file in the folder, loads the plug-ins, and reports
/// what is wrong with the documents and between them. Returns an exit code.
int Check(const CCheckOptions& options, std::ostream& output, std::ostream& errors);
