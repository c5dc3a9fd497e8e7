#include "serve/list_options.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <utility>

#include "cluster_engine/json_fields.h"

namespace {

constexpr uint64_t NUMERIC_LONGEST_PAGE = 100000;

const std::string* Find(const CHttpRequest& request, const char* pszName) {
    const auto it = request.query.find(pszName);
    return it != request.query.end() ? &it->second : nullptr;
}

void ReadText(const CHttpRequest& request, const char* pszName, std::string& strValue) {
    if (const std::string* const pFound = Find(request, pszName); pFound != nullptr) {
        strValue = *pFound;
    }
}

bool ReadFlag(const CHttpRequest& request, const char* pszName, std::optional<bool>& value,
              std::string& strWhy) {
    const std::string* const pFound = Find(request, pszName);
    if (pFound == nullptr) {
        return true;
    }
    value = *pFound == "true";
    strWhy = std::string(pszName) + " must be true or false";
    return *value || *pFound == "false";
}

bool ReadFields(const CHttpRequest& request, const std::vector<std::string>& names,
                std::vector<std::string>& fields, std::string& strWhy) {
    const std::string* const pFound = Find(request, "fields");
    std::istringstream stream(pFound != nullptr ? *pFound : "");
    for (std::string strField; std::getline(stream, strField, ',');) {
        if (std::find(names.begin(), names.end(), strField) == names.end()) {
            strWhy = "fields must be some of:";
            for (const std::string& strName : names) {
                strWhy += ' ' + strName;
            }
            return false;
        }
        if (std::find(fields.begin(), fields.end(), strField) == fields.end()) {
            fields.push_back(strField);
        }
    }
    return true;
}

}  // namespace

bool ReadNumber(const CHttpRequest& request, const char* pszName, uint64_t ullMin, uint64_t ullMax,
                uint64_t& ullValue, std::string& strWhy) {
    const std::string* const pFound = Find(request, pszName);
    if (pFound == nullptr) {
        return true;
    }
    const char* const pszEnd = pFound->data() + pFound->size();
    const auto [pszStop, code] = std::from_chars(pFound->data(), pszEnd, ullValue);
    if (code == std::errc() && pszStop == pszEnd && ullValue >= ullMin && ullValue <= ullMax) {
        return true;
    }
    strWhy = std::string(pszName) + " must be a whole number from " + std::to_string(ullMin) +
             " to " + std::to_string(ullMax);
    return false;
}

bool CListOptions::Read(const CHttpRequest& request, const std::vector<std::string>& names,
                        std::string& strWhy) {
    ReadText(request, "node", strNode);
    ReadText(request, "type", strType);
    ReadText(request, "after", strAfter);
    return ReadFlag(request, "online", online, strWhy) &&
           ReadFlag(request, "available", available, strWhy) &&
           ReadFields(request, names, fields, strWhy) &&
           ReadNumber(request, "limit", 1, NUMERIC_LONGEST_PAGE, ullLimit, strWhy);
}

CListAnswer::CListAnswer(const char* pszName, const CListOptions& options)
    : m_pszName(pszName), m_options(options) {}

bool CListAnswer::IsNext(const std::string& strKey) {
    if (m_bMore || strKey <= m_options.strAfter) {
        return false;
    }
    if (m_options.ullLimit != 0 && m_list.size() == m_options.ullLimit) {
        m_bMore = true;
        return false;
    }
    m_strLast = strKey;
    return true;
}

void CListAnswer::Append(Json::Value entry) {
    if (m_options.fields.empty()) {
        m_list.append(std::move(entry));
        return;
    }
    Json::Value& chosen = m_list.append(Json::Value(Json::objectValue));
    for (const std::string& strField : m_options.fields) {
        if (entry.isMember(strField)) {
            chosen[strField].swap(entry[strField]);
        }
    }
}

CHttpReply CListAnswer::Reply() const {
    Json::Value body;
    body[m_pszName] = m_list;
    if (m_bMore) {
        body["next"] = m_strLast;
    }
    return {200, JsonLine(body)};
}
