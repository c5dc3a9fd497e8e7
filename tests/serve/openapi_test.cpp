#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/value.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cluster_engine/answer.h"
#include "cluster_engine/engine_view.h"
#include "cluster_engine/event.h"
#include "cluster_engine/input.h"
#include "cluster_engine/settings.h"
#include "serve/embedded.h"
#include "serve/field_names.h"
#include "serve/route.h"
#include "serve/service_error.h"
#include "serve/shown_cluster.h"
#include "serve/shown_records.h"
#include "serve/url_path.h"

using ::testing::ContainerEq;

namespace {

using Names = std::set<std::string>;

constexpr const char* METHODS[] = {"get", "put", "post", "delete"};

Names SetOf(const Json::Value& list) {
    Names names;
    for (const Json::Value& name : list) {
        names.insert(name.asString());
    }
    return names;
}

Names MembersOf(const Json::Value& object) {
    const std::vector<std::string> names = object.getMemberNames();
    return {names.begin(), names.end()};
}

Names Joined(Names left, const Names& right) {
    left.insert(right.begin(), right.end());
    return left;
}

Names SetOf(const std::vector<std::string>& names) {
    return {names.begin(), names.end()};
}

/// The names of the kinds of all inputs and their fields.
template <std::size_t... KINDS>
std::map<std::string, CFieldNames> FieldsByKind(std::index_sequence<KINDS...>) {
    return {{std::variant_alternative_t<KINDS, InputBody>::NAME,
             CFieldNames::Of<std::variant_alternative_t<KINDS, InputBody>>()}...};
}

std::map<std::string, CFieldNames> FieldsByKind() {
    return FieldsByKind(std::make_index_sequence<std::variant_size_v<InputBody>>());
}

class OpenApi : public testing::Test {
protected:
    OpenApi() {
        CFieldFault fault;
        EXPECT_TRUE(ParseJsonText(TEXT_OPENAPI.data(), TEXT_OPENAPI.data() + TEXT_OPENAPI.size(),
                                  m_root, fault))
            << fault.strFault;
    }

    const Json::Value& Schema(const std::string& strName) const {
        return m_root["components"]["schemas"][strName];
    }

    /// Follows a "$ref" within the file.
    const Json::Value& Resolve(const Json::Value& value) const {
        if (!value.isMember("$ref")) {
            return value;
        }
        const std::string strRef = value["$ref"].asString();
        EXPECT_EQ(strRef.substr(0, 2), "#/");
        const Json::Value* pFound = &m_root;
        for (const std::string_view part : SplitPath(std::string_view(strRef).substr(2))) {
            pFound = &(*pFound)[std::string(part)];
        }
        EXPECT_FALSE(pFound->isNull()) << strRef;
        return *pFound;
    }

    const Json::Value& Operation(const CRoute& route) const {
        std::string strMethod = route.pszMethod;
        std::transform(strMethod.begin(), strMethod.end(), strMethod.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return m_root["paths"][route.pszPath][strMethod];
    }

    /// The names of its parameters that stand there, in the path or in the query.
    Names Parameters(const Json::Value& operation, const char* pszIn) const {
        Names names;
        for (const Json::Value& parameter : operation["parameters"]) {
            const Json::Value& resolved = Resolve(parameter);
            if (resolved["in"].asString() == pszIn) {
                names.insert(resolved["name"].asString());
            }
        }
        return names;
    }

    /// The schema of its body; null when it has none.
    const Json::Value& Body(const Json::Value& operation) const {
        return Resolve(operation["requestBody"]["content"]["application/json"]["schema"]);
    }

    /// The schema has these fields and no other, needs these and no other, and is strict.
    void ExpectFields(const std::string& strSchema, const CFieldNames& fields,
                      const Names& more = {}, const Names& moreNeeded = {}) {
        const Json::Value& schema = Schema(strSchema);
        SCOPED_TRACE(strSchema);
        EXPECT_THAT(MembersOf(schema["properties"]),
                    ContainerEq(Joined(SetOf(fields.GetAll()), more)));
        EXPECT_THAT(SetOf(schema["required"]),
                    ContainerEq(Joined(SetOf(fields.GetNeeded()), moreNeeded)));
    }

    /// Everything that the value says "$ref" of.
    void Follow(const Json::Value& value) const {
        if (value.isObject() && value.isMember("$ref")) {
            Resolve(value);
        }
        if (value.isObject() || value.isArray()) {
            for (const Json::Value& part : value) {
                Follow(part);
            }
        }
    }

    /// Each object schema within says whether it takes other members.
    static void ExpectStrict(const Json::Value& value, const std::string& strPlace) {
        if (value.isObject() && value.isMember("properties") && value["properties"].isObject() &&
            value["type"] == "object") {
            const bool bReport = value["properties"].isMember("input") ||
                                 strPlace.find("/Reported") != std::string::npos;
            EXPECT_NE(value.isMember("additionalProperties"), bReport) << strPlace;
        }
        if (value.isObject()) {
            for (const std::string& strName : value.getMemberNames()) {
                ExpectStrict(value[strName], strPlace + '/' + strName);
            }
        }
    }

    Json::Value m_root;
};

TEST_F(OpenApi, DescribesEveryRouteAndNoOther) {
    Names routes;
    for (const CRoute& route : RouteTable()) {
        const Json::Value& operation = Operation(route);
        const std::string strRoute = std::string(route.pszMethod) + ' ' + route.pszPath;
        EXPECT_EQ(operation["operationId"].asString(), route.pszOperation) << strRoute;
        EXPECT_TRUE(routes.insert(route.pszOperation).second) << strRoute;
        EXPECT_TRUE(operation["responses"].isMember("200")) << strRoute;
        EXPECT_TRUE(operation["responses"].isMember("default")) << strRoute;
    }
    Names described;
    for (const Json::Value& path : m_root["paths"]) {
        for (const char* const pszMethod : METHODS) {
            if (path.isMember(pszMethod)) {
                described.insert(path[pszMethod]["operationId"].asString());
            }
        }
    }
    EXPECT_THAT(described, ContainerEq(routes));
}

TEST_F(OpenApi, NamesTheParametersOfEveryRouteAndNoOther) {
    for (const CRoute& route : RouteTable()) {
        SCOPED_TRACE(route.pszOperation);
        Names inPath;
        for (const std::string_view part : SplitPath(route.pszPath)) {
            if (!part.empty() && part.front() == '{') {
                inPath.emplace(part.substr(1, part.size() - 2));
            }
        }
        const Json::Value& operation = Operation(route);
        EXPECT_THAT(Parameters(operation, "path"), ContainerEq(inPath));
        EXPECT_THAT(Parameters(operation, "query"),
                    ContainerEq(Names(route.query.begin(), route.query.end())));
    }
}

TEST_F(OpenApi, NamesTheFieldsOfEveryInputAndNoOther) {
    std::map<std::string, CFieldNames> kinds = FieldsByKind();
    std::map<std::string, Names> described;
    for (const CRoute& route : RouteTable()) {
        if (route.pszInput == nullptr) {
            continue;
        }
        SCOPED_TRACE(route.pszOperation);
        const Json::Value& operation = Operation(route);
        const Json::Value& body = Body(operation);
        const Names inPath = Parameters(operation, "path");
        const Names all = Joined(inPath, MembersOf(body["properties"]));
        const Names sent = SetOf(kinds.at(route.pszInput).GetAll());
        const Names needed = SetOf(kinds.at(route.pszInput).GetNeeded());
        EXPECT_TRUE(std::includes(sent.begin(), sent.end(), all.begin(), all.end()));
        for (const std::string& strName : Joined(inPath, SetOf(body["required"]))) {
            EXPECT_TRUE(needed.count(strName) != 0 || inPath.count(strName) != 0) << strName;
        }
        for (const std::string& strName : needed) {
            EXPECT_EQ(inPath.count(strName) + SetOf(body["required"]).count(strName), 1U)
                << strName;
        }
        EXPECT_FALSE(body.isObject() && body.get("additionalProperties", true).asBool());
        described[route.pszInput] = Joined(described[route.pszInput], all);
    }
    for (const auto& [strKind, names] : described) {
        EXPECT_THAT(names, ContainerEq(SetOf(kinds.at(strKind).GetAll()))) << strKind;
    }
    kinds.erase(CTick::NAME);
    for (const char* const pszReport :
         {CNodeReport::NAME, CContainerReport::NAME, CNvrReport::NAME}) {
        kinds.erase(pszReport);
    }
    EXPECT_EQ(described.size(), kinds.size());
}

TEST_F(OpenApi, NamesTheFieldsOfWhatInputsAreMadeOf) {
    ExpectFields("NodeReport", CFieldNames::Of<CNodeReport>(), {"input"}, {"input"});
    ExpectFields("ContainerReport", CFieldNames::Of<CContainerReport>(), {"input"}, {"input"});
    ExpectFields("NvrReport", CFieldNames::Of<CNvrReport>(), {"input"}, {"input"});
    ExpectFields("ReportedTask", CFieldNames::Of<CReportedTask>());
    ExpectFields("ReportedAllocation", CFieldNames::Of<CAllocationForm>());
    ExpectFields("Figures", CFieldNames::Of<CFigures>());
    ExpectFields("ManualMove", CFieldNames::Of<CManualMove>());
}

TEST_F(OpenApi, NamesTheFieldsOfAnswersAndNoOther) {
    ExpectFields("Answer", CFieldNames::Of<CAnswer>(), {"result", "error", "unknown_fields"},
                 {"result"});
    ExpectFields("TaskResult", CFieldNames::Of<CTaskResult>());
    ExpectFields("Reason", CFieldNames::Of<CReason>());
    ExpectFields("Decision", CFieldNames::Of<CDecision>());
    ExpectFields("Task", CFieldNames::Of<CTaskForm>());
    ExpectFields("Event", CFieldNames::Of<CEvent>(), {"number", "subject", "sentence"},
                 {"number", "subject", "sentence"});
    ExpectFields("Shift", CFieldNames::Of<CShiftView>());
    ExpectFields("Storage", CFieldNames::Of<CStorageForm>());
    ExpectFields("Allocation", CFieldNames::Of<CTableAllocation>());
    ExpectFields("Plugin", CFieldNames::Of<CShownPlugin>());
    ExpectFields("LostClaim", CFieldNames::Of<CShownLostClaim>());
    ExpectFields("Cg", CFieldNames::Of<CShownCg>());
    ExpectFields("Database", CFieldNames::Of<CShownDatabase>());
    ExpectFields("Manager", CFieldNames::Of<CShownManager>());
    EXPECT_THAT(MembersOf(Schema("EngineSettings")["properties"]),
                ContainerEq(SetOf(CFieldNames::Of<CEngineSettings>().GetAll())));
}

TEST_F(OpenApi, NamesTheFieldsOfEntriesThatMayBeCut) {
    const std::pair<const char*, CFieldNames> entries[] = {
        {"Node", CFieldNames::Of<CShownNode>()},
        {"Container", CFieldNames::Of<CShownContainer>()},
        {"StandardTask", CFieldNames::Of<CShownStandardTask>()}};
    for (const auto& [pszName, fields] : entries) {
        SCOPED_TRACE(pszName);
        const Json::Value& part = Schema(std::string(pszName) + "Part");
        EXPECT_THAT(MembersOf(part["properties"]), ContainerEq(SetOf(fields.GetAll())));
        EXPECT_FALSE(part.isMember("required"));
    }
    const auto needed = [this](const char* pszName) {
        return SetOf(Schema(pszName)["allOf"][1]["required"]);
    };
    EXPECT_THAT(needed("Node"), ContainerEq(SetOf(CFieldNames::Of<CShownNode>().GetNeeded())));
    EXPECT_THAT(needed("Container"),
                ContainerEq(SetOf(CFieldNames::Of<CShownContainer>().GetNeeded())));
    EXPECT_EQ(Schema("TaskPart")["properties"].getMemberNames(),
              Schema("Task")["properties"].getMemberNames());
}

TEST_F(OpenApi, NamesEveryTextOfAnEnumerationAndNoOther) {
    const auto names = [](const auto& texts) { return Names(std::begin(texts), std::end(texts)); };
    EXPECT_THAT(SetOf(Schema("Event")["properties"]["event"]["enum"]),
                ContainerEq(names(CEnumNames<EEvent>::NAMES)));
    EXPECT_THAT(SetOf(Schema("DocumentName")["enum"]),
                ContainerEq(names(CEnumNames<EDocument>::NAMES)));
    EXPECT_THAT(SetOf(Schema("MemberStatus")["enum"]),
                ContainerEq(names(CEnumNames<EMemberStatus>::NAMES)));
    EXPECT_THAT(SetOf(Schema("TaskResult")["properties"]["result"]["enum"]),
                ContainerEq(names(CEnumNames<ETaskResult>::NAMES)));
}

TEST_F(OpenApi, NamesEveryErrorWithItsStatus) {
    Names names;
    const std::string strText = m_root["info"]["description"].asString();
    const auto expectStatus = [&](unsigned int uiStatus, const std::string& strName) {
        const std::size_t uiLine = strText.find(std::to_string(uiStatus) + ": ");
        ASSERT_NE(uiLine, std::string::npos) << uiStatus;
        const std::string strLine = strText.substr(uiLine, strText.find(';', uiLine) - uiLine);
        EXPECT_NE(strLine.find(' ' + strName), std::string::npos) << uiStatus << ' ' << strName;
    };
    for (int i = 1; i <= static_cast<int>(EFault::DOCUMENT_FULL); ++i) {
        const auto eFault = static_cast<EFault>(i);
        names.insert(TextOf(eFault).pszName);
        expectStatus(StatusOf(eFault), TextOf(eFault).pszName);
    }
    for (int i = 0; i <= static_cast<int>(EServiceFault::OUTCOME_UNKNOWN); ++i) {
        const auto eFault = static_cast<EServiceFault>(i);
        names.insert(NameOfFault(eFault));
        expectStatus(ErrorReply(eFault, "").uiStatus, NameOfFault(eFault));
    }
    EXPECT_THAT(SetOf(Schema("Fault")["properties"]["name"]["enum"]), ContainerEq(names));
}

TEST_F(OpenApi, RefersToNothingThatIsNotThere) {
    Follow(m_root);
}

TEST_F(OpenApi, SaysOfEveryObjectThatItHasNoOtherFields) {
    ExpectStrict(m_root, "");
}

}  // namespace
