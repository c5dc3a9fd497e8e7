#include "command/table.h"

#include <algorithm>
#include <cstddef>

#include "reference_host/shown_text.h"

namespace {

constexpr std::size_t NUMERIC_GAP = 2;

std::string TextOf(const Json::Value& value) {
    if (value.isBool()) {
        return value.asBool() ? "yes" : "no";
    }
    if (!value.isArray()) {
        return ShownText(value.asString());
    }
    std::string strText;
    for (const Json::Value& element : value) {
        strText.append(strText.empty() ? "" : ", ").append(ShownText(element.asString()));
    }
    return strText;
}

void PrintLine(std::ostream& stream, const std::vector<std::string>& cells,
               const std::vector<std::size_t>& widths) {
    std::string strLine;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        strLine.append(cells[i]).append(widths[i] - ColumnsOf(cells[i]) + NUMERIC_GAP, ' ');
    }
    strLine.erase(strLine.find_last_not_of(' ') + 1);
    stream << strLine << '\n';
}

}  // namespace

void CTable::Print(std::ostream& stream) const {
    std::vector<std::vector<std::string>> lines{m_titles};
    for (const auto& row : m_rows) {
        std::vector<std::string> cells;
        std::transform(row.begin(), row.end(), std::back_inserter(cells), TextOf);
        lines.push_back(std::move(cells));
    }
    std::vector<std::size_t> widths(m_titles.size());
    for (const auto& cells : lines) {
        std::transform(cells.begin(), cells.end(), widths.begin(), widths.begin(),
                       [](const std::string& strCell, std::size_t width) {
                           return std::max(ColumnsOf(strCell), width);
                       });
    }
    stream << m_strName << " (" << m_rows.size() << ")\n";
    for (const auto& cells : lines) {
        PrintLine(stream, cells, widths);
    }
}

Json::Value CTable::ToJson() const {
    Json::Value array(Json::arrayValue);
    for (const auto& row : m_rows) {
        Json::Value object(Json::objectValue);
        for (std::size_t i = 0; i < row.size(); ++i) {
            object[m_titles[i]] = row[i];
        }
        array.append(std::move(object));
    }
    return array;
}
