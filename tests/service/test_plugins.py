"""Plug-ins that misbehave: what they do to their own jobs, and what not to others'."""

import time

from cluster import RECORDING, STEERED, Agents, await_settled, where
from service import await_true


def error_of(response):
    return response.status_code, response.json()["error"]["name"]


def health(api):
    return {one["name"]: one for one in api.get("/api/v1/plugins")["plugins"]}


def test_a_slow_plug_in_is_waited_for(service, api):
    with Agents(service.url):
        await_settled(api)
        service.steer("slow")
        answer = api.job(STEERED, "task-1").json()
        assert answer["tasks"][0]["node"] == "image-06"


def test_a_throwing_plug_in_is_taken_out_after_three_failures_and_readmitted(service, api):
    with Agents(service.url):
        await_settled(api)
        before = where(api, "ImgExport")
        service.steer("throw")
        for _ in range(3):
            assert error_of(api.job(STEERED, "task-1")) == (502, "plugin_failed")
        assert error_of(api.job(STEERED, "task-1")) == (503, "plugin_out_of_service")
        assert health(api)["steered"]["out_of_service"]
        assert not health(api)["recording"]["out_of_service"]
        assert where(api, "ImgExport") == before
        assert api.job(RECORDING, "camera-1", Net=1, Disk=1).status_code == 200
        service.steer("well")
        api.done("readmit", plugin="steered")
        assert api.job(STEERED, "task-1").status_code == 200
        assert where(api, "ImgExport") == {"task-1": ["image-06"]}
        kinds = [event["event"] for event in api.events()]
        assert {"plugin_failed", "plugin_out", "plugin_readmitted"} <= set(kinds)


def test_a_lying_plug_in_places_nothing(service, api):
    with Agents(service.url):
        await_settled(api)
        before = where(api, "ImgExport")
        service.steer("lie")
        assert error_of(api.job(STEERED, "task-1")) == (502, "plugin_failed")
        assert where(api, "ImgExport") == before


def test_a_hanging_plug_in_costs_its_limit_and_then_nothing(service, api):
    with Agents(service.url):
        await_settled(api)
        service.steer("hang")
        status, name = error_of(api.job(STEERED, "task-1"))
        assert (status, name) == (502, "plugin_failed")
        assert error_of(api.job(STEERED, "task-1"))[1] in ("plugin_out_of_service", "plugin_busy")
        response = api.job(RECORDING, "camera-1", Net=1, Disk=1)
        assert response.status_code == 200
        assert api.input("readmit", plugin="steered").status_code == 503, "its call is not back"
        assert where(api, "ImgExport") == {}
        service.steer("well")
        await_true(lambda: api.input("readmit", plugin="steered").status_code == 200, "readmitted")
        assert api.job(STEERED, "task-1").status_code == 200


def test_reports_are_answered_while_a_plug_in_hangs_for_good(service, api):
    with Agents(service.url) as agents:
        await_settled(api)
        service.steer("hang")
        api.job(STEERED, "task-1")
        limit = time.monotonic() + 5
        while time.monotonic() < limit:
            agents.report()
        assert not [event for event in api.events() if event["event"] == "offline"]
