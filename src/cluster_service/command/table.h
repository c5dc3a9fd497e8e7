#pragma once

#include <json/value.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

/// A column: its title, which is also its key in JSON, and how to get its value from a row.
template <typename Row>
struct CColumn {
    const char* pszTitle;
    std::function<Json::Value(const Row&)> get;
};

/// Values under titles, to be printed as aligned text or as JSON. A value is a text, a number,
/// a truth value or a list of texts.
class CTable {
public:
    template <typename Row, typename Rows>
    CTable(std::string strName, const std::vector<CColumn<Row>>& columns, const Rows& rows)
        : m_strName(std::move(strName)) {
        m_titles.reserve(columns.size());
        for (const CColumn<Row>& column : columns) {
            m_titles.emplace_back(column.pszTitle);
        }
        for (const Row& row : rows) {
            std::vector<Json::Value> values;
            values.reserve(columns.size());
            for (const CColumn<Row>& column : columns) {
                values.push_back(column.get(row));
            }
            m_rows.push_back(std::move(values));
        }
    }

    const std::string& GetName() const { return m_strName; }

    /// The name with the number of rows, the titles and the rows, each column as wide as it needs.
    void Print(std::ostream& stream) const;

    /// An array with an object for each row.
    Json::Value ToJson() const;

private:
    std::string m_strName;
    std::vector<std::string> m_titles;
    std::vector<std::vector<Json::Value>> m_rows;
};

/// A list of texts as a value of a table.
template <typename Texts>
Json::Value ListValue(const Texts& texts) {
    Json::Value list(Json::arrayValue);
    for (const auto& text : texts) {
        list.append(text);
    }
    return list;
}
