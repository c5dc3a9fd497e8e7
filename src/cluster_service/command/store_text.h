#pragma once

#include <ostream>
#include <string>

#include "command/store_document.h"
#include "common_service/tarn_def.h"

/// What the store answered for a document.
struct CStoredText {
    int iCode = ORVA_SUCCEED;  ///< not 0 when the store failed
    bool bExists = false;
    std::string strText;
};

CStoredText ReadFromStore(const CStoreDocument& document);

/// Says on the stream why the store failed, unless the code is 0. Is it?
bool StoreAnswered(const CStoreDocument& document, int iCode, std::ostream& errors);
