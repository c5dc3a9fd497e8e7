#include <algorithm>
#include <optional>
#include <vector>

#include "serve/document_name.h"
#include "serve/document_texts.h"
#include "serve/field_names.h"
#include "serve/list_options.h"
#include "serve/question.h"
#include "serve/service_error.h"
#include "serve/shown_records.h"

namespace {

const CPluginView* FindPlugin(const CClusterView& view, const std::string& strName) {
    const std::vector<CPluginView>& plugins = view.engine.plugins;
    const auto it =
        std::find_if(plugins.begin(), plugins.end(),
                     [&strName](const CPluginView& plugin) { return plugin.strName == strName; });
    return it != plugins.end() ? &*it : nullptr;
}

/// The documents that the path names: one by its name, or all. Nothing when it names another.
std::vector<EDocument> DocumentsOf(const CAsked& asked) {
    const auto it = asked.path.find("document");
    std::vector<EDocument> documents;
    for (const EDocument eDocument : AllDocuments()) {
        if (it == asked.path.end() || it->second == NameOf(eDocument)) {
            documents.push_back(eDocument);
        }
    }
    return documents;
}

CStoredDocument Find(const CClusterView& view, EDocument eDocument) {
    const auto it = view.pDocuments->find(NameOf(eDocument));
    return it != view.pDocuments->end() ? it->second : CStoredDocument();
}

Json::Value ShownDocument(EDocument eDocument, const CStoredDocument& stored) {
    Json::Value json;
    CFieldWriter writer(json);
    writer.Need("document", eDocument);
    writer.Need("exists", stored.bExists);
    writer.Need("asked", stored.bReadable);
    writer.Need("bytes", stored.text ? stored.text->size() : 0);
    writer.Need("limit", StoreDocumentOf(eDocument).GetMaxSize());
    if (const auto fault = FindFault(eDocument, stored)) {
        json["fault"] = TextOf(*fault);
    }
    return json;
}

/// What is no UTF-8 cannot stand in JSON.
std::string HexOf(const std::string& strText) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string strHex;
    for (const char c : strText) {
        strHex += DIGITS[static_cast<unsigned char>(c) >> 4U];
        strHex += DIGITS[static_cast<unsigned char>(c) & 0x0FU];
    }
    return strHex;
}

/// {"cgs": […]} of what there is.
template <typename List>
Json::Value ListBody(const char* pszName, const List& list) {
    Json::Value body;
    Json::Value& shown = body[pszName] = Json::Value(Json::arrayValue);
    for (const auto& entry : list) {
        shown.append(ToJson(Shown(entry)));
    }
    return body;
}

const CRecordsView& RecordsOf(const CClusterView& view) {
    static const CRecordsView NONE;
    return view.pRecords != nullptr ? *view.pRecords : NONE;
}

}  // namespace

CHttpReply ShowPlugins(const CAsked& /*asked*/, const CClusterView& view) {
    Json::Value body;
    Json::Value& plugins = body["plugins"] = Json::Value(Json::arrayValue);
    if (view.pPluginFiles != nullptr) {
        for (const CPluginFile& file : *view.pPluginFiles) {
            plugins.append(ToJson(Shown(file, FindPlugin(view, file.strName))));
        }
    }
    return {200, JsonLine(body)};
}

CHttpReply ShowDocuments(const CAsked& asked, const CClusterView& view) {
    if (view.pDocuments == nullptr) {
        return ErrorReply(EServiceFault::NOT_READY, view.strNotReady);
    }
    Json::Value body;
    Json::Value& documents = body["documents"] = Json::Value(Json::arrayValue);
    for (const EDocument eDocument : DocumentsOf(asked)) {
        documents.append(ShownDocument(eDocument, Find(view, eDocument)));
    }
    return {200, JsonLine(body)};
}

CHttpReply ShowDocument(const CAsked& asked, const CClusterView& view) {
    const std::vector<EDocument> documents = DocumentsOf(asked);
    if (documents.empty()) {
        return ErrorReply(EFault::UNKNOWN_ENTRY, asked.path.at("document"));
    }
    if (view.pDocuments == nullptr) {
        return ErrorReply(EServiceFault::NOT_READY, view.strNotReady);
    }
    const CStoredDocument stored = Find(view, documents.front());
    Json::Value body = ShownDocument(documents.front(), stored);
    if (stored.text) {
        const bool bUtf8 = IsUtf8(*stored.text);
        body[bUtf8 ? "text" : "hex"] = bUtf8 ? *stored.text : HexOf(*stored.text);
    }
    return {200, JsonLine(body)};
}

CHttpReply ShowStandardTasks(const CAsked& asked, const CClusterView& view) {
    static const CFieldNames NAMES = CFieldNames::Of<CShownStandardTask>();
    CListOptions options;
    if (std::string strWhy; !options.Read(asked.request, NAMES.GetAll(), strWhy)) {
        return ErrorReply(EServiceFault::BAD_REQUEST, strWhy);
    }
    CListAnswer answer("standard_tasks", options);
    if (view.pStandardTasks != nullptr) {
        for (const auto& [strName, task] : *view.pStandardTasks) {
            answer.Offer(strName,
                         [&strOf = strName, &of = task] { return ToJson(Shown(strOf, of)); });
        }
    }
    return answer.Reply();
}

CHttpReply ShowVersions(const CAsked& /*asked*/, const CClusterView& view) {
    Json::Value body;
    CFieldWriter writer(body);
    writer.Need("decision", view.ullDecision);
    writer.Need("master", view.ullMaster);
    writer.Need("center_db", view.iCenterDbVersion);
    writer.Need("shifts", view.engine.shifts);
    return {200, JsonLine(body)};
}

CHttpReply ShowCgs(const CAsked& /*asked*/, const CClusterView& view) {
    return {200, JsonLine(ListBody("cgs", RecordsOf(view).cgs))};
}

CHttpReply ShowCenterDb(const CAsked& /*asked*/, const CClusterView& view) {
    Json::Value body = ListBody("databases", RecordsOf(view).databases);
    body["version"] = view.iCenterDbVersion;
    return {200, JsonLine(body)};
}

CHttpReply ShowManagers(const CAsked& /*asked*/, const CClusterView& view) {
    return {200, JsonLine(ListBody("managers", RecordsOf(view).managers))};
}
