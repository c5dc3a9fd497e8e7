#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "cluster_engine/journal.h"

/// What a story expects to have happened by its time.
struct CExpectation {
    Json::Value wanted;            ///< an event or a row of the table of containers, or part of one
    std::optional<int32_t> times;  ///< of an event: so often; without it at least once
};

/// One line of a file of inputs.
struct CStoryLine {
    std::size_t uiLine = 0;
    int64_t iTime = 0;  ///< of a commit: that of the line before it
    std::variant<CInput, CJournalCommit, CExpectation> content;
    std::vector<CChance> chances;  ///< until the next input of a journal
    int64_t iEvery = 0;            ///< an input that comes again, after so many seconds; 0: once
    int64_t iUntil = 0;            ///< not behind this second
    std::optional<Json::Value> wantedAnswer;  ///< of an input, or part of it
};

/// A file of inputs: a journal as the engine writes it, or a story, which is one by hand:
///
///     # what a person wants to say
///     {"story":1, "name":"A quiet morning", "day":"2026-03-04"}
///     {"time":"06:00:00", "input":"node_report", "node":"n1", "every":30, "until":"07:00:00"}
///     {"time":"06:10:00", "input":"promote", "node":"n9", "expect":{"result":"refused"}}
///     {"time":"06:12:00", "expect":{"event":"offline", "node":"n2"}, "times":1}
///     {"time":"06:12:00", "expect":{"container":"MeroRecord", "node":"n2", "online":false}}
///
/// The first line may be left out of a story; times are seconds then, as in a journal. With
/// "ticks":false in it no ticks are made but those of the file.
struct CStory {
    bool bJournal = false;         ///< ticks and commits stand in the file; else they are made
    bool bMakesTicks = true;       ///< of a story: false when its ticks stand in the file
    CJournalHeader header;         ///< of a journal
    std::vector<CChance> chances;  ///< of a journal, before its first input
    std::string strName;
    std::vector<CStoryLine> lines;
};

/// Reads all of it. False, with the first fault and its line, when something is wrong.
bool ReadStory(std::istream& stream, CStory& story, CJournalFault& fault);

/// Reads a file that has at least one line. False when something is wrong with it, which is told.
bool ReadStoryFile(const std::string& strFile, CStory& story, std::ostream& errors);
