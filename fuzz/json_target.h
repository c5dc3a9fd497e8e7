#pragma once

#include <memory>
#include <string>

#include "common_service/data/communication_data.h"

using DocumentMaker = std::unique_ptr<CBaseJsonObject> (*)();

/// Feeds a text to the reader of a document, behind the store and directly, and writes what it read
/// into buffers of several sizes.
void FeedJson(DocumentMaker pMake, unsigned int uiBufLen, const std::string& strInput);
