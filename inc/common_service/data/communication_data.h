#pragma once

#include <cstdint>

/// A document of the coordination store. The host reads a node's text and hands it to ParseJson;
/// it asks ToJson for the text before it writes. Documents have no lock: one thread at a time.
class [[gnu::visibility("default")]] CBaseJsonObject {
public:
    virtual ~CBaseJsonObject() = default;

    /// Reads the document from terminated JSON text. Returns 0, or ORVA_DATA_INVALID for a null
    /// pointer or bad content. May let an exception of the JSON library through on text that is
    /// valid JSON but no object: the host turns it into a code.
    virtual int32_t ParseJson(const char* pszJson) = 0;

    /// Writes the document as terminated text into a buffer of iMaxLen bytes, zeroing the rest.
    /// A text that does not fit is cut and still answers 0. Returns 1 for a null buffer.
    virtual int32_t ToJson(char* pszJson, uint32_t iMaxLen) = 0;
};
