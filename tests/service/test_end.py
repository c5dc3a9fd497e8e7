"""How a service ends: within five seconds, whatever hangs."""

import signal
import threading
import time

import pytest
import requests
from api import Api
from cluster import RECORDING, STEERED, Agents, await_settled, where
from service import await_true

LIMIT = 5 + 1  # seconds; the last is for a machine that is busy


def hang_a_call(service, api):
    """A call that does not come back, with its request."""
    service.steer("hang")
    threading.Thread(target=lambda: swallow(lambda: api.job(STEERED, "task-1")),
                     daemon=True).start()
    await_true(lambda: any(one["out_of_service"] for one in api.get("/api/v1/plugins")["plugins"]),
               "a plug-in that hangs is noticed")


def swallow(ask):
    try:
        ask()
    except (requests.RequestException, AssertionError):
        pass


def test_it_ends_with_status_0(service):
    status, took = service.stop()
    assert status == 0 and took < LIMIT


def test_what_was_acknowledged_before_the_end_is_there_after_it(service, api):
    with Agents(service.url):
        await_settled(api)
        assert api.job(RECORDING, "camera-1", Net=1, Disk=1).json()["result"] == "done"
        assert service.stop()[0] == 0
        service.start()
        assert list(where(Api(service.url), "MeroRecord")) == ["camera-1"]


def test_a_reader_of_events_from_before_a_restart_is_told_that_it_missed_some(service, api):
    old = api.get("/api/v1/events")
    assert old["missed"] == 0
    assert service.stop()[0] == 0
    service.start()
    api = Api(service.url)
    new = api.get("/api/v1/events", since=old["last"])
    assert new["missed"] >= 1
    assert old["last"] < new["first"] == new["events"][0]["number"]
    assert "loaded" in [event["event"] for event in new["events"]]
    assert api.get("/api/v1/events", since=0)["missed"] == 0
    with api.ask("GET", "/api/v1/events/stream", stream=True, since=old["first"]) as stream:
        assert next(stream.iter_lines()) == b"event: missed"


def test_it_ends_while_a_plug_in_hangs(service, api):
    with Agents(service.url):
        await_settled(api)
        hang_a_call(service, Api(service.url))
        _, took = service.stop()
    assert took < LIMIT


def test_it_ends_while_the_store_hangs(make_service, zookeeper):
    service = make_service(f"zookeeper:{zookeeper.address}").start()
    zookeeper.freeze()
    try:
        threading.Thread(target=lambda: swallow(lambda: Api(service.url).done(
            "member_status", nodes=["record-01"], status="removed")), daemon=True).start()
        _, took = service.stop()
    finally:
        zookeeper.thaw()
    assert took < LIMIT


@pytest.mark.parametrize("comes_back", [False, True])
def test_it_ends_while_it_asks_a_store_that_hangs_who_has_the_cluster(make_service, zookeeper,
                                                                      comes_back):
    service = make_service(f"zookeeper:{zookeeper.address}").start()
    zookeeper.freeze()
    try:
        await_true(lambda: "the hold of the cluster is lost" in service.logged(), "lost")
        time.sleep(0.5)
        begun = time.monotonic()
        service.signal(signal.SIGTERM)
        if comes_back:
            zookeeper.thaw()
        service.wait()
        took = time.monotonic() - begun
    finally:
        zookeeper.thaw()
    assert took < LIMIT


def test_it_ends_while_the_store_is_gone_and_a_plug_in_hangs(make_service, zookeeper):
    service = make_service(f"zookeeper:{zookeeper.address}").start()
    api = Api(service.url)
    with Agents(service.url):
        await_settled(api)
        hang_a_call(service, api)
        zookeeper.stop()
        _, took = service.stop()
    assert took < LIMIT


def test_it_ends_while_requests_stall_and_streams_are_open(service):
    streams = [requests.get(service.url + "/api/v1/events/stream", stream=True, timeout=60)
               for _ in range(20)]
    _, took = service.stop()
    assert took < LIMIT
    for one in streams:
        one.close()


def test_it_ends_before_it_is_ready(make_service, zookeeper):
    """Also while it waits for a store that hangs."""
    service = make_service(f"zookeeper:{zookeeper.address}")
    zookeeper.freeze()
    try:
        service.launch()
        time.sleep(0.5)
        _, took = service.stop()
    finally:
        zookeeper.thaw()
    assert took < LIMIT


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_second_signal_ends_it_at_once(service, api, number):
    with Agents(service.url):
        await_settled(api)
        hang_a_call(service, api)
        service.signal(number)
        service.signal(number)
        begun = time.monotonic()
        service.wait()
    assert time.monotonic() - begun < LIMIT
