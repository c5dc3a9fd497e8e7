"""The page as a person sees it, beside a running service."""

import pytest
from api import Api
from browser import driver, page  # noqa: F401
from cluster import RECORDING, Agents, await_settled, where
from selenium.webdriver.common.by import By

SETTINGS = ("--silence", "3")


@pytest.fixture
def service(make_service):
    return make_service(settings=SETTINGS).start()


def test_work_of_a_silent_node_is_seen_to_move(page, service, api):
    with Agents(service.url) as agents:
        await_settled(api)
        api.job(RECORDING, *(f"camera-{i}" for i in range(4)), Disk=10)
        home = where(api, "MeroRecord")["camera-0"][0]
        page.open(service.url)
        page.says("#filter-count", "24 of 24 nodes")
        page.tile_says(home, "online")
        agents.silent.add(home)
        page.tile_says(home, "offline")
        page.says("#event-list", f"{home} MeroRecord falls silent")
        page.says("#move-list", "takes over")
        heir = where(api, "MeroRecord")["camera-0"][0]
        assert heir != home
        page.tile(heir).find_element(By.CSS_SELECTOR, ".head").click()
        page.tile_says(heir, "camera-0")
        agents.silent.discard(home)
        page.tile_says(home, "online")


def test_a_drained_node_is_seen_to_be_emptied(page, service, api):
    with Agents(service.url):
        await_settled(api)
        page.open(service.url)
        api.done("drain", node="record-01")
        page.says("#event-list", "record-01 is being emptied")
        page.until(lambda: any(word in page.tile("record-01").text
                               for word in ("draining", "removed")), "that it gets no new work")


def test_a_service_that_was_killed_is_seen_to_be_away_until_it_is_back(page, service):
    page.open(service.url)
    page.says("#state", "Ready")
    service.kill()
    page.says("#state", "The service is away since")
    service.start()
    page.says("#state", "Ready")
    page.says("#event-list", "missed 1 event or more")


def test_plug_ins_documents_and_versions_are_seen(page, service):
    page.open(service.url)
    page.says("#plugin-list", "recording in service")
    page.says("#document-list", "of 65,535 bytes")
    versions = Api(service.url).get("/api/v1/versions")
    page.says("#version-decision", str(versions["decision"]))


def test_the_service_gives_all_of_the_page_itself(page, service):
    page.open(service.url)
    page.says("#state", "Ready")
    asked = page.driver.execute_script(
        "return performance.getEntriesByType('resource').map((one) => one.name)")
    assert asked and all(one.startswith(service.url + "/") for one in asked)
    assert page.driver.get_log("browser") == []
