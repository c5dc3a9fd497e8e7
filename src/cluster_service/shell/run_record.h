#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

#include "cluster_engine/engine.h"
#include "cluster_engine/journal.h"
#include "shell/journal_files.h"
#include "shell/recorded_runner.h"
#include "shell/recorded_store.h"

/// What happens in a run: its digest, and, if a file is named, its journal. When a file has reached
/// its size, the next commit that went well begins another. When one cannot be written, as on a
/// full disk, the cluster goes on without a journal, and after a minute another file is tried.
class CRunRecord {
public:
    /// All of them outlive the record.
    CRunRecord(CRecordedStore& store, CRecordedRunner& runner, const CJournalSettings& settings)
        : m_store(store),
          m_runner(runner),
          m_files(settings),
          m_ullMaxBytes(settings.ullMaxBytes) {}
    ~CRunRecord();
    CRunRecord(const CRunRecord&) = delete;
    CRunRecord& operator=(const CRunRecord&) = delete;

    /// The engine is loaded, all that the load had to say is told, and nothing waits to be written:
    /// from now on it counts.
    void Begin(const CClusterEngine& engine, const CEngineSettings& settings);

    /// The input is about to be applied.
    void Take(const CInput& input);
    void Take(const CAnswer& answer) { m_digest.Take(answer); }
    void Take(const CEvent& event) { m_digest.Take(event); }

    /// A commit came to that code, and its events are taken. bRest: nothing waits to be written,
    /// and the store is there.
    void Committed(const CClusterEngine& engine, int iCode, bool bRest);

    std::string GetDigest() const { return m_digest.Text(); }

    /// What went wrong with a file, the last time; empty when nothing did.
    const std::string& GetFault() const { return m_strFault; }

private:
    void BeginFile(const CClusterEngine& engine);
    bool IsTimeForAFile();
    void RemoveOldFiles();
    void NoticeFault();

    CRecordedStore& m_store;
    CRecordedRunner& m_runner;
    CRunDigest m_digest;
    CEngineSettings m_settings;
    CJournalFiles m_files;
    const uint64_t m_ullMaxBytes;
    std::string m_strName;  ///< of the newest
    std::ofstream m_stream;
    std::unique_ptr<CJournalWriter> m_pWriter;  ///< null while there is no file
    std::string m_strFault;
    int64_t m_iNow = 0;
    int64_t m_iFault = 0;  ///< when a file could not be written
};
