#include "engine_target.h"

#include "cluster_engine/journal.h"
#include "target.h"

namespace {

bool Parse(const std::string& strText, Json::Value& json) {
    CFieldFault fault;
    return ParseJsonText(strText.data(), strText.data() + strText.size(), json, fault);
}

}  // namespace

void FeedInput(const std::string& strInput) {
    Json::Value json;
    if (!Parse(strInput, json)) {
        return;
    }
    if (json.isObject()) {
        CJournalEntry entry;
        CJournalFault journalFault;
        ReadJournalEntry(json, entry, journalFault);
    }
    CInput input;
    CFieldFault fault;
    if (!InputFromJson(json, input, fault)) {
        Require(!fault.strFault.empty(), "an input that is refused has a fault");
        return;
    }
    const std::string strWritten = JsonLine(InputToJson(input));
    Json::Value again;
    CInput read;
    Require(Parse(strWritten, again), "an input is written as JSON");
    Require(InputFromJson(again, read, fault), "what was written is read");
    Require(JsonLine(InputToJson(read)) == strWritten, "what was read is written the same");
}
