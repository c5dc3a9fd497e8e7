#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "cluster_engine/host.h"
#include "common_service/data/communication_data.h"

/// The buffer of each of the engine's own documents.
inline constexpr uint32_t NUMERIC_DOCUMENT_BYTES = 65536;

/// What is read to learn whether the store is back.
inline constexpr char PSZ_STORE_PROBE[] = "/Engine/Index";

/// What an id is called as the name of a store node: letters, digits, "-", "_" and ".", other bytes
/// as "%" and two digits, and so a "." at the front.
std::string StoreName(const std::string& strId);

/// The store as the engine's rules see it: whole texts, below the cluster's path. After a call that
/// ran out of time the store counts as away: what needs it is refused at once, and each tick tries.
class CEngineStore {
public:
    explicit CEngineStore(IStoreGate& gate) : m_gate(gate) {}

    /// Is it away, as far as the last call told? No rule begins then what needs it.
    bool IsAway() const { return m_gate.IsAway(); }

    /// Reads a text. Returns 0, or a code with the text untouched; bAbsent is true when there is no
    /// such node. A node without data, or with more than the engine writes, reads as an empty text,
    /// which no document is.
    int Read(const std::string& strSuffix, std::string& strText, bool& bAbsent);

    /// Writes a text. Returns 0 or a code.
    int Write(const std::string& strSuffix, const std::string& strText);

    /// Writes texts, by suffix, all of them or none, and none waits. Returns 0 or a code.
    int WriteTogether(std::map<std::string, std::string> texts);

    /// From now on the version numbers may wait, but for the first write of each commit. They are
    /// out with what bears one of them: a number that is lost was never seen.
    void LetVersionsWait();
    bool IsAnyWaiting() const { return m_gate.IsAnyWaiting(); }

    /// Writes what waits. Returns 0 or a code.
    int WriteWaiting() { return m_gate.WriteWaiting(); }

    /// The same for one of the library's documents; one without data counts as absent.
    int ReadDocument(const std::string& strSuffix, uint32_t uiBufLen, CBaseJsonObject& document,
                     bool& bAbsent);
    int WriteDocument(const std::string& strSuffix, uint32_t uiBufLen, CBaseJsonObject& document);

private:
    IStoreGate& m_gate;
};
