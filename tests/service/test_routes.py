"""Every question of doc/openapi.json, and what its answers promise."""

import pytest
from api import OPENAPI, Api, filled, operations, resolved
from service import Service, await_true

# What stands for the names in paths.
KNOWN = {"node": "record-01", "type": "MeroRecord", "float_code": "float-01", "plugin": "recording",
         "document": "cluster", "task": "camera-001"}
QUESTIONS = [(path, operation) for method, path, operation in operations() if method == "get"]
NUMBERS = [(path, resolved(one)["name"]) for path, operation in QUESTIONS
           for one in operation.get("parameters", [])
           if resolved(one)["in"] == "query"
           and resolved(resolved(one)["schema"]).get("type") == "integer"]


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
    ids = [{"node": one["node"]} for one in whole]
    assert api.get("/api/v1/nodes", fields="node")["nodes"] == ids
    assert api.get("/api/v1/nodes", fields="node,node")["nodes"] == ids, "named twice"


def test_what_seldom_changes_has_a_tag(api):
    first = api.ask("GET", "/api/v1/documents/cluster")
    again = api.ask("GET", "/api/v1/documents/cluster",
                    headers={"If-None-Match": first.headers["ETag"]})
    assert again.status_code == 304 and not again.content


def test_costs_far_beyond_the_total_stay_within_what_the_description_allows(make_service):
    api = Api(make_service().start().url)
    largest = 2 ** 31 - 1
    api.report({"input": "container_report", "node": "record-01", "type": "MeroRecord",
                "total": {"disk": 1, "net": 1}, "used": {},
                "tasks": [{"id": f"huge-{i}", "costs": {"disk": largest, "net": largest}}
                          for i in range(3)]})
    path = "/api/v1/containers/MeroRecord/record-01"
    await_true(lambda: api.get(path)["task_count"] == 3, "shown")
    container = api.get(path)
    assert container["disk_percent"] == container["net_percent"] == largest
