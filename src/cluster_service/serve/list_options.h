#pragma once

#include <json/value.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "serve/http.h"

/// What a client wants of a list, as it stands behind the path's question mark.
struct CListOptions {
    std::string strNode;  ///< empty: of any
    std::string strType;
    std::optional<bool> online;
    std::optional<bool> available;
    std::vector<std::string> fields;  ///< of each entry; empty: all
    uint64_t ullLimit = 0;            ///< entries; 0: all
    std::string strAfter;             ///< the key of the last entry that the client has

    /// False with the reason. names: what an entry may have.
    bool Read(const CHttpRequest& request, const std::vector<std::string>& names,
              std::string& strWhy);

    bool Wants(const std::string& strOfNode, const std::string& strOfType, bool bOnline) const {
        return (strNode.empty() || strNode == strOfNode) &&
               (strType.empty() || strType == strOfType) && (!online || *online == bOnline);
    }
};

/// A number of the query; nothing written is the default. False with the reason.
bool ReadNumber(const CHttpRequest& request, const char* pszName, uint64_t ullMin, uint64_t ullMax,
                uint64_t& ullValue, std::string& strWhy);

/// A list that is answered: entries are offered by ascending keys, and what the client has or did
/// not want is left out.
class CListAnswer {
public:
    CListAnswer(const char* pszName, const CListOptions& options);

    /// make() gives the entry's object, and is called only when it is wanted.
    template <typename Make>
    void Offer(const std::string& strKey, const Make& make) {
        if (IsNext(strKey)) {
            Append(make());
        }
    }

    /// {"nodes": […], "next": "…"}: next is what to name after which the following page begins, and
    /// is left out on the last one.
    CHttpReply Reply() const;

private:
    bool IsNext(const std::string& strKey);
    void Append(Json::Value entry);

    const char* const m_pszName;
    const CListOptions& m_options;
    Json::Value m_list{Json::arrayValue};
    std::string m_strLast;
    bool m_bMore = false;
};
