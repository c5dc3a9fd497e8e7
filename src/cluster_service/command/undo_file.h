#pragma once

#include <string>
#include <utility>
#include <vector>

#include "command/stage.h"

/// A store file that keeps the texts which a change replaces, so that an import of it takes the
/// change back. A document that was not there, or without data, is kept as an empty text: an import
/// leaves it without data. The file goes again unless Keep is called.
class CUndoFile {
public:
    /// An empty name keeps nothing anywhere.
    explicit CUndoFile(std::string strFile) : m_strFile(std::move(strFile)) {}
    ~CUndoFile();
    CUndoFile(const CUndoFile&) = delete;
    CUndoFile& operator=(const CUndoFile&) = delete;

    /// Writes a new file. Returns what went wrong, with no file left; empty when it stands.
    std::string Write(const std::vector<CStagedChange>& changes);

    void Keep() { m_bWritten = false; }

private:
    const std::string m_strFile;
    bool m_bWritten = false;
};
