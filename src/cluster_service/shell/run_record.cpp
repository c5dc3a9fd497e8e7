#include "shell/run_record.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace {

constexpr int64_t NUMERIC_PAUSE_AFTER_FAULT = 60;

}  // namespace

CRunRecord::~CRunRecord() {
    m_store.Listen(nullptr, nullptr);
    m_runner.Listen(nullptr);
}

void CRunRecord::Begin(const CClusterEngine& engine, const CEngineSettings& settings) {
    m_settings = settings;
    m_digest = CRunDigest();
    const auto onChance = [this](const CChance& chance) {
        if (m_pWriter != nullptr) {
            m_pWriter->Write(chance);
        }
    };
    m_store.Listen(onChance, [this](const std::string& strPath, const std::string& strText) {
        m_digest.TakeWrite(strPath, strText);
    });
    m_runner.Listen(onChance);
    m_store.BeginInput();
    m_runner.BeginInput();
    if (m_files.IsAny()) {
        BeginFile(engine);
    }
}

void CRunRecord::Take(const CInput& input) {
    m_iNow = input.iTime;
    m_store.BeginInput();
    m_runner.BeginInput();
    if (m_pWriter != nullptr) {
        m_pWriter->Write(input);
    }
}

void CRunRecord::Committed(const CClusterEngine& engine, int iCode, bool bRest) {
    if (m_pWriter != nullptr) {
        m_pWriter->Write(CJournalCommit{iCode, m_digest.Text()});
        NoticeFault();
    }
    if (iCode == 0 && bRest && IsTimeForAFile()) {
        BeginFile(engine);
    }
}

bool CRunRecord::IsTimeForAFile() {
    if (m_pWriter == nullptr) {
        return m_files.IsAny() && m_iNow - m_iFault >= NUMERIC_PAUSE_AFTER_FAULT;
    }
    return static_cast<uint64_t>(m_stream.tellp()) >= m_ullMaxBytes;
}

/// The lines of a file give the same digests whatever came before it: each begins anew, and calls
/// count from its first line.
void CRunRecord::BeginFile(const CClusterEngine& engine) {
    m_pWriter.reset();
    m_strName = m_files.NameNext();
    m_stream = std::ofstream(m_strName, std::ios::binary);
    m_digest = CRunDigest();
    m_store.BeginInput();
    m_runner.BeginInput();
    CJournalHeader header;
    header.settings = m_settings;
    header.state = engine.GetState();
    m_store.FillHeader(header);
    m_pWriter = std::make_unique<CJournalWriter>(m_stream, header);
    m_stream.flush();
    NoticeFault();
    if (m_pWriter != nullptr) {
        RemoveOldFiles();
    }
}

void CRunRecord::RemoveOldFiles() {
    if (std::string strFault = m_files.RemoveOldest(); !strFault.empty()) {
        m_strFault = std::move(strFault);
    }
}

void CRunRecord::NoticeFault() {
    if (m_pWriter->IsGood()) {
        return;
    }
    m_strFault = m_strName + ": cannot be written: " + std::strerror(errno);
    m_iFault = m_iNow;
    m_pWriter.reset();
}
