"""A cluster that answers what the page asks, in the service's words, and does what a test says."""

import json
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path
from urllib.parse import parse_qs, unquote, urlsplit

PAGE = Path(__file__).resolve().parents[2] / "src/cluster_service/serve/page"
FILES = {"/": ("index.html", "text/html"), "/style.css": ("style.css", "text/css"),
         "/page.js": ("page.js", "text/javascript"),
         "/parts.js": ("parts.js", "text/javascript"),
         "/service.js": ("service.js", "text/javascript"), "/icon.svg": ("icon.svg", "image/svg+xml")}
LIMITS = {"cluster": 65535, "cloud_storage": 65535, "configuration": 511, "cg_list": 1023,
          "center_db": 511, "manager": 1023, "version": 511}


class StubCluster:
    """What a cluster shows. Tests change its fields and tell of it with happen()."""

    def __init__(self, nodes=6):
        self.not_ready = ""
        self.held = []
        self.settling = False
        self.nodes = {}
        self.containers = {}
        self.tasks = {}
        self.shifts = []
        self.plugins = [self.plugin("recording", ["MeroRecord"]), self.plugin("image", ["MeroImgDev"])]
        self.documents = {name: limit // 3 for name, limit in LIMITS.items()}
        self.document_faults = {}
        self.decision = 17
        self.events = []
        self.first = 1000  # the number of the first event of this life
        self.more = threading.Condition()
        self.server = None
        self.streams_end = threading.Event()
        self.port = 0
        for number in range(1, nodes + 1):
            self.join(f"record-{number:03}", number)

    @staticmethod
    def plugin(name, types):
        return {"name": name, "file": f"lib{name}.so", "job_types": [1001], "types": types,
                "logic_types": {}, "shift_types": types, "balance_types": [], "lost": [],
                "out_of_service": False, "failures": {}}

    def join(self, node, number):
        self.nodes[node] = {
            "node": node, "ip": f"192.0.2.{number % 250}", "ip_type": 0, "node_role": 1,
            "domain_role": 1, "service_type": 0, "member_status": "normal", "online": True,
            "draining": False, "total": {"cpu": 100, "net": 1000}, "used": {"cpu": 7 * number % 100},
            "types": ["MeroRecord", "RecordPlan"]}
        for kind in ("MeroRecord", "RecordPlan"):
            self.tasks[kind, node] = [f"{node}-{kind}-{i}" for i in range(number % 4)]
            self.containers[kind, node] = {
                "node": node, "type": kind, "online": True, "available": True,
                "member_status": "normal", "reported": True, "fault_shift": False,
                "may_shift": True, "shifting": False, "processes": {"recorder": 0},
                "total": {"net": 1000}, "used": {}, "parameters": {},
                "disk_percent": 13 * number % 101, "net_percent": 29 * number % 101}

    def silence(self, node):
        self.nodes[node]["online"] = False
        self.happen("offline", node=node, sentence="falls silent: has not reported")

    def happen(self, kind, sentence, **fields):
        subject = " ".join(fields[key] for key in ("node", "type") if key in fields) or "cluster"
        with self.more:
            self.events.append({"event": kind, "time": int(time.time()), "subject": subject,
                                "sentence": sentence, "number": self.first + len(self.events), **fields})
            self.more.notify_all()

    def begin_anew(self):
        """Another life, whose numbers are larger."""
        self.events.clear()
        self.first += 1000

    def answer(self, path, query):
        """Status and body."""
        if path == "/api/v1/settings":
            return 200, {"cluster_code": "Main", "local_ip": "127.0.0.1", "service": {},
                         "engine": {}, "cluster": {}}
        if path == "/api/v1/plugins":
            return 200, {"plugins": self.plugins}
        if path == "/api/v1/events":
            return 200, {"events": [], "missed": 0, "first": self.first,
                         "last": self.first + len(self.events) - 1}
        if self.not_ready:
            return 503, {"error": {"name": "not_ready", "code": 2004, "sentence": "Not ready.",
                                   "remedy": "Wait.", "about": self.not_ready}}
        parts = [unquote(part) for part in path.split("/")[3:]]
        if parts[0] == "containers" and parts[-1] == "tasks":
            return 200, {"tasks": [{"id": one} for one in self.tasks[parts[1], parts[2]]]}
        shown = {
            "cluster": self.summary, "versions": self.versions,
            "nodes": lambda: {"nodes": list(self.nodes.values())},
            "containers": lambda: {"containers": [
                {**one, "task_count": len(self.tasks[key])} for key, one in self.containers.items()]},
            "documents": lambda: {"documents": [
                {"document": name, "exists": True, "asked": True, "bytes": size,
                 "limit": LIMITS[name], **self.document_faults.get(name, {})}
                for name, size in self.documents.items()]},
        }
        body = shown[parts[0]]()
        for name in query.get("fields", [""])[0].split(",") if "fields" in query else []:
            assert all(name in one for one in body[parts[0]]), f"{name} is no field"
        return 200, body

    def summary(self):
        return {"view": 1, "time": int(time.time()), "settling": self.settling,
                "store_away": False, "nodes": len(self.nodes),
                "offline_nodes": sum(not one["online"] for one in self.nodes.values()),
                "containers": len(self.containers),
                "offline_containers": sum(not one["online"] for one in self.containers.values()),
                "tasks": sum(map(len, self.tasks.values())), "held_types": self.held,
                "draining": [name for name, one in self.nodes.items() if one["draining"]]}

    def versions(self):
        return {"decision": self.decision, "master": 3, "center_db": 5, "shifts": self.shifts}

    def start(self):
        """Listens, on the same port as before."""
        self.streams_end.clear()
        self.server = ThreadingHTTPServer(("127.0.0.1", self.port), self.handler())
        self.server.daemon_threads = True
        self.port = self.server.server_address[1]
        threading.Thread(target=self.server.serve_forever, args=(0.05,), daemon=True).start()
        return self

    def stop(self):
        self.streams_end.set()
        with self.more:
            self.more.notify_all()
        self.server.shutdown()
        self.server.server_close()

    @property
    def url(self):
        return f"http://127.0.0.1:{self.port}"

    def handler(self):
        cluster = self

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):
                where = urlsplit(self.path)
                if where.path in FILES:
                    name, kind = FILES[where.path]
                    self.reply(200, (PAGE / name).read_bytes(), kind)
                elif where.path == "/api/v1/events/stream":
                    self.stream(int(parse_qs(where.query)["since"][0]))
                elif where.path.startswith("/api/v1/"):
                    status, body = cluster.answer(where.path, parse_qs(where.query))
                    self.reply(status, json.dumps(body).encode(), "application/json")
                else:
                    self.reply(404, b"{}", "application/json")

            def reply(self, status, body, kind):
                self.send_response(status)
                self.send_header("Content-Type", kind)
                self.send_header("Content-Length", str(len(body)))
                self.send_header("Content-Security-Policy", "default-src 'self'; base-uri 'none'; "
                                 "form-action 'none'; frame-ancestors 'none'")
                self.end_headers()
                self.wfile.write(body)

            def stream(self, since):
                self.send_response(200)
                self.send_header("Content-Type", "text/event-stream")
                self.end_headers()
                if since < cluster.first - 1:
                    self.wfile.write(b'event: missed\ndata: {"missed": 1}\n\n')
                told = max(0, since - (cluster.first - 1))
                while not cluster.streams_end.is_set():
                    with cluster.more:
                        cluster.more.wait_for(
                            lambda: len(cluster.events) > told or cluster.streams_end.is_set())
                        events = cluster.events[told:]
                    told += len(events)
                    try:
                        for event in events:
                            self.wfile.write(f"id: {event['number']}\nevent: {event['event']}\n"
                                             f"data: {json.dumps(event)}\n\n".encode())
                    except OSError:
                        return

            def log_message(self, *_):
                """The test's output is for the test."""

        return Handler
