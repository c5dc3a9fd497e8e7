#include "cluster_engine/answer.h"

#include <cstddef>
#include <utility>

namespace {

constexpr CFaultText FAULT_TEXTS[] = {
    {"none", 0, "", ""},
    {"bad_input", 1001, "The input cannot be read.",
     "Mend the place that is named and send it again."},
    {"too_much", 1002, "The input is larger than the settings allow.", "Split it."},
    {"not_loaded", 1003, "The cluster is not loaded.",
     "Mend its documents; the log says what is wrong."},
    {"unknown_node", 1101, "The cluster has no such node.",
     "Look at the nodes; a new one joins first."},
    {"unknown_container", 1102, "The cluster has no such container.",
     "Look at the containers of the node."},
    {"unknown_task", 1103, "No container has such a task.",
     "Look at the tasks; it may have ended."},
    {"unknown_plugin", 1104, "No plug-in of that name is loaded.", "Look at the plug-ins."},
    {"unknown_entry", 1105, "There is no such entry.", "Look at the list."},
    {"node_known", 1106, "The cluster has that node already.",
     "Let it leave first, or report from it."},
    {"names_run_together", 1107,
     "Node id and container type run together to the text of another container.",
     "Choose another node id."},
    {"no_plugin", 1201, "No plug-in takes that type.", "Look at what the plug-ins claim."},
    {"plugin_out_of_service", 1202, "The plug-in is out of service.",
     "Readmit it when it is mended."},
    {"plugin_failed", 1203, "The plug-in failed.",
     "The events say how; try again, or mend the plug-in."},
    {"plugin_refused", 1204, "The plug-in refuses that.", "The log says why."},
    {"plugin_busy", 1205, "A call of the plug-in has not come back.",
     "Try again, or readmit it after its call is back."},
    {"no_room", 1301, "No container has room for the task.",
     "Add room, or ask for an explanation of the task."},
    {"cannot_move", 1302, "The task must not move.", "End it and send it as a new job."},
    {"not_placed_there", 1303, "The task is not in that container.", "Look at where it is."},
    {"refused_by_rule", 1304, "A rule of the cluster is against it.",
     "What it is about says which."},
    {"store_failed", 1401, "The store failed.", "Try again; the log says why."},
    {"store_away", 1402, "The store is away.", "Wait: it is tried every second."},
    {"document_unreadable", 1403, "A document of the store cannot be read.", "Check and mend it."},
    {"document_full", 1404, "The document would be larger than its limit.",
     "Take something out of it."},
};

}  // namespace

const CFaultText& TextOf(EFault eFault) {
    return FAULT_TEXTS[static_cast<std::size_t>(eFault)];
}

CAnswer CAnswer::Refuse(EFault eFault, std::string strAbout) {
    CAnswer answer;
    answer.eFault = eFault;
    answer.strAbout = std::move(strAbout);
    return answer;
}
