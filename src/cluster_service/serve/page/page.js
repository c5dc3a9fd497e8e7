import { ALARMS, KINDS, MOVES, NotReady, ask, get, read } from "./service.js";
import { KeyedList, Part, SIGNS, byId, plural, setText, setTime } from "./parts.js";

// Nodes and their containers

const PROCESS_STATES = ["running", "stopped", "restarting"];

function containerState(container) {
  const stopped = Object.values(container.processes).some((state) => state !== 0);
  if (container.shifting) return container.online ? ["shifting", "shifting"]
    : ["shifting", "offline, its work is being shifted"];
  if (!container.online) return ["offline", "offline"];
  if (container.removed) return ["removed", "removed"];
  if (stopped) return ["warning", "a process is not running"];
  if (container.marked) return ["warning", "gets no new work: it fell silent"];
  return ["online", ""];
}

function nodeState(node) {
  if (!node.online) return "offline";
  if (node.draining) return "draining";
  if (node.containers.some((one) => one.shifting)) return "shifting";
  if (node.removed) return "removed";
  return node.containers.every((one) => containerState(one)[0] === "online") ? "online" : "in part";
}

const containerTemplate = byId("container-template");
const factTemplate = byId("fact-template");

function fillContainer(part, container) {
  part.state(...containerState(container));
  part.text("name", container.type);
  part.text("tasks", plural(container.tasks, "task"));
  for (const load of ["disk", "net"]) {
    part.percent(load, container[load]);
    part.text(load + "-text", container[load] + " %");
  }
}

function fillFact(part, [name, value]) {
  part.text("name", name);
  part.text("value", value);
}

/** The tile of a node; opened, it shows details and asks for the tasks. */
class Tile extends Part {
  constructor(id) {
    super(byId("node-template"));
    this.element.id = "node " + id;
    this.head = this.spot("head");
    this.containers = new KeyedList(this.spot("containers"), containerTemplate,
      (one) => one.type, fillContainer);
    this.facts = new KeyedList(this.spot("facts"), factTemplate, ([name]) => name, fillFact);
    this.tasks = new Map();
    this.text("name", id);
    this.head.addEventListener("click", () => this.toggle());
    this.head.addEventListener("focus", () => moveTabStop(this.head));
  }

  fill(node) {
    this.node = node;
    this.state(node.state);
    this.containers.show(node.containers);
    if (this.isOpen()) {
      this.showFacts();
      this.askTasks();
    }
  }

  isOpen() {
    return this.head.getAttribute("aria-expanded") === "true";
  }

  toggle() {
    this.head.setAttribute("aria-expanded", String(!this.isOpen()));
    this.element.classList.toggle("open", this.isOpen());
    this.spot("details").hidden = !this.isOpen();
    this.fill(this.node);
  }

  showFacts() {
    const { node } = this;
    const facts = [["Address", node.ip]];
    for (const figure of ["cpu", "mem", "io", "net", "disk"]) {
      if (node.total[figure]) {
        facts.push([figure, `${node.used[figure] || 0} of ${node.total[figure]}`]);
      }
    }
    for (const one of node.containers) {
      const processes = Object.entries(one.processes).map(([name, state]) =>
        `${name} ${PROCESS_STATES[state] || state}`);
      if (processes.length > 0) {
        facts.push([`Processes of ${one.type}`, processes.join(", ")]);
      }
      const tasks = this.tasks.get(one.type) || [];
      facts.push([`Tasks of ${one.type}`, tasks.length > 0 ? tasks.join(", ") : "none"]);
    }
    this.facts.show(facts);
  }

  async askTasks() {
    await Promise.all(this.node.containers.map(async ({ type, tasks, node }) => {
      const answer = tasks > 0 ? await get(ask.tasksOf(type, node), read.tasks)
        .catch((fault) => [`cannot be told: ${fault.message}`]) : [];
      this.tasks.set(type, answer);
    }));
    this.showFacts();
  }
}

const nodeList = new KeyedList(byId("node-list"), null, (node) => node.id,
  (tile, node) => tile.fill(node), (id) => new Tile(id));
let nodes = [];

function joinNodes(nodesRead, containers) {
  const byNode = new Map(nodesRead.map((node) => [node.id, node]));
  nodesRead.forEach((node) => { node.containers = []; });
  containers.forEach((one) => byNode.get(one.node)?.containers.push(one));
  for (const node of nodesRead) {
    node.state = nodeState(node);
    node.words = [node.id, node.ip, ...node.containers.map((one) => one.type)].join(" ")
      .toLowerCase();
  }
  return nodesRead;
}

function showNodes() {
  const text = byId("filter-text").value.trim().toLowerCase();
  const state = byId("filter-state").value;
  const found = nodes.filter((node) => node.words.includes(text) &&
    (state === "" || node.state === state || (state === "attention" && node.state !== "online")));
  nodeList.show(found);
  setText("filter-count", `${found.length} of ${plural(nodes.length, "node")}`);
  byId("node-none").hidden = found.length > 0 || nodes.length === 0;
  const heads = tileHeads();
  if (heads.length > 0 && !heads.some((head) => head.tabIndex === 0)) {
    moveTabStop(heads[0]);
  }
}

// One tile is in the order of the tabulator; the arrows go from it to the others.

const tileHeads = () => [...nodeList.list.children].map((tile) => tile.firstElementChild);

function moveTabStop(head) {
  nodeList.list.querySelectorAll('.head[tabindex="0"]').forEach((one) => { one.tabIndex = -1; });
  head.tabIndex = 0;
}

function tilesInARow(heads) {
  const top = heads[0].getBoundingClientRect().top;
  const next = heads.findIndex((head) => head.getBoundingClientRect().top > top);
  return next === -1 ? heads.length : next;
}

function onTileKey(event) {
  const heads = tileHeads();
  const at = heads.indexOf(event.target);
  const steps = {
    ArrowRight: () => at + 1, ArrowLeft: () => at - 1,
    ArrowDown: () => at + tilesInARow(heads), ArrowUp: () => at - tilesInARow(heads),
    Home: () => 0, End: () => heads.length - 1,
  };
  if (at === -1 || !steps[event.key]) return;
  const to = heads[steps[event.key]()];
  if (to) {
    to.focus();
    to.scrollIntoView({ block: "nearest" });
  }
  event.preventDefault();
}

// Shifts, plug-ins, documents, versions

function clock(seconds) {
  return new Date(seconds * 1000).toLocaleTimeString([], { hour12: false });
}

const shiftList = new KeyedList(byId("shift-list"), byId("shift-template"),
  (shift) => `${shift.node} ${shift.type}`, (part, shift) => {
    const word = shift.givenUp ? "waits for room to appear" : shift.draining ? "being emptied"
      : shift.waiting > 0 ? "waits for room" : "runs";
    part.state(shift.givenUp ? "warning" : "shifting", word);
    part.text("name", `${shift.node || "no node"} ${shift.type}`);
    part.text("text", [shift.cause, `since ${clock(shift.started)}`,
      `${plural(shift.waiting, "task")} waiting`,
      shift.waiting > 0 && !shift.givenUp ? `next try ${clock(shift.nextTry)}` : ""]
      .filter(Boolean).join("; "));
  });

function showVersions(versions) {
  shiftList.show(versions.shifts);
  byId("shift-none").hidden = versions.shifts.length > 0;
  setText("count-waiting", versions.shifts.reduce((sum, shift) => sum + shift.waiting, 0));
  setText("version-decision", versions.decision);
  setText("version-master", versions.master);
  setText("version-center-db", versions.centerDb);
}

const pluginList = new KeyedList(byId("plugin-list"), byId("plugin-template"),
  (plugin) => plugin.file, (part, plugin) => {
    const failures = Object.entries(plugin.failures).map(([operation, count]) =>
      `${operation} failed ${plural(count, "time")}`);
    if (plugin.failure) {
      part.state("out", "not loaded");
    } else if (plugin.out) {
      part.state("out", "out of service");
    } else {
      part.state(failures.length > 0 ? "warning" : "in service", "in service");
    }
    part.text("name", plugin.name);
    part.text("text", [plugin.failure, plugin.types.join(", "), ...failures,
      plugin.lost.length > 0 ? `${plural(plugin.lost.length, "claim")} lost` : ""]
      .filter(Boolean).join("; "));
  });

const documentList = new KeyedList(byId("document-list"), byId("document-template"),
  (one) => one.name, (part, one) => {
    const percent = Math.round(100 * one.bytes / one.limit);
    part.text("name", one.name.replaceAll("_", " "));
    part.text("word", !one.asked ? "the store could not be asked" : !one.exists ? "not there"
      : one.fault ? "cannot be read" : percent >= 80 ? "nearly full" : "");
    part.percent("size", percent);
    part.text("text", `${one.bytes.toLocaleString()} of ${one.limit.toLocaleString()} bytes, ` +
      `${percent} %${one.fault && `; ${one.fault}`}`);
  });

function showCluster(cluster) {
  const offline = (count) => count > 0 ? ` (${count} offline)` : "";
  setText("count-nodes", cluster.nodes + offline(cluster.offlineNodes));
  setText("count-containers", cluster.containers + offline(cluster.offlineContainers));
  setText("count-tasks", cluster.tasks);
  byId("held").hidden = cluster.held.length === 0;
  setText("held", `! Held, since too many fell silent together: ${cluster.held.join(", ")}`);
  if (cluster.storeAway) {
    showState("not ready", "The store is away: what needs it is refused");
  } else if (cluster.settling) {
    showState("settling", "Ready; settling: nothing is moved yet");
  } else {
    showState("ready", "Ready");
  }
  document.title = (cluster.offlineNodes > 0 ? `(${cluster.offlineNodes} offline) ` : "") +
    byId("cluster-code").textContent;
}

function showState(state, text) {
  byId("state").dataset.state = state;
  setText("state-sign", SIGNS[state]);
  setText("state-text", text);
}

// Events

const EVENTS_AT_START = 100;
const EVENTS_KEPT = 300;
const MOVES_KEPT = 10;
const MILLISECONDS_BETWEEN_EVENTS_SHOWN = 200;
let waitingEvents = [];
let lastEvent = null;

function prepend(list, parts, kept) {
  list.prepend(...parts.reverse().map((part) => part.element));
  while (list.childElementCount > kept) {
    list.lastElementChild.remove();
  }
}

function eventPart(event) {
  const part = new Part(byId("event-template"));
  const alarms = ALARMS.includes(event.kind);
  setTime(part.element.querySelector("time"), event.time);
  part.text("name", event.subject);
  part.text("text", event.sentence);
  part.text("sign", alarms ? "!" : "·");
  part.element.dataset.state = alarms ? "warning" : "";
  return part;
}

function movePart(event) {
  const part = new Part(byId("move-template"));
  setTime(part.element.querySelector("time"), event.time);
  part.text("text", `${event.subject} ${event.sentence}`);
  return part;
}

function isHeld() {
  return byId("events-hold").getAttribute("aria-pressed") === "true";
}

function showEvents() {
  if (isHeld()) {
    setText("events-hold", waitingEvents.length > 0 ? `Go on (${waitingEvents.length} new)` : "Go on");
    return;
  }
  const events = waitingEvents.slice(-EVENTS_KEPT);
  waitingEvents = [];
  prepend(byId("event-list"), events.map(eventPart), EVENTS_KEPT);
  const moves = events.filter((event) => MOVES.includes(event.kind)).slice(-MOVES_KEPT);
  prepend(byId("move-list"), moves.map(movePart), MOVES_KEPT);
  byId("move-none").hidden = byId("move-list").childElementCount > 0;
}

function takeEvent(event) {
  waitingEvents.push(event);
  waitingEvents = waitingEvents.slice(-EVENTS_KEPT);
  if (waitingEvents.length === 1 || isHeld()) {
    setTimeout(showEvents, MILLISECONDS_BETWEEN_EVENTS_SHOWN);
  }
  refreshSoon();
}

function toggleHold() {
  const button = byId("events-hold");
  button.setAttribute("aria-pressed", String(!isHeld()));
  button.textContent = isHeld() ? "Go on" : "Hold";
  showEvents();
}

// The talk with the service

const MILLISECONDS_BETWEEN_REFRESHES = 1000;
const MILLISECONDS_UNTIL_LOADS_ARE_OLD = 5000;
const MILLISECONDS_UNTIL_ANOTHER_TRY = 2000;
let awaySince = null;

function showFault(fault) {
  if (fault instanceof NotReady) {
    awaySince = null;
    showState("not ready", `Not ready: ${fault.message}`);
  } else {
    awaySince = awaySince || new Date();
    const since = awaySince.toLocaleTimeString([], { hour12: false });
    showState("away", `The service is away since ${since}; what is shown is older. Trying again`);
  }
  document.documentElement.classList.add("stale");
}

async function refresh() {
  const one = (name) => get(ask[name], read[name]);
  const [settings, plugins] = await Promise.all(["settings", "plugins"].map(one));
  setText("cluster-code", settings.clusterCode);
  pluginList.show(plugins);
  const [cluster, nodesRead, containers, versions, documents] = await Promise.all(
    ["cluster", "nodes", "containers", "versions", "documents"].map(one));
  nodes = joinNodes(nodesRead, containers);
  showNodes();
  showVersions(versions);
  documentList.show(documents);
  awaySince = null;
  document.documentElement.classList.remove("stale");
  showCluster(cluster);
}

let isRefreshing = false;
let isRefreshWanted = false;
let refreshedAt = -Infinity;
let timer = null;

function refreshAfter(milliseconds) {
  clearTimeout(timer);
  timer = setTimeout(refreshNow, milliseconds);
}

function refreshSoon() {
  isRefreshWanted = true;
  if (!isRefreshing) {
    refreshAfter(refreshedAt + MILLISECONDS_BETWEEN_REFRESHES - performance.now());
  }
}

async function refreshNow() {
  isRefreshing = true;
  isRefreshWanted = false;
  let pause = MILLISECONDS_UNTIL_LOADS_ARE_OLD;
  try {
    await refresh();
  } catch (fault) {
    showFault(fault);
    pause = MILLISECONDS_UNTIL_ANOTHER_TRY;
  }
  isRefreshing = false;
  refreshedAt = performance.now();
  refreshAfter(isRefreshWanted ? MILLISECONDS_BETWEEN_REFRESHES : pause);
}

/** The events from some before the last one on. A stream that broke is begun anew where it was. */
async function listen() {
  try {
    const { first, last } = await get(ask.keptEvents, read.keptEvents);
    lastEvent ??= Math.max(first - 1, last - EVENTS_AT_START);
  } catch (fault) {
    showFault(fault);
    setTimeout(listen, MILLISECONDS_UNTIL_ANOTHER_TRY);
    return;
  }
  const source = new EventSource(ask.stream(lastEvent));
  const onEvent = (message) => {
    const event = read.event(JSON.parse(message.data));
    lastEvent = event.number;
    takeEvent(event);
  };
  ["message", ...KINDS].forEach((kind) => source.addEventListener(kind, onEvent));
  source.addEventListener("missed", (message) => takeEvent({
    kind: "missed", time: Date.now() / 1000, subject: "page",
    sentence: `missed ${plural(read.missed(JSON.parse(message.data)), "event")} or more`,
  }));
  source.onopen = refreshSoon;
  source.onerror = () => {
    source.close();
    refreshSoon();
    setTimeout(listen, MILLISECONDS_UNTIL_ANOTHER_TRY);
  };
}

byId("filter-text").addEventListener("input", showNodes);
byId("filter-state").addEventListener("change", showNodes);
document.querySelector("form").addEventListener("submit", (event) => event.preventDefault());
byId("node-list").addEventListener("keydown", onTileKey);
byId("events-hold").addEventListener("click", toggleHold);
refreshNow();
listen();
