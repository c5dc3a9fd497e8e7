"""Asks a service, and holds every answer against doc/openapi.json."""

import json
import re
from urllib.parse import quote

import jsonschema
import requests

from service import PATIENCE, ROOT

OPENAPI = json.loads((ROOT / "doc/openapi.json").read_text(encoding="utf-8"))
RESOLVER = jsonschema.RefResolver("", OPENAPI)
METHODS = ("get", "put", "post", "delete", "patch")


def resolved(node):
    """What a reference within the file stands for."""
    while "$ref" in node:
        node = RESOLVER.resolve(node["$ref"])[1]
    return node


def operations():
    """Each (method, path template, description) of the file."""
    return [(method, path, item[method])
            for path, item in OPENAPI["paths"].items() for method in METHODS if method in item]


def path_pattern(template):
    parts = re.split(r"\{[^}]*\}", template)
    return re.compile("[^/]+".join(re.escape(part) for part in parts) + r"\Z")


# Where each kind of input goes.
INPUTS = {
    "job": ("POST", "/api/v1/jobs"),
    "dry_run": ("POST", "/api/v1/dry-runs"),
    "end_tasks": ("POST", "/api/v1/tasks/{type}/end"),
    "explain": ("GET", "/api/v1/tasks/{type}/{task}/explain"),
    "manual_shift": ("POST", "/api/v1/shifts/manual"),
    "join": ("POST", "/api/v1/nodes"),
    "leave_node": ("DELETE", "/api/v1/nodes/{node}"),
    "leave": ("DELETE", "/api/v1/containers/{type}/{node}"),
    "drain": ("POST", "/api/v1/nodes/{node}/drain"),
    "member_status": ("PUT", "/api/v1/member-status"),
    "cg_add": ("POST", "/api/v1/cgs"),
    "cg_update": ("PUT", "/api/v1/cgs/{float_code}"),
    "cg_remove": ("DELETE", "/api/v1/cgs/{float_code}"),
    "promote": ("POST", "/api/v1/center-db/promote"),
    "readmit": ("POST", "/api/v1/plugins/{plugin}/readmit"),
    "next_master_version": ("POST", "/api/v1/versions/master/next"),
}


def filled(template, fields):
    """The path with the fields that it names, and the fields that are left for the body."""
    names = re.findall(r"\{([^}]*)\}", template)
    path = template
    for name in names:
        path = path.replace("{" + name + "}", quote(str(fields[name]), safe=""))
    return path, {name: value for name, value in fields.items() if name not in names}


PATTERNS = [(path_pattern(path), path) for path in sorted(OPENAPI["paths"], key=lambda p: "{" in p)]


def described(method, path):
    """The file's description of a request, by its path without the query; None if there is none."""
    for pattern, template in PATTERNS:
        if pattern.match(path):
            return OPENAPI["paths"][template].get(method.lower())
    return None


def validate(schema, value):
    jsonschema.validators.Draft202012Validator(schema, resolver=RESOLVER).validate(value)


ERROR = {"$ref": "#/components/schemas/Error"}


def hold_against_file(method, path, response):
    """An answer has a status that the file names for the request, and the form of its schema.
    A request that the file does not describe gets a named error."""
    operation = described(method, path)
    content_type = response.headers.get("Content-Type", "").split(";")[0]
    if operation is None:
        assert response.status_code in (404, 405), f"{method} {path} is not described"
        validate(ERROR, response.json())
        return
    responses = operation["responses"]
    status = str(response.status_code)
    assert status in responses or "default" in responses, \
        f"{method} {path}: status {status} is not described: {response.text[:400]}"
    content = resolved(responses.get(status) or responses["default"]).get("content", {})
    if not content:
        assert not response.content, f"{method} {path}: {status} has no described content"
        return
    assert content_type in content, f"{method} {path}: {status} is {content_type}"
    if content_type == "application/json":
        validate(content[content_type]["schema"], response.json())


def task_list(tasks, costs):
    inner = "".join(f"<{name}>{value}</{name}>" for name, value in costs.items())
    return "<TaskList>" + "".join(f"<Task><TaskID>{task}</TaskID>{inner}</Task>"
                                  for task in tasks) + "</TaskList>"


class Api:
    """A client that keeps its connection and believes nothing that the file does not say."""

    def __init__(self, url):
        self.url = url
        self.session = requests.Session()
        self.session.trust_env = False

    def ask(self, method, path, body=None, data=None, headers=None, stream=False, **parameters):
        if data is not None:
            headers = {"Content-Type": "application/json", **(headers or {})}
        response = self.session.request(method, self.url + path, json=body, data=data,
                                        headers=headers, params=parameters, timeout=PATIENCE,
                                        stream=stream)
        if not stream:
            hold_against_file(method, path.split("?")[0], response)
        return response

    def get(self, path, **parameters):
        """What a question is answered, which has to be 200."""
        response = self.ask("GET", path, **parameters)
        assert response.status_code == 200, response.text
        return response.json()

    def post(self, path, body, status=200):
        response = self.ask("POST", path, body)
        assert response.status_code == status, response.text
        return response.json()

    def input(self, kind, **fields):
        """Sends an input of that kind. The answer, whatever it is."""
        method, template = INPUTS[kind]
        path, body = filled(template, fields)
        return self.ask(method, path, body or None)

    def done(self, kind, **fields):
        response = self.input(kind, **fields)
        assert response.status_code == 200, response.text
        return response.json()

    def job(self, job_type, *tasks, **costs):
        """Work for the plug-in of the job type; each task with these costs."""
        return self.input("job", node="center-01", job_type=job_type, xml=task_list(tasks, costs))

    def report(self, *reports):
        return self.post("/api/v1/reports", list(reports))

    def refused(self, method, path, body=None, **how):
        """The error of a request that has to be refused."""
        response = self.ask(method, path, body, **how)
        assert response.status_code >= 400, response.text
        error = response.json()["error"]
        assert error["name"] and error["code"] and error["sentence"] and error["remedy"]
        return response.status_code, error

    def events(self, since=0):
        """All events behind the number that are there by now."""
        events = []
        while True:
            page = self.get("/api/v1/events", since=since)["events"]
            if not page:
                return events
            events += page
            since = page[-1]["number"]
