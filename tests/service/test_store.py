"""A store that is slow, gone, full, back again."""

import resource
import signal
import sqlite3
import threading
import time
from pathlib import Path

import pytest
import requests
from api import Api
from cluster import RECORDING, Agents, await_settled, where
from service import PATIENCE, await_true


SILENCE = 5  # seconds
GONE = {"store_failed", "store_away", "not_ready"}


def fault_of_job(api, name):
    """Sends a job of one task. Why it is refused; empty when it is placed."""
    try:
        response = api.job(RECORDING, name, Net=1, Disk=1)
    except requests.ConnectionError:  # it begins anew, and listens in a moment
        return "not_ready"
    return "" if response.status_code == 200 else response.json()["error"]["name"]


def await_placed(api, name):
    await_true(lambda: not fault_of_job(api, name), "placed", patience=120)


def await_refused(api, name):
    return await_true(lambda: fault_of_job(api, name), "refused")


@pytest.fixture
def alive(make_service, zookeeper):
    """A service on ZooKeeper with agents, and a client."""
    service = make_service(f"zookeeper:{zookeeper.address}",
                           settings=("--silence", str(SILENCE))).start()
    with Agents(service.url):
        api = Api(service.url)
        await_settled(api)
        yield service, api


def test_a_job_is_refused_while_the_store_is_gone_and_placed_when_it_is_back(alive, zookeeper):
    service, api = alive
    await_placed(api, "before")
    zookeeper.stop()
    assert await_refused(api, "meanwhile") in GONE
    assert service.process.poll() is None
    zookeeper.start()
    await_placed(api, "after")
    assert set(where(api, "MeroRecord")) == {"before", "after"}, "what is refused changes nothing"


def test_nobody_falls_silent_because_the_store_was_gone(alive, zookeeper):
    """Longer than silence lasts here."""
    _, api = alive
    zookeeper.stop()
    limit = time.monotonic() + 2 * SILENCE
    while time.monotonic() < limit:
        fault_of_job(api, "meanwhile")
        time.sleep(0.1)
    zookeeper.start()
    await_placed(api, "after")
    await_settled(api)
    assert not [one for one in api.events() if one["event"] == "offline"]


def test_a_hung_store_is_noticed_and_what_needs_it_is_refused_at_once(alive, zookeeper):
    _, api = alive
    zookeeper.freeze()
    try:
        assert await_refused(api, "meanwhile") in GONE
        begun = time.monotonic()
        assert fault_of_job(api, "again") in GONE
        assert time.monotonic() - begun < PATIENCE
    finally:
        zookeeper.thaw()
    await_placed(api, "after")
    assert "after" in where(api, "MeroRecord")


def test_what_the_answers_promise_outlives_a_store_that_comes_and_goes(alive, zookeeper):
    service, api = alive
    names = [f"task-{i}" for i in range(3)]
    for name in names:
        zookeeper.stop()
        zookeeper.start()
        await_placed(api, name)
    service.kill()
    service.start()
    assert set(where(Api(service.url), "MeroRecord")) == set(names)


def test_a_full_disk_refuses_jobs_and_keeps_what_was_promised(make_service, tmp_path):
    """The limit on the size of files stands for a disk that is full."""
    limit = 1 << 20

    def small_files():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # a write that fails, as on a full disk
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

    service = make_service(limit=small_files).start()
    api = Api(service.url)
    with Agents(service.url):
        await_settled(api)
        placed = set()
        for i in range(4000):
            fault = fault_of_job(api, f"task-{i}")
            if fault:
                break
            placed.add(f"task-{i}")
        else:
            pytest.fail("the disk never became full")
        assert fault in GONE
        assert requests.get(service.url + "/healthz", timeout=PATIENCE).status_code == 200
        assert set(where(api, "MeroRecord")) == placed
        service.kill()
    service.limit = lambda: None
    service.start()
    assert placed <= set(where(Api(service.url), "MeroRecord"))


@pytest.fixture
def without_its_file(service, api):
    """A service with a task, whose store is elsewhere and which has noticed that."""
    path = Path(service.store.removeprefix("sqlite:"))
    away = path.parent / "away"
    with Agents(service.url):
        await_settled(api)
        await_placed(api, "before")
        away.mkdir()
        for one in path.parent.glob(path.name + "*"):
            one.rename(away / one.name)
        assert await_refused(api, "meanwhile") in GONE
        await_true(lambda: not service.is_ready(), "noticed")
        yield away, path.parent


def test_a_file_that_is_taken_away_is_waited_for(without_its_file, service, api):
    away, folder = without_its_file
    assert fault_of_job(api, "meanwhile") in GONE
    for one in away.iterdir():
        one.rename(folder / one.name)
    await_placed(api, "after")
    assert set(where(api, "MeroRecord")) == {"before", "after"}
    assert service.process.poll() is None


def test_a_file_that_takes_the_place_of_the_stores_is_read_anew(without_its_file, service, api):
    service.import_sample()
    await_placed(api, "after")
    service.kill()
    service.start()
    assert "after" in where(api, "MeroRecord"), "what was promised is in the new file"


def test_a_locked_file_is_waited_for_or_refused_and_works_again(service, api):
    """Another program holds the store's write lock for a while."""
    with Agents(service.url):
        await_settled(api)
        path = service.store.removeprefix("sqlite:")
        other = sqlite3.connect(path, isolation_level=None)
        other.execute("BEGIN IMMEDIATE")
        answers = []
        asking = threading.Thread(
            target=lambda: answers.append(fault_of_job(Api(service.url), "task-1")))
        asking.start()
        assert Api(service.url).get("/api/v1/nodes")["nodes"], "questions are answered meanwhile"
        asking.join(SILENCE)
        other.execute("ROLLBACK")
        asking.join()
        other.close()
        assert answers[0] in GONE | {""}
        await_placed(api, "task-2")
