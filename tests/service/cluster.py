"""Agents of the sample cluster, for tests that want it alive."""

import json
import threading

from api import Api
from service import SAMPLE, await_true

CLUSTER = json.loads((SAMPLE / "cluster.json").read_text(encoding="utf-8"))
NODES = {node["NodeID"]: [container["ContainerType"] for container in node["Container"]]
         for node in CLUSTER["ClusterNode"]}
RECORDING = 1001  # job types
STEERED = 9001
FIGURES = {
    "MeroRecord": {"total": {"disk": 40000, "net": 100000}, "used": {"disk": 10, "net": 5}},
    "MeroCloudStorage": {},
}
OTHER_FIGURES = {"total": {"cpu": 1000, "net": 1000}, "used": {"cpu": 5, "net": 5}}


class Agent:
    """One node. Takes up what it is given, drops what it is told to drop."""

    def __init__(self, node, types):
        self.node = node
        self.types = types
        self.tasks = {kind: set() for kind in types}
        self.seen = {kind: 0 for kind in types}

    def reports(self):
        reports = [{"input": "node_report", "node": self.node}]
        for kind in self.types:
            one = {"input": "container_report", "node": self.node, "type": kind,
                   **FIGURES.get(kind, OTHER_FIGURES)}
            if kind != "MeroCloudStorage":
                one |= {"seen": self.seen[kind],
                        "tasks": [{"id": task} for task in sorted(self.tasks[kind])]}
            reports.append(one)
        return reports

    def learn(self, answers):
        for kind, answer in zip(self.types, answers[1:]):
            if kind != "MeroCloudStorage" and "number" in answer:
                self.seen[kind] = answer["number"]
                self.tasks[kind] |= {task["id"] for task in answer.get("take_up", [])}
                self.tasks[kind] -= set(answer.get("drop", []))


class Agents:
    """All nodes of the cluster, reporting on a thread of their own until they are stopped. The
    service may go and come back meanwhile."""

    def __init__(self, url, pause=0.5):
        self.api = Api(url)
        self.pause = pause
        self.agents = {node: Agent(node, types) for node, types in NODES.items()}
        self.silent = set()
        self.over = threading.Event()
        self.failure = None
        self.thread = threading.Thread(target=self.live, daemon=True)

    def __enter__(self):
        self.report()
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.over.set()
        self.thread.join()
        assert self.failure is None, self.failure

    def report(self):
        awake = [agent for node, agent in self.agents.items() if node not in self.silent]
        answers = self.api.report(*[report for agent in awake for report in agent.reports()])
        answers = iter(answers["answers"])
        for agent in awake:
            agent.learn([next(answers) for _ in range(1 + len(agent.types))])

    def live(self):
        while not self.over.wait(self.pause):
            try:
                self.report()
            except (OSError, AssertionError) as fault:
                if not self.may_fail(fault):
                    self.failure = fault
                    return

    def may_fail(self, fault):
        """A service that is gone, or not ready, is asked again later."""
        return isinstance(fault, OSError) or '"error"' in str(fault)


def await_settled(api):
    await_true(lambda: any(event["event"] == "settled" for event in api.events()), "settled")


def where(api, kind):
    """Each task of the containers of that type: its nodes."""
    places = {}
    for container in api.get("/api/v1/containers")["containers"]:
        if container["type"] == kind:
            path = f"/api/v1/containers/{kind}/{container['node']}/tasks"
            for task in api.get(path)["tasks"]:
                places.setdefault(task["id"], []).append(container["node"])
    return places
