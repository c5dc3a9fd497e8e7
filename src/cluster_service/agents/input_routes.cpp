#include "agents/input_routes.h"

#include <optional>
#include <string>
#include <string_view>

namespace {

struct CInputRoute {
    const char* pszKind;
    const char* pszMethod;
    const char* pszPath;  ///< with fields in braces; those that are left are the body
};

/// Of several of a kind the first counts whose path the fields fill.
constexpr CInputRoute ROUTES[] = {
    {CJob::NAME, "POST", "/api/v1/jobs"},
    {CDryRun::NAME, "POST", "/api/v1/dry-runs"},
    {CEndTasks::NAME, "POST", "/api/v1/tasks/{type}/end"},
    {CExplain::NAME, "GET", "/api/v1/tasks/{type}/{task}/explain"},
    {CManualShift::NAME, "POST", "/api/v1/shifts/manual"},
    {CHighSpeed::NAME, "POST", "/api/v1/high-speed"},
    {CJoin::NAME, "POST", "/api/v1/nodes"},
    {CLeave::NAME, "DELETE", "/api/v1/containers/{type}/{node}"},
    {CLeave::NAME, "DELETE", "/api/v1/nodes/{node}"},
    {CDrain::NAME, "POST", "/api/v1/nodes/{node}/drain"},
    {CMemberStatus::NAME, "PUT", "/api/v1/member-status"},
    {CCgAdd::NAME, "POST", "/api/v1/cgs"},
    {CCgUpdate::NAME, "PUT", "/api/v1/cgs/{float_code}"},
    {CCgRemove::NAME, "DELETE", "/api/v1/cgs/{float_code}"},
    {CPromote::NAME, "POST", "/api/v1/center-db/promote"},
    {CDocumentChanged::NAME, "POST", "/api/v1/documents/{document}/reload"},
    {CStorageAllocate::NAME, "POST", "/api/v1/storage/allocate"},
    {CStorageReduce::NAME, "POST", "/api/v1/storage/reduce"},
    {CStorageSave::NAME, "POST", "/api/v1/storage/{node}/save"},
    {CReadmit::NAME, "POST", "/api/v1/plugins/{plugin}/readmit"},
    {CShiftAnyway::NAME, "POST", "/api/v1/types/{type}/shift-anyway"},
    {CBalanceNow::NAME, "POST", "/api/v1/balance"},
    {CReadStandardTasks::NAME, "POST", "/api/v1/standard-tasks/read"},
    {CNextMasterVersion::NAME, "POST", "/api/v1/versions/master/next"},
};

/// The path with its fields, which are taken out of the others; nothing when one is missing.
std::optional<std::string> FillPath(std::string strPath, Json::Value& fields) {
    for (std::size_t uiOpen; (uiOpen = strPath.find('{')) != std::string::npos;) {
        const std::size_t uiEnd = strPath.find('}', uiOpen) + 1;
        Json::Value value;
        if (!fields.removeMember(strPath.substr(uiOpen + 1, uiEnd - uiOpen - 2), &value)) {
            return std::nullopt;
        }
        strPath.replace(uiOpen, uiEnd - uiOpen, CHttpClient::Encoded(value.asString()));
    }
    return strPath;
}

}  // namespace

Json::Value ReportToJson(const InputBody& body) {
    Json::Value json = InputToJson({0, body});
    json.removeMember(PSZ_INPUT_TIME);
    return json;
}

CHttpAnswer SendInput(CHttpClient& client, const InputBody& body) {
    for (const CInputRoute& route : ROUTES) {
        if (std::string_view(route.pszKind) != InputName(body)) {
            continue;
        }
        Json::Value fields = ReportToJson(body);
        fields.removeMember(PSZ_INPUT_KIND);
        if (const auto path = FillPath(route.pszPath, fields)) {
            return fields.empty() ? client.Send(route.pszMethod, *path)
                                  : client.Send(route.pszMethod, *path, fields);
        }
    }
    return {0, {}, std::string("a service takes no ") + InputName(body)};
}
