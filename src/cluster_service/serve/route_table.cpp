#include "cluster_engine/input.h"
#include "serve/input_route.h"
#include "serve/question.h"
#include "serve/route.h"

const std::vector<CRoute>& RouteTable() {
    static const std::vector<CRoute> ROUTES{
        {"POST", "/api/v1/reports", "reports", TakeReports},

        {"POST", "/api/v1/jobs", "send_job", TakeInput, CJob::NAME},
        {"POST", "/api/v1/dry-runs", "dry_run", TakeInput, CDryRun::NAME},
        {"POST", "/api/v1/tasks/{type}/end", "end_tasks", TakeInput, CEndTasks::NAME},
        {"GET", "/api/v1/tasks/{type}/{task}/explain", "explain_task", TakeInput, CExplain::NAME},
        {"POST", "/api/v1/shifts/manual", "shift_by_hand", TakeInput, CManualShift::NAME},
        {"POST", "/api/v1/high-speed", "choose_nvr", TakeInput, CHighSpeed::NAME},

        {"POST", "/api/v1/nodes", "join_node", TakeInput, CJoin::NAME},
        {"DELETE", "/api/v1/nodes/{node}", "remove_node", TakeInput, CLeave::NAME},
        {"POST", "/api/v1/nodes/{node}/drain", "drain_node", TakeInput, CDrain::NAME},
        {"DELETE", "/api/v1/containers/{type}/{node}", "remove_container", TakeInput, CLeave::NAME},
        {"PUT", "/api/v1/member-status", "set_member_status", TakeInput, CMemberStatus::NAME},

        {"POST", "/api/v1/cgs", "add_cg", TakeInput, CCgAdd::NAME},
        {"PUT", "/api/v1/cgs/{float_code}", "change_cg", TakeInput, CCgUpdate::NAME},
        {"DELETE", "/api/v1/cgs/{float_code}", "remove_cg", TakeInput, CCgRemove::NAME},
        {"POST", "/api/v1/center-db/promote", "promote_database", TakeInput, CPromote::NAME},
        {"POST", "/api/v1/documents/{document}/reload", "reload_document", TakeInput,
         CDocumentChanged::NAME},

        {"POST", "/api/v1/storage/allocate", "allocate_storage", TakeInput, CStorageAllocate::NAME},
        {"POST", "/api/v1/storage/reduce", "reduce_storage", TakeInput, CStorageReduce::NAME},
        {"POST", "/api/v1/storage/{node}/save", "save_storage", TakeInput, CStorageSave::NAME},

        {"POST", "/api/v1/plugins/{plugin}/readmit", "readmit_plugin", TakeInput, CReadmit::NAME},
        {"POST", "/api/v1/types/{type}/shift-anyway", "shift_anyway", TakeInput,
         CShiftAnyway::NAME},
        {"POST", "/api/v1/balance", "balance_now", TakeInput, CBalanceNow::NAME},
        {"POST", "/api/v1/standard-tasks/read", "read_standard_tasks", TakeInput,
         CReadStandardTasks::NAME},
        {"POST", "/api/v1/versions/master/next", "next_master_version", TakeInput,
         CNextMasterVersion::NAME},

        {"GET", "/api/v1/cluster", "get_cluster", Ask<ShowCluster>},
        {"GET",
         "/api/v1/nodes",
         "list_nodes",
         Ask<ShowNodes>,
         nullptr,
         {"node", "type", "online", "fields", "limit", "after"}},
        {"GET", "/api/v1/nodes/{node}", "get_node", Ask<ShowNode>},
        {"GET",
         "/api/v1/containers",
         "list_containers",
         Ask<ShowContainers>,
         nullptr,
         {"node", "type", "online", "available", "fields", "limit", "after"}},
        {"GET", "/api/v1/containers/{type}/{node}", "get_container", Ask<ShowContainer>},
        {"GET",
         "/api/v1/containers/{type}/{node}/tasks",
         "list_tasks",
         Ask<ShowTasks>,
         nullptr,
         {"fields", "limit", "after"}},

        {"GET", "/api/v1/plugins", "list_plugins", AskAnyTime<ShowPlugins>},
        {"GET", "/api/v1/documents", "list_documents", AskAnyTime<ShowDocuments>},
        {"GET", "/api/v1/documents/{document}", "get_document", AskAnyTime<ShowDocument>},
        {"GET",
         "/api/v1/standard-tasks",
         "list_standard_tasks",
         Ask<ShowStandardTasks>,
         nullptr,
         {"fields", "limit", "after"}},
        {"GET", "/api/v1/versions", "get_versions", Ask<ShowVersions>},
        {"GET", "/api/v1/cgs", "list_cgs", Ask<ShowCgs>},
        {"GET", "/api/v1/center-db", "get_center_db", Ask<ShowCenterDb>},
        {"GET", "/api/v1/managers", "list_managers", Ask<ShowManagers>},

        {"GET",
         "/api/v1/events",
         "list_events",
         AskAnyTime<ShowEvents>,
         nullptr,
         {"since", "limit"}},
        {"GET", "/api/v1/events/stream", "stream_events", StreamEvents, nullptr, {"since"}},
        {"GET", "/api/v1/settings", "get_settings", AskAnyTime<ShowSettings>},
        {"GET", "/api/v1/openapi.json", "get_openapi", AskAnyTime<ShowOpenApi>},
        {"GET", "/metrics", "get_metrics", AskAnyTime<ShowMetrics>},
        {"GET", "/healthz", "get_health", AskAnyTime<ShowHealth>},
        {"GET", "/readyz", "get_readiness", AskAnyTime<ShowReadiness>},
    };
    return ROUTES;
}
