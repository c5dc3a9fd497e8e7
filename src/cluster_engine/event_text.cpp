#include "cluster_engine/event_text.h"

#include <cstddef>
#include <iterator>

namespace {

/// A sentence for each kind of event, in the order of EEvent. "{what}" is the task, or how many;
/// "{from}" the node that it left; "{cause}" the reason, and goes with its colon when there is
/// none.
constexpr const char* SENTENCES[] = {
    "is loaded: {cause}, {what}",                           // LOADED
    "joins: {cause}",                                       // JOINED
    "leaves: {cause}",                                      // LEFT
    "is back: {cause}",                                     // ONLINE
    "falls silent: {cause}",                                // OFFLINE
    "is not to be relied on: {cause}",                      // UNSTEADY
    "has been steady for long enough and gets new work",    // STEADY
    "has settled: everybody has reported or is silent",     // SETTLED
    "settles before anything is moved: {cause}",            // SETTLING
    "is given {what}: {cause}",                             // PLACED
    "has no place for {what}: {cause}",                     // REFUSED
    "ends {what}: {cause}",                                 // ENDED
    "runs {what}, which is now its own: {cause}",           // ADOPTED
    "is handed {what} again: {cause}",                      // HANDED_AGAIN
    "has {what} that must go elsewhere: {cause}",           // SHIFT_STARTED
    "takes over {what}{from}: {cause}",                     // SHIFTED
    "has {what} waiting for room: {cause}",                 // WAITS_FOR_ROOM
    "gives no more work away: {cause}",                     // SHIFT_ENDED
    "has {what} that found no room for too long: {cause}",  // SHIFT_GIVEN_UP
    "does not give its work away: {cause}",                 // HELD
    "gives its work away again: {cause}",                   // RELEASED
    "is being emptied: {cause}",                            // DRAINING
    "is empty: {cause}",                                    // DRAINED
    "has another membership: {cause}",                      // MEMBER_STATUS
    "takes over {what}{from}: {cause}",                     // BALANCED
    "has been balanced, and will not be again: {cause}",    // BALANCED_ONCE
    "has another CG entry: {cause}",                        // CG_CHANGED
    "has the master of the centre database: {cause}",       // PROMOTED
    "has its next master version: {cause}",                 // MASTER_VERSION
    "has a new document: {cause}",                          // DOCUMENT_RELOADED
    "has a document that cannot be read: {cause}",          // DOCUMENT_UNREADABLE
    "is allocated storage: {cause}",                        // STORAGE_ALLOCATED
    "is to give storage back: {cause}",                     // STORAGE_REDUCED
    "has its storage saved: {cause}",                       // STORAGE_SAVED
    "has a plug-in that failed: {cause}",                   // PLUGIN_FAILED
    "has a plug-in out of service: {cause}",                // PLUGIN_OUT
    "has a plug-in in service again: {cause}",              // PLUGIN_READMITTED
    "has another decision number: {cause}",                 // DECISION_MOVED
    "has a store that failed: {cause}",                     // STORE_FAILED
    "has lost its store: it is tried every second",         // STORE_AWAY
    "has its store back",                                   // STORE_BACK
    "has read the standard tasks: {cause}",                 // STANDARD_TASKS
};
static_assert(std::size(SENTENCES) == std::size(CEnumNames<EEvent>::NAMES));

void Replace(std::string& strText, const std::string& strMark, const std::string& strBy) {
    if (const std::size_t uiAt = strText.find(strMark); uiAt != std::string::npos) {
        strText.replace(uiAt, strMark.size(), strBy);
    }
}

std::string What(const CEvent& event) {
    if (!event.strTaskId.empty()) {
        return event.strTaskId;
    }
    return std::to_string(event.uiTasks) + (event.uiTasks == 1 ? " task" : " tasks");
}

}  // namespace

std::string EventSubject(const CEvent& event) {
    if (event.strNodeId.empty() || event.strType.empty()) {
        const std::string strOne = event.strNodeId + event.strType;
        return strOne.empty() ? "cluster" : strOne;
    }
    return event.strNodeId + ' ' + event.strType;
}

std::string EventSentence(const CEvent& event) {
    std::string strText = SENTENCES[static_cast<std::size_t>(event.eEvent)];
    if (event.strCause.empty()) {
        Replace(strText, ": {cause}", "");
    }
    Replace(strText, "{what}", What(event));
    Replace(strText, "{from}", event.strFrom.empty() ? "" : " from " + event.strFrom);
    Replace(strText, "{cause}", event.strCause);
    return strText;
}
