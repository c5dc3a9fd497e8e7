"""An input that makes no sense gets a named error and leaves the cluster as it was."""

import pytest
from api import Api, filled, operations, resolved, task_list
from undisturbed import shared, unchanged  # noqa: F401

INPUTS = [(method, path, operation) for method, path, operation in operations()
          if method != "get" and path != "/api/v1/reports"]
PATH_NAMES = ("node", "type", "float_code", "plugin", "document", "task")
JSON_TYPES = {"string": [1, True, [], {}, None], "integer": ["x", 1.5, [], {}, None, True],
              "boolean": ["x", 1, [], {}, None], "array": ["x", 1, {}, None],
              "object": ["x", 1, [], None]}
RECORDING_JOB = 1001


@pytest.fixture
def api(shared):  # noqa: F811
    return Api(shared.url)


def refusal(response):
    """Status and name of the error, which has all of its parts."""
    error = response.json()["error"]
    assert error["code"] and error["sentence"] and error["remedy"]
    return response.status_code, error["name"]


def body_schema(operation):
    body = operation.get("requestBody")
    return resolved(resolved(body)["content"]["application/json"]["schema"]) if body else {}


def fields_of(schema):
    """Of a schema that may be put together of several: every field, resolved."""
    fields = {name: resolved(one) for name, one in schema.get("properties", {}).items()}
    for part in schema.get("allOf", []):
        fields |= fields_of(resolved(part))
    return fields


def good_value(schema):
    schema = resolved(schema)
    if "enum" in schema:
        return schema["enum"][0]
    kind = schema.get("type")
    return {"string": "nothing", "integer": max(1, schema.get("minimum", 1)), "boolean": False,
            "array": [], "object": {}}.get(kind)


def wrong_values(schema):
    """Of another type, and numbers that are too small and too large."""
    values = list(JSON_TYPES.get(schema.get("type"), []))
    if schema.get("type") == "integer":
        values += [10 ** 30, -10 ** 30, schema["minimum"] - 1, schema["maximum"] + 1]
    return values


@pytest.mark.parametrize("method, path, operation", INPUTS,
                         ids=lambda one: one if isinstance(one, str) else None)
def test_an_input_with_a_bad_body_is_refused_with_the_place(api, method, path, operation):
    url = filled(path, dict.fromkeys(PATH_NAMES, "nothing of it"))[0]

    def refused(name, body=None, data=None):
        response = api.ask(method.upper(), url, body, data)
        assert refusal(response) == (400, "bad_request" if method == "delete" else name)
        return response.json()["error"].get("about", "")

    for data in (b"{", b"\xff", b"{'a': 1}", b"[" * 1000 + b"]" * 1000):
        refused("bad_json", data=data)
    for data in (b"[]", b"1", b'"x"', b'{"nonsense": 1}'):
        refused("bad_input", data=data)
    schema = body_schema(operation)
    fields = fields_of(schema)
    good = {name: good_value(one) for name, one in fields.items()}
    for name, one in fields.items():
        for wrong in wrong_values(one):
            assert name in refused("bad_input", {**good, name: wrong}), (name, wrong)
    for name in schema.get("required", []):
        assert name in refused("bad_input", {key: good[key] for key in good if key != name})


def entity_bomb():
    entities = '<!ENTITY a "aaaaaaaaaa">'
    for name, inner in zip("bcdefghijklm", "abcdefghijkl"):
        entities += f'<!ENTITY {name} "{f"&{inner};" * 10}">'
    return f"<!DOCTYPE a [{entities}]><TaskList><Task><TaskID>&m;</TaskID></Task></TaskList>"


@pytest.mark.parametrize("xml", [
    "", "nonsense", "<", "<TaskList>", "<TaskList><Task></TaskList>", "<Other/>",
    "<TaskList><Task><TaskID/></Task></TaskList>", "\u0001", "<a>" * 5000,
    task_list(["task-1"], {"Disk": -1}), task_list(["task-1"], {"Disk": 10 ** 30}),
    task_list(["task-1"], {"Disk": 1.5}), task_list(["task-1"], {"Disk": "much"}),
    task_list(["task-1"], {"Net": -1}), task_list(["x" * 129], {"Disk": 1}),
    task_list(["task-1", "task-1"], {"Disk": 1}),
    entity_bomb(),
    '<!DOCTYPE a [<!ENTITY x SYSTEM "file:///etc/passwd">]><TaskList><Task><TaskID>&x;</TaskID>'
    "</Task></TaskList>",
], ids=lambda xml: repr(xml[:60]))
@pytest.mark.parametrize("kind", ["job", "dry_run"])
def test_xml_that_is_none_is_refused(api, kind, xml):
    response = api.input(kind, node="center-01", job_type=RECORDING_JOB, xml=xml)
    assert refusal(response) == (400, "bad_input")
    assert "root:" not in response.text


@pytest.mark.parametrize("job_type", [0, 4711, 4294967295])
@pytest.mark.parametrize("kind", ["job", "dry_run"])
def test_a_type_without_a_plug_in_is_refused(api, kind, job_type):
    response = api.input(kind, node="center-01", job_type=job_type,
                         xml=task_list(["task-1"], {"Disk": 1}))
    assert refusal(response) == (422, "no_plugin")


@pytest.mark.parametrize("kind, fields, status, name", [
    ("job", {"node": "nobody", "job_type": RECORDING_JOB,
             "xml": task_list(["task-1"], {"Disk": 1})}, 404, "unknown_node"),
    ("leave_node", {"node": "nobody"}, 404, "unknown_node"),
    ("leave", {"node": "record-01", "type": "Nothing"}, 404, "unknown_container"),
    ("leave", {"node": "nobody", "type": "MeroRecord"}, 404, "unknown_node"),
    ("drain", {"node": "nobody"}, 404, "unknown_node"),
    ("member_status", {"nodes": ["record-01", "nobody"], "status": "removed"}, 404, "unknown_node"),
    ("end_tasks", {"type": "MeroRecord", "tasks": ["nothing"]}, 404, "unknown_task"),
    ("end_tasks", {"type": "Nothing", "tasks": ["camera-1"]}, 404, "unknown_task"),
    ("promote", {"node": "nobody"}, 404, "unknown_entry"),
    ("readmit", {"plugin": "nothing"}, 404, "unknown_plugin"),
    ("cg_add", {"node": "nobody", "float_code": "x", "float_ip": "192.0.2.99"}, 409,
     "refused_by_rule"),
    ("cg_remove", {"float_code": "nothing"}, 404, "unknown_entry"),
    ("join", {"node": "record-01", "ip": "192.0.2.21", "types": []}, 409, "node_known"),
    ("explain", {"type": "MeroRecord", "task": "nothing"}, 404, "unknown_task"),
    ("explain", {"type": "Nothing", "task": "camera-1"}, 404, "unknown_task"),
])
def test_what_is_not_there_is_refused_by_name(api, kind, fields, status, name):
    assert refusal(api.input(kind, **fields)) == (status, name)
