#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "cluster_engine/answer.h"
#include "cluster_engine/event.h"
#include "cluster_engine/input.h"
#include "command/table.h"

/// What is shown of a story while it is played. All that happens comes in its order.
class ITimeline {
public:
    virtual ~ITimeline() = default;
    virtual void ShowContainers(const char* pszWhen, const CTable& containers) = 0;
    virtual void ShowEvents(const std::vector<CEvent>& events) = 0;
    virtual void ShowAnswer(std::size_t uiLine, const CInput& input, const CAnswer& answer) = 0;
    virtual void ShowUnmet(std::size_t uiLine, const std::string& strText) = 0;
};

/// For a person: a line with time of day, subject, sentence and decision for each event and for
/// each answer that events do not tell; of an input that comes again, when it is another than
/// before. Like events of one second share a line.
class CTextTimeline : public ITimeline {
public:
    explicit CTextTimeline(std::ostream& stream) : m_stream(stream) {}

    void ShowContainers(const char* pszWhen, const CTable& containers) override;
    void ShowEvents(const std::vector<CEvent>& events) override;
    void ShowAnswer(std::size_t uiLine, const CInput& input, const CAnswer& answer) override;
    void ShowUnmet(std::size_t uiLine, const std::string& strText) override;

private:
    void ShowLine(int64_t iTime, const std::string& strSubject, const std::string& strText);

    std::ostream& m_stream;
    int64_t m_iDay = -1;                           ///< of the last line
    std::map<std::size_t, std::string> m_answers;  ///< by line of the file: the last
};

/// For programs: one JSON line for each event, answer, table and unmet expectation.
class CJsonTimeline : public ITimeline {
public:
    explicit CJsonTimeline(std::ostream& stream) : m_stream(stream) {}

    void ShowContainers(const char* pszWhen, const CTable& containers) override;
    void ShowEvents(const std::vector<CEvent>& events) override;
    void ShowAnswer(std::size_t uiLine, const CInput& input, const CAnswer& answer) override;
    void ShowUnmet(std::size_t uiLine, const std::string& strText) override;

private:
    void ShowObject(const Json::Value& json);

    std::ostream& m_stream;
};

std::unique_ptr<ITimeline> MakeTimeline(bool bJson, std::ostream& stream);
