#include "command/staged_change.h"

#include <json/value.h>
#include <json/writer.h>

#include <optional>
#include <utility>
#include <vector>

#include "command/confirm.h"
#include "command/document_difference.h"
#include "command/exit_code.h"
#include "command/held_log.h"
#include "command/undo_file.h"
#include "reference_host/code_text.h"
#include "reference_host/shown_text.h"

namespace {

/// How often a change that nobody is asked about is worked out before it gives up.
constexpr int NUMERIC_MAX_TRIES = 20;

/// While it lives, lines are kept: they are written when the change has happened, else dropped.
class CHeldLines {
public:
    CHeldLines() { OMAdapter::getInstance().setLogger(&m_held); }
    ~CHeldLines() { OMAdapter::getInstance().setLogger(m_pLogger); }
    CHeldLines(const CHeldLines&) = delete;
    CHeldLines& operator=(const CHeldLines&) = delete;

    void Release() {
        if (m_pLogger != nullptr) {
            m_held.ReleaseTo(*m_pLogger);
        }
    }

private:
    Logger* const m_pLogger = OMAdapter::getInstance().getLogger();
    CHeldLog m_held{ORVALOG_DEBUG,
                    LogOfFailures() != nullptr ? CHeldLog::EKeep::FAILURES : CHeldLog::EKeep::ALL};
};

void ShowDifference(const std::vector<CDocumentDifference>& differences, bool bJson,
                    std::ostream& output) {
    if (!bJson) {
        for (const CDocumentDifference& difference : differences) {
            Print(difference, output);
        }
        return;
    }
    Json::Value documents(Json::arrayValue);
    for (const CDocumentDifference& difference : differences) {
        documents.append(ToJson(difference));
    }
    output << Json::writeString(Json::StreamWriterBuilder(), documents) << '\n';
}

/// Says what somebody else has changed. False when that could not be read.
bool SayWhatMovedOn(CStage& stage, const std::string& strPlace, std::ostream& errors) {
    std::vector<CStagedChange> changes;
    const int iCode = stage.FindForeignChanges(changes);
    errors << strPlace << " has changed meanwhile, nothing was written:\n";
    for (const CStagedChange& foreign : changes) {
        Print(FindDifference(foreign, [](const std::string&) { return true; }), errors);
    }
    return iCode == 0;
}

/// What a commit's code means for the command; a failure is said.
int ExitCodeOf(int iCode, const std::string& strPlace, std::ostream& errors) {
    if (iCode == 0) {
        return EXIT_DONE;
    }
    if (iCode == STORE_OUTCOME_UNKNOWN) {
        errors << "asked and not answered: whether " << strPlace
               << " holds the change is not known\n";
        return EXIT_NOT_KNOWN;
    }
    errors << "the change did not reach " << strPlace << ": " << CodeText(iCode) << '\n';
    return EXIT_COULD_NOT;
}

/// One change on its way, worked out as often as it takes.
class CCarriage {
public:
    CCarriage(CStage& stage, const CPlannedChange& change, const CChangeOptions& options,
              std::ostream& output, std::ostream& errors)
        : m_stage(stage),
          m_change(change),
          m_options(options),
          m_output(output),
          m_errors(errors) {}

    /// Nothing when the store has moved on and it must be tried again.
    std::optional<int> Try() {
        m_stage.Restart();
        CHeldLines lines;
        const std::optional<int> ended = WorkOutAndAsk();
        const std::optional<int> result = ended ? ended : Commit();
        if (result == EXIT_COULD_NOT || (!ended && result == EXIT_DONE)) {
            lines.Release();
        }
        if (!ended && result == EXIT_DONE) {
            m_change.report();
        }
        return result;
    }

private:
    /// What the command ends with before anything is committed; nothing when it goes on.
    std::optional<int> WorkOutAndAsk() {
        if (const int iResult = m_change.workOut(); iResult != EXIT_DONE) {
            return iResult;
        }
        const std::vector<CStagedChange> changes = m_stage.GetChanges();
        if (changes.empty()) {
            m_output << "nothing to change in " << m_options.strPlace << '\n';
            return EXIT_DONE;
        }
        std::vector<CDocumentDifference> differences;
        differences.reserve(changes.size());
        for (const CStagedChange& change : changes) {
            differences.push_back(FindDifference(change, m_change.isAskedFor));
        }
        const std::string strQuestion = m_change.question();
        const bool bAsk = !m_options.bDryRun && !m_options.bYes && !strQuestion.empty();
        ShowDifference(differences, m_options.bJson, bAsk ? m_errors : m_output);
        if (m_options.bDryRun) {
            return EXIT_WOULD_CHANGE;
        }
        const bool bGoOn = !bAsk || Confirm(m_options.strPlace + ": " + strQuestion, m_errors);
        return bGoOn ? std::nullopt : std::make_optional<int>(EXIT_REFUSED);
    }

    std::optional<int> Commit() {
        CUndoFile undo(m_options.strUndoFile);
        if (const std::string strError = undo.Write(m_stage.GetChanges()); !strError.empty()) {
            m_errors << ShownText(m_options.strUndoFile) << ": " << ShownText(strError)
                     << ", nothing was changed\n";
            return EXIT_COULD_NOT;
        }
        const int iCode = m_stage.CommitChanges();
        if (iCode == STORE_CONDITION_FAILED) {
            return SayWhatMovedOn(m_stage, m_options.strPlace, m_errors)
                       ? std::nullopt
                       : std::make_optional<int>(EXIT_COULD_NOT);
        }
        if (iCode == 0 || iCode == STORE_OUTCOME_UNKNOWN) {
            undo.Keep();
        }
        return ExitCodeOf(iCode, m_options.strPlace, m_errors);
    }

    CStage& m_stage;
    const CPlannedChange& m_change;
    const CChangeOptions& m_options;
    std::ostream& m_output;
    std::ostream& m_errors;
};

}  // namespace

int CarryOut(CStage& stage, const CPlannedChange& change, const CChangeOptions& options,
             std::ostream& output, std::ostream& errors) {
    CCarriage carriage(stage, change, options, output, errors);
    for (int iTry = 0; iTry < NUMERIC_MAX_TRIES; ++iTry) {
        if (const std::optional<int> result = carriage.Try(); result) {
            return *result;
        }
    }
    errors << "given up after " << NUMERIC_MAX_TRIES << " tries: " << options.strPlace
           << " changes all the time\n";
    return EXIT_COULD_NOT;
}
