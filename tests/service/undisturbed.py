"""A cluster that lives, and has to be the same after whatever its service was asked."""

import pytest
import raw
from api import Api
from cluster import RECORDING, Agents, await_settled
from service import Service, await_true

QUESTIONS = ("/api/v1/nodes", "/api/v1/containers", "/api/v1/versions", "/api/v1/cgs",
             "/api/v1/center-db", "/api/v1/managers", "/api/v1/documents")


def cluster(api):
    """All of it that an agent or an operator could change."""
    shown = {path: api.get(path) for path in QUESTIONS}
    for document in shown["/api/v1/documents"]["documents"]:
        if document["exists"]:
            path = f"/api/v1/documents/{document['document']}"
            shown[path] = api.get(path)
    return shown


@pytest.fixture(scope="module")
def shared(tmp_path_factory):
    """One service for all tests of a file, whose agents report and have work."""
    one = Service(tmp_path_factory.mktemp("shared"))
    one.import_sample()
    one.start()
    try:
        api = Api(one.url)
        with Agents(one.url) as agents:
            await_settled(api)
            assert api.job(RECORDING, "camera-1", "camera-2", Disk=1).json()["result"] == "done"
            await_true(lambda: sum(len(tasks) for agent in agents.agents.values()
                                   for tasks in agent.tasks.values()) == 2, "they are taken up")
            yield one
    finally:
        one.end()


@pytest.fixture(autouse=True)
def unchanged(shared):
    before = cluster(Api(shared.url))
    yield
    assert cluster(Api(shared.url)) == before
    assert raw.ask(shared, "GET", "/healthz").status == 200
