#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "cluster_engine/answer.h"
#include "cluster_engine/event.h"
#include "cluster_engine/input.h"
#include "cluster_engine/settings.h"

/// What an engine was told, one JSON line each, in order:
///
///     {"journal":1,"settings":{},"state":{...},"texts":{"/CloudX/Version":"{...}"}}
///     {"time":1772611200,"input":"node_report","node":"record-01"}
///     {"store_failed":1,"code":-4}
///     {"commit":-4,"digest":"9ae16a3b2f90404f"}
///
/// The first line has the state that the others begin on, with the store's texts: a file needs
/// nothing beside it. Every tick is there. Behind an input stands what the engine could not know,
/// each with the number of the call since the input that told it. A commit bears its code and the
/// digest of all answers, events and writes since the first line: the same lines on the same state
/// give the same digests.

/// The version of the form, which the first line bears.
inline constexpr int32_t NUMERIC_JOURNAL_VERSION = 1;

/// The key of that line, by which a journal is known.
inline constexpr char PSZ_JOURNAL[] = "journal";

/// The key by which a commit is known.
inline constexpr char PSZ_COMMIT[] = "commit";

struct CJournalHeader {
    int32_t iVersion = NUMERIC_JOURNAL_VERSION;
    std::optional<CEngineSettings> settings;
    Json::Value state;                         ///< null: the engine is loaded from a store
    std::map<std::string, std::string> texts;  ///< of the store, by path
    std::vector<std::string> bare;             ///< its nodes without a text

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(PSZ_JOURNAL, self.iVersion);
        form.May("settings", self.settings);
        form.May("state", self.state);
        form.May("texts", self.texts);
        form.May("bare", self.bare);
    }
};

/// @name What the engine could not know. Calls count from 1 since the last input, or the first line
/// @{

/// A call of the store that failed.
struct CStoreFailed {
    static constexpr char KEY[] = "store_failed";
    uint64_t ullCall = 0;
    int32_t iCode = 0;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(KEY, self.ullCall);
        form.Need("code", self.iCode);
    }
};

/// A call of the store that read what nobody here has read or written there.
struct CForeignText {
    static constexpr char KEY[] = "foreign_text";
    uint64_t ullCall = 0;
    std::string strPath;
    bool bExists = true;
    std::optional<std::string> text;  ///< nothing when the node has none

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(KEY, self.ullCall);
        form.Need("path", self.strPath);
        form.May("exists", self.bExists, true);
        form.May("text", self.text);
    }
};

/// A call of a plug-in that did not come back in time. It is not made again.
struct CLateCall {
    static constexpr char KEY[] = "late_call";
    uint64_t ullCall = 0;
    uint64_t ullStoreCalls = 0;  ///< that it made meanwhile
    uint64_t ullDecision = 0;    ///< the cluster's number behind it

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(KEY, self.ullCall);
        form.May("store_calls", self.ullStoreCalls);
        form.Need("decision", self.ullDecision);
    }
};

/// Asked whether the plug-in's late call still runs, the answer was yes.
struct CStillBusy {
    static constexpr char KEY[] = "still_busy";
    std::string strPlugin;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(KEY, self.strPlugin);
    }
};

using CChance = std::variant<CStoreFailed, CForeignText, CLateCall, CStillBusy>;
/// @}

struct CJournalCommit {
    int32_t iCode = 0;
    std::string strDigest;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(PSZ_COMMIT, self.iCode);
        form.Need("digest", self.strDigest);
    }
};

using CJournalEntry = std::variant<CInput, CJournalCommit, CChance>;

enum class EJournalFault {
    NONE,
    NO_HEADER,        ///< the first line is none of a journal
    FOREIGN_VERSION,  ///< another release wrote it
    CUT,              ///< the last line ends in its middle; all before it holds
    NO_JSON,
    UNKNOWN_KIND,  ///< no line that this release knows
    BAD_FIELD,
};

template <>
struct CEnumNames<EJournalFault> {
    static constexpr const char* NAMES[] = {"none",    "no_header",    "foreign_version", "cut",
                                            "no_json", "unknown_kind", "bad_field"};
};

/// What is wrong with a line of a journal, or of another file of JSON lines.
struct CJournalFault {
    EJournalFault eFault = EJournalFault::NONE;
    std::size_t uiLine = 0;  ///< from 1
    CFieldFault where;

    /// As in `line 7: "tasks[3].costs": must be an object (bad_field)`.
    std::string Text() const;
};

/// Reads a file of JSON lines, a journal or one that is like it.
class CLineReader {
public:
    /// The stream outlives the reader.
    explicit CLineReader(std::istream& stream) : m_stream(stream) {}

    /// The next line. False at the end.
    bool Next(std::string& strLine);

    std::size_t GetLine() const { return m_uiLine; }

    /// Parses the line that was read last. A last line without its line feed that is no JSON is
    /// CUT.
    bool Parse(const std::string& strLine, Json::Value& value, CJournalFault& fault) const;

private:
    std::istream& m_stream;
    std::size_t m_uiLine = 0;
    bool m_bEnded = false;  ///< the last line has no line feed
};

/// Reads the object of a first line.
bool ReadJournalHeader(const Json::Value& json, CJournalHeader& header, CJournalFault& fault);

/// Reads the object of any other line. The fault's line is left alone.
bool ReadJournalEntry(const Json::Value& json, CJournalEntry& entry, CJournalFault& fault);

/// Reads a journal from its first line on.
class CJournalReader {
public:
    explicit CJournalReader(std::istream& stream) : m_lines(stream) {}

    /// The next entry. False at the end, and at a fault, behind which nothing is read.
    bool Next(CJournalEntry& entry);

    /// Read with the first entry.
    const CJournalHeader& GetHeader() const { return m_header; }

    const CJournalFault& GetFault() const { return m_fault; }
    std::size_t GetLine() const { return m_lines.GetLine(); }

private:
    CLineReader m_lines;
    CJournalHeader m_header;
    CJournalFault m_fault;
};

/// One number for a run of answers, events and writes: FNV-1a over their JSON lines.
class CRunDigest {
public:
    void Take(const CAnswer& answer);
    void Take(const CEvent& event);
    void TakeWrite(const std::string& strPath, const std::string& strText);
    std::string Text() const;

private:
    void TakeLine(const std::string& strLine);

    uint64_t m_ullSum = 14695981039346656037ULL;
};

/// Writes a journal. A line stands when it has been flushed; what a full disk refuses is told once
/// by IsGood, and the cluster goes on.
class CJournalWriter {
public:
    /// Writes the header. The stream outlives the writer.
    CJournalWriter(std::ostream& stream, const CJournalHeader& header);

    void Write(const CInput& input);
    void Write(const CChance& chance);

    /// Flushes: the lines up to here stand.
    void Write(const CJournalCommit& commit);

    bool IsGood() const { return m_stream.good(); }

private:
    std::ostream& m_stream;
};
