#include <json/json.h>

#include "cluster_engine/engine_fixture.h"
#include "cluster_engine/json_fields.h"
#include "cluster_engine/life.h"
#include "cluster_engine/random_run.h"

namespace {

constexpr int NUMERIC_INPUTS = 1500;

/// The state of a cluster is brought into a process that has loaded nothing.
class State : public CEngineTest, public ::testing::WithParamInterface<unsigned int> {
protected:
    /// Applies and commits so many; answers and events go into the digest.
    std::string Run(CRandomInputs& inputs) {
        CRunDigest digest;
        m_events.Clear();
        for (int i = 0; i < NUMERIC_INPUTS; ++i) {
            const CAnswer answer = m_pEngine->Apply(inputs.Next());
            EXPECT_EQ(m_pEngine->Commit(), 0);
            digest.Take(answer);
        }
        for (const CEvent& event : m_events.Get()) {
            digest.Take(event);
        }
        return digest.Text();
    }

    Json::Value TextsJson() {
        Json::Value json(Json::objectValue);
        for (const auto& [strPath, strText] : Texts()) {
            json[strPath] = strText;
        }
        return json;
    }

    /// What there is when the first inputs have been applied, and after those behind them.
    std::string GoOn(unsigned int uiSeed, Json::Value result) {
        result["state"] = m_pEngine->GetState();
        CRandomInputs inputs(uiSeed + 1, result["state"]["cluster"]["now"].asInt64());
        result["digest"] = Run(inputs);
        result["after"] = m_pEngine->GetState();
        result["texts_after"] = TextsJson();
        return JsonLine(result);
    }

    std::string First(unsigned int uiSeed) {
        m_pStore->Put(Path("/Cluster"), CRandomInputs::Cluster());
        Load();
        CRandomInputs inputs(uiSeed, NUMERIC_START);
        Run(inputs);
        Json::Value result;
        result["texts"] = TextsJson();
        return GoOn(uiSeed, std::move(result));
    }

    std::string Second(unsigned int uiSeed, const Json::Value& first) {
        for (const std::string& strPath : first["texts"].getMemberNames()) {
            m_pStore->Put(strPath, first["texts"][strPath].asString());
        }
        std::string strWhy;
        EXPECT_EQ(m_pEngine->Load(first["state"], strWhy), 0) << strWhy;
        Json::Value result;
        result["texts"] = TextsJson();
        return GoOn(uiSeed, std::move(result));
    }
};

Json::Value Parsed(const std::string& strText) {
    Json::Value json;
    CFieldFault fault;
    EXPECT_TRUE(ParseJsonText(strText.data(), strText.data() + strText.size(), json, fault))
        << fault.strFault;
    return json;
}

/// Where the two differ first, in words; empty when nowhere.
std::string Difference(const Json::Value& left, const Json::Value& right,
                       const std::string& strPlace) {
    if (left == right) {
        return "";
    }
    if (left.isObject() && right.isObject() && left.getMemberNames() == right.getMemberNames()) {
        for (const std::string& strKey : left.getMemberNames()) {
            if (left[strKey] != right[strKey]) {
                return Difference(left[strKey], right[strKey], strPlace + '.' + strKey);
            }
        }
    }
    if (left.isArray() && right.isArray() && left.size() == right.size()) {
        for (Json::ArrayIndex i = 0; i < left.size(); ++i) {
            if (left[i] != right[i]) {
                return Difference(left[i], right[i], strPlace + '[' + std::to_string(i) + ']');
            }
        }
    }
    return strPlace + ": " + JsonLine(left).substr(0, 2000) + "\n   " +
           JsonLine(right).substr(0, 2000);
}

TEST_F(CEngineTest, StateThatIsNoneIsRefusedByItsPlace) {
    Json::Value state(Json::objectValue);
    state["cluster"]["now"] = "soon";
    std::string strWhy;
    EXPECT_NE(m_pEngine->Load(state, strWhy), 0);
    EXPECT_THAT(strWhy, ::testing::HasSubstr("\"cluster.store_away\": is missing"));
    EXPECT_EQ(Do(CTick()).eFault, EFault::NOT_LOADED);
}

TEST_P(State, GoesOnInAnotherLifeToTheByte) {
    const Json::Value first = Parsed(InLife([&] { return First(GetParam()); }));
    const Json::Value second = Parsed(InLife([&] { return Second(GetParam(), first); }));
    for (const char* const pszPart : {"state", "texts", "digest", "after", "texts_after"}) {
        EXPECT_EQ(Difference(first[pszPart], second[pszPart], pszPart), "");
        EXPECT_TRUE(JsonLine(first[pszPart]) == JsonLine(second[pszPart])) << pszPart;
    }
    EXPECT_GT(first["state"]["decisions"].size(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, State, ::testing::Range(1U, 9U));

}  // namespace
