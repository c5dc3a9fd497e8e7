"""Documents that change, or cannot be read, beneath a service."""

import json
import sqlite3

import requests
from api import Api
from service import SAMPLE, await_true


def put(service, path, text):
    """Writes the document beneath the service, behind the back of every check."""
    connection = sqlite3.connect(service.store.removeprefix("sqlite:"))
    changed = connection.execute("UPDATE node SET text=?, version=version+1 WHERE path=?",
                                 (text, path))
    assert changed.rowcount == 1
    connection.commit()
    connection.close()


def test_it_waits_for_an_unreadable_cluster_document_and_comes_up_when_it_is_mended(
        make_service):
    service = make_service()
    good = (SAMPLE / "cluster.json").read_text(encoding="utf-8")
    put(service, "/CloudMain/Cluster", good[:100])
    service.launch()
    service.await_listening()
    response = requests.get(service.url + "/readyz", timeout=30)
    assert response.status_code == 503 and "cluster" in response.text
    status, error = Api(service.url).refused("POST", "/api/v1/reports",
                                             {"input": "node_report", "node": "record-01"})
    assert status == 503 and error["name"] == "not_ready"
    put(service, "/CloudMain/Cluster", good)
    service.await_ready()
    assert len(Api(service.url).get("/api/v1/nodes")["nodes"]) == 24


def test_an_optional_document_may_be_absent(make_service, tmp_path):
    service = make_service(filled=False)
    folder = tmp_path / "files"
    folder.mkdir()
    (folder / "cluster.json").write_text(
        (SAMPLE / "cluster.json").read_text(encoding="utf-8"), encoding="utf-8")
    assert service.run("import", "--yes", str(folder)).returncode == 0
    service.start()
    assert len(Api(service.url).get("/api/v1/nodes")["nodes"]) == 24


def test_a_changed_document_is_taken_in_while_it_runs(service, api):
    document = json.loads((SAMPLE / "cluster.json").read_text(encoding="utf-8"))
    document["ClusterNode"] = [one for one in document["ClusterNode"]
                               if one["NodeID"] != "record-07"]
    put(service, "/CloudMain/Cluster", json.dumps(document))
    await_true(lambda: "record-07" not in [one["node"] for one in
                                           api.get("/api/v1/nodes")["nodes"]], "gone")


def test_an_unreadable_change_changes_nothing_and_is_said(service, api):
    before = [one["node"] for one in api.get("/api/v1/nodes")["nodes"]]
    put(service, "/CloudMain/Cluster", "nonsense")
    await_true(lambda: any(one["event"] == "document_unreadable" for one in api.events()), "said")
    assert [one["node"] for one in api.get("/api/v1/nodes")["nodes"]] == before
    assert "line 1" in api.get("/api/v1/documents/cluster")["fault"]
    assert ["fault" in one for one in api.get("/api/v1/documents")["documents"]].count(True) == 1
    put(service, "/CloudMain/Cluster", (SAMPLE / "cluster.json").read_text(encoding="utf-8"))
    await_true(lambda: "fault" not in api.get("/api/v1/documents/cluster"), "mended")
