// What the service is asked, and what its answers are called: no other file knows a path or a field.

export const ask = {
  cluster: "/api/v1/cluster",
  nodes: "/api/v1/nodes",
  containers: "/api/v1/containers?fields=node,type,online,member_status,fault_shift," +
    "shifting,processes,task_count,disk_percent,net_percent",
  versions: "/api/v1/versions",
  plugins: "/api/v1/plugins",
  documents: "/api/v1/documents",
  settings: "/api/v1/settings",
  keptEvents: "/api/v1/events?limit=1",
  tasksOf: (type, node) => `/api/v1/containers/${encodeURIComponent(type)}/` +
    `${encodeURIComponent(node)}/tasks?fields=id,name`,
  stream: (since) => `/api/v1/events/stream?since=${since}`,
};

export const read = {
  cluster: (it) => ({
    settling: it.settling, storeAway: it.store_away, held: it.held_types,
    nodes: it.nodes, offlineNodes: it.offline_nodes,
    containers: it.containers, offlineContainers: it.offline_containers, tasks: it.tasks,
  }),
  nodes: (it) => it.nodes.map((one) => ({
    id: one.node, ip: one.ip, online: one.online, draining: one.draining,
    removed: one.member_status === "removed", total: one.total, used: one.used,
  })),
  containers: (it) => it.containers.map((one) => ({
    node: one.node, type: one.type, online: one.online, marked: one.fault_shift,
    removed: one.member_status === "removed", shifting: one.shifting,
    processes: one.processes, tasks: one.task_count,
    disk: one.disk_percent, net: one.net_percent,
  })),
  versions: (it) => ({
    decision: it.decision, master: it.master, centerDb: it.center_db,
    shifts: it.shifts.map((one) => ({
      node: one.node || "", type: one.type, cause: one.cause, started: one.started,
      waiting: one.waiting, nextTry: one.next_try, givenUp: one.given_up, draining: one.draining,
    })),
  }),
  plugins: (it) => it.plugins.map((one) => ({
    name: one.name || one.file, file: one.file, failure: one.failure || "", types: one.types,
    lost: one.lost, out: one.out_of_service, failures: one.failures,
  })),
  documents: (it) => it.documents.map((one) => ({
    name: one.document, exists: one.exists, asked: one.asked, bytes: one.bytes, limit: one.limit,
    fault: one.fault ?? "",
  })),
  settings: (it) => ({ clusterCode: it.cluster_code }),
  tasks: (it) => it.tasks.map((one) => one.name ? `${one.id} (${one.name})` : one.id),
  keptEvents: (it) => ({ first: it.first, last: it.last }),
  event: (it) => ({
    number: it.number, kind: it.event, time: it.time, subject: it.subject, sentence: it.sentence,
  }),
  missed: (it) => it.missed,
  fault: (it) => it.error.about || it.error.sentence,
};

// The kinds of events: a stream names each by its kind, and what is not asked for is not heard.
export const MOVES = ["shifted", "balanced"];
export const ALARMS = ["offline", "unsteady", "refused", "shift_started", "waits_for_room",
  "shift_given_up", "held", "document_unreadable", "plugin_failed", "plugin_out", "store_failed",
  "store_away"];
export const KINDS = [...MOVES, ...ALARMS, "loaded", "joined", "left", "online", "steady", "settled",
  "settling", "placed", "ended", "adopted", "handed_again", "shift_ended", "released", "draining",
  "drained", "member_status", "balanced_once", "cg_changed", "promoted", "master_version",
  "document_reloaded", "storage_allocated", "storage_reduced", "storage_saved",
  "plugin_readmitted", "decision_moved", "store_back", "standard_tasks"];

const MILLISECONDS_FOR_AN_ANSWER = 10000;

/** The service answers, but cannot tell: why. */
export class NotReady extends Error {}

export async function get(path, reader) {
  const signal = AbortSignal.timeout(MILLISECONDS_FOR_AN_ANSWER);
  const reply = await fetch(path, { cache: "no-cache", signal });
  const body = await reply.json();
  if (!reply.ok) {
    throw new NotReady(read.fault(body));
  }
  return reader(body);
}
