#include "found.h"

#include <stdexcept>

#include "reference_host/strict_json.h"

std::vector<std::string> FoundIn(const std::string& strJson) {
    Json::Value root;
    if (const auto fault = ParseStrictJson(strJson, root)) {
        throw std::runtime_error(TextOf(*fault) + ": " + strJson);
    }
    std::vector<std::string> findings;
    for (const Json::Value& finding : root["findings"]) {
        std::string strLine = finding["severity"].asString() + " " + finding["document"].asString();
        if (finding.isMember("line")) {
            strLine += " " + finding["line"].asString() + ":" + finding["column"].asString();
        }
        if (finding.isMember("path")) {
            strLine += " " + finding["path"].asString();
        }
        findings.push_back(strLine + " " + finding["finding"].asString());
    }
    return findings;
}
