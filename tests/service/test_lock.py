"""One cluster, one service."""

import signal
import time

import requests
from api import Api
from service import PATIENCE, await_true


def is_over(service):
    return service.process.poll() is not None


def test_a_second_service_is_refused_and_told_who_holds_the_cluster(make_service, store):
    first = make_service(store).start()
    second = make_service(store, filled=False)
    second.launch()
    await_true(lambda: is_over(second), "refused")
    assert second.process.returncode != 0
    assert str(first.process.pid) in second.logged()
    assert first.is_ready()
    assert first.stop()[0] == 0
    second.start()
    assert len(Api(second.url).get("/api/v1/nodes")["nodes"]) == 24


def test_a_service_that_waits_for_the_cluster_ends_in_order_when_it_is_asked(make_service,
                                                                             zookeeper):
    name = f"zookeeper:{zookeeper.address}"
    make_service(name).start()
    second = make_service(name, filled=False)
    second.launch()
    await_true(lambda: "waiting in case that it is gone" in second.logged(), "waiting")
    second.signal(signal.SIGTERM)
    assert second.wait() == 1
    assert "ended at once" not in second.logged()


def test_another_cluster_of_the_same_store_is_free(make_service, zookeeper):
    name = f"zookeeper:{zookeeper.address}"
    make_service(name).start()
    other = make_service(name, filled=False)
    other.cluster = "Other"
    other.import_sample()
    other.start()


def test_a_killed_services_cluster_is_free_soon(make_service, store):
    first = make_service(store).start()
    second = make_service(store, filled=False)
    first.kill()
    begun = time.monotonic()
    second.start()
    assert time.monotonic() - begun < PATIENCE


def test_a_command_that_changes_the_cluster_is_refused_while_a_service_runs(make_service, store):
    service = make_service(store).start()
    command = ("remove", "--yes", "record-07", "MeroRecord")
    refused = service.run(*command)
    assert refused.returncode != 0 and "--force" in refused.stderr
    assert len(Api(service.url).get("/api/v1/nodes")["nodes"]) == 24
    assert service.run("show", "nodes").returncode == 0, "looking is free"
    forced = service.run(*command, "--force")
    assert forced.returncode == 0, forced.stderr


def test_two_services_are_never_both_ready_when_the_server_pauses(make_service, zookeeper):
    """The server sleeps for longer than sessions last, with a second service waiting."""
    name = f"zookeeper:{zookeeper.address}"
    services = [make_service(name).start(), make_service(name, filled=False)]
    zookeeper.freeze()
    services[1].launch()
    time.sleep(8)  # sessions last four seconds
    zookeeper.thaw()

    def ready():
        return [one for one in services if not is_over(one) and one.is_ready()]

    limit = time.monotonic() + 20
    while time.monotonic() < limit:
        assert len(ready()) <= 1
        time.sleep(0.05)
    assert len(ready()) == 1
    for one in services:
        if not is_over(one):
            one.signal(signal.SIGTERM)
            one.wait()


def takes_a_change(service):
    try:
        return requests.post(service.url + "/api/v1/versions/master/next", json={},
                             timeout=PATIENCE).ok
    except requests.RequestException:
        return False


def test_a_service_that_slept_takes_nothing_once_another_has_its_cluster(make_service, zookeeper):
    name = f"zookeeper:{zookeeper.address}"
    first, second = make_service(name).start(), make_service(name, filled=False)
    assert takes_a_change(first)
    first.signal(signal.SIGSTOP)
    second.start()  # once the other's session is over
    before = Api(second.url).get("/api/v1/versions")
    first.signal(signal.SIGCONT)

    def has_refused_to_its_end():
        assert not takes_a_change(first)
        return is_over(first)

    await_true(has_refused_to_its_end, "over")
    assert first.wait() != 0
    assert str(second.process.pid) in first.logged()
    assert Api(second.url).get("/api/v1/versions") == before
    assert takes_a_change(second)
