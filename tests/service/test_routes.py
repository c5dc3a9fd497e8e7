"""Every route of doc/openapi.json, with good and with bad input."""

import json

import pytest
from api import OPENAPI, Api, filled, operations, resolved
from service import Service

# What stands for the names in paths.
KNOWN = {"node": "record-01", "type": "MeroRecord", "float_code": "float-01", "plugin": "recording",
         "document": "cluster", "task": "camera-001"}
QUESTIONS = [(path, operation) for method, path, operation in operations() if method == "get"]
INPUTS = [(method, path, operation) for method, path, operation in operations()
          if method != "get" and path != "/api/v1/reports"]
NUMBERS = [(path, resolved(one)["name"]) for path, operation in QUESTIONS
           for one in operation.get("parameters", [])
           if resolved(one)["in"] == "query"
           and resolved(resolved(one)["schema"]).get("type") == "integer"]
JSON_TYPES = {"string": [1, True, [], {}, None], "integer": ["x", 1.5, [], {}, None, True],
              "boolean": ["x", 1, [], {}, None], "array": ["x", 1, {}, None],
              "object": ["x", 1, [], None]}


@pytest.fixture(scope="module")
def shared(tmp_path_factory):
    one = Service(tmp_path_factory.mktemp("shared"))
    one.import_sample()
    one.start()
    yield one
    one.end()


@pytest.fixture
def api(shared):
    return Api(shared.url)


def name_of(one):
    return one if isinstance(one, str) else None


def content_of(operation):
    return list(resolved(operation["responses"]["200"])["content"])


@pytest.mark.parametrize("path, operation", QUESTIONS, ids=name_of)
def test_a_question_is_answered(api, path, operation):
    """Its status and form are held against the file by the client."""
    stream = "text/event-stream" in content_of(operation)
    response = api.ask("GET", filled(path, KNOWN)[0], stream=stream)
    assert response.status_code == 200 or ("{" in path and response.status_code == 404)
    response.close()


@pytest.mark.parametrize("path", [path for path, _ in QUESTIONS if "{" in path])
def test_a_question_about_what_is_not_there_says_so(api, path):
    status, error = api.refused("GET", filled(path, dict.fromkeys(KNOWN, "nothing of it"))[0])
    assert status == 404 or (status, error["name"]) == (400, "bad_input")


@pytest.mark.parametrize("path", [path for path, _ in QUESTIONS if path.startswith("/api/")])
def test_a_question_with_a_word_that_it_does_not_know_is_refused(api, path):
    status, error = api.refused("GET", filled(path, KNOWN)[0] + "?nonsense=1")
    assert status in (400, 404) and error["name"]


@pytest.mark.parametrize("value", ["-1", "x", "", "99999999999999999999999", "1.5", "0x10"])
@pytest.mark.parametrize("path, name", NUMBERS)
def test_a_number_in_a_question_has_to_be_one(api, path, name, value):
    status, error = api.refused("GET", filled(path, KNOWN)[0] + f"?{name}={value}")
    assert status == 400 and name in error.get("about", "")


def body_schema(operation):
    body = operation.get("requestBody")
    return resolved(resolved(body)["content"]["application/json"]["schema"]) if body else None


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


@pytest.mark.parametrize("method, path, operation", INPUTS, ids=name_of)
def test_an_input_with_a_bad_body_is_refused_with_the_place(api, method, path, operation):
    before = json.dumps(api.get("/api/v1/nodes")["nodes"])
    schema = body_schema(operation)
    url = filled(path, dict.fromkeys(KNOWN, "nothing of it"))[0]
    for body in (b"[]", b"1", b'"x"', b"{", b'{"nonsense": 1}'):
        status, _ = api.refused(method.upper(), url, data=body)
        assert status in (400, 404), body
    fields = fields_of(schema) if schema else {}
    good = {name: good_value(one) for name, one in fields.items()}
    for name, one in fields.items():
        for wrong in JSON_TYPES.get(one.get("type"), []):
            status, error = api.refused(method.upper(), url, {**good, name: wrong})
            assert status == 400, (name, wrong)
            assert name in error["about"]
        if one.get("type") == "integer":
            for huge in (10 ** 30, -10 ** 30):
                status, error = api.refused(method.upper(), url, {**good, name: huge})
                assert status == 400 and name in error["about"]
    for name in schema.get("required", []) if schema else []:
        lacking = {key: value for key, value in good.items() if key != name}
        status, error = api.refused(method.upper(), url, lacking)
        assert status == 400 and name in error["about"]
    assert json.dumps(api.get("/api/v1/nodes")["nodes"]) == before


def test_the_service_serves_its_own_description(api):
    assert api.get("/api/v1/openapi.json") == OPENAPI


def test_the_description_is_openapi_3_1_and_names_each_operation_once():
    assert OPENAPI["openapi"].startswith("3.1")
    names = [operation["operationId"] for _, _, operation in operations()]
    assert len(names) == len(set(names))


def test_an_unknown_field_of_a_report_is_counted_and_passed_over(api):
    answer = api.report({"input": "node_report", "node": "record-01", "mood": "good"})
    assert answer["answers"][0]["result"] == "done"


def test_a_list_of_reports_is_answered_in_order_each_for_itself(api):
    answers = api.report({"input": "node_report", "node": "record-01"},
                         {"input": "node_report", "node": "nobody"},
                         {"input": "container_report", "node": "record-02", "type": "MeroRecord"},
                         {"input": "nvr_report", "nvr": "nvr-1", "total": 10, "used": 1})["answers"]
    assert [one["result"] for one in answers] == ["done", "refused", "done", "done"]
    assert answers[1]["error"]["name"] == "unknown_node"


def test_lists_are_paged_filtered_and_cut_to_fields(api):
    whole = api.get("/api/v1/nodes")["nodes"]
    assert len(whole) == 24
    assert api.get("/api/v1/nodes", fields="node")["nodes"] == [{"node": one["node"]}
                                                                for one in whole]


def test_what_seldom_changes_has_a_tag(api):
    first = api.ask("GET", "/api/v1/documents/cluster")
    again = api.ask("GET", "/api/v1/documents/cluster",
                    headers={"If-None-Match": first.headers["ETag"]})
    assert again.status_code == 304 and not again.content


def tasks_of(api):
    return [(one["type"], one["node"], one["task_count"])
            for one in api.get("/api/v1/containers")["containers"]]


@pytest.mark.parametrize("xml", [
    "", "nonsense", "<", "<TaskList>", "<TaskList><Task></TaskList>", "<Other/>",
    "<TaskList><Task><TaskID/></Task></TaskList>", "\u0001", "<a>" * 5000,
    '<!DOCTYPE a [<!ENTITY a "aaaaaaaaaa">' + "".join(
        f'<!ENTITY {chr(98 + i)} "{("&" + chr(97 + i) + ";") * 10}">' for i in range(12)) +
    "]><TaskList><Task><TaskID>&m;</TaskID></Task></TaskList>",
    '<!DOCTYPE a [<!ENTITY x SYSTEM "file:///etc/passwd">]><TaskList><Task><TaskID>&x;</TaskID>'
    "</Task></TaskList>",
], ids=lambda xml: repr(xml[:30]))
def test_xml_that_is_none_is_refused(api, xml):
    before = tasks_of(api)
    response = api.input("job", node="center-01", job_type=1001, xml=xml)
    assert response.status_code >= 400 and response.json()["error"]["name"]
    assert "root:" not in response.text
    assert tasks_of(api) == before


def test_a_type_without_a_plug_in_is_refused(api):
    response = api.job(4711, "task-1")
    assert (response.status_code, response.json()["error"]["name"]) == (422, "no_plugin")


@pytest.mark.parametrize("kind, fields, name", [
    ("leave_node", {"node": "nobody"}, "unknown_node"),
    ("leave", {"node": "record-01", "type": "Nothing"}, "unknown_container"),
    ("drain", {"node": "nobody"}, "unknown_node"),
    ("promote", {"node": "nobody"}, "unknown_entry"),
    ("readmit", {"plugin": "nothing"}, "unknown_plugin"),
    ("cg_remove", {"float_code": "nothing"}, "unknown_entry"),
    ("join", {"node": "record-01", "ip": "192.0.2.21", "types": []}, "node_known"),
    ("explain", {"type": "MeroRecord", "task": "nothing"}, "unknown_task"),
])
def test_what_is_not_there_is_refused_by_name(api, kind, fields, name):
    response = api.input(kind, **fields)
    answer = response.json()
    assert response.status_code in (404, 409), response.text
    assert answer["error"]["name"] == name


