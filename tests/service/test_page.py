"""The page as a person sees it, beside a cluster that a test makes up."""

import json
import time
from pathlib import Path

import jsonschema
import pytest
from browser import driver, page  # noqa: F401
from page_stub import StubCluster
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.select import Select

OPENAPI = json.loads((Path(__file__).resolve().parents[2] / "doc/openapi.json").read_text())


@pytest.fixture
def cluster():
    one = StubCluster().start()
    yield one
    one.stop()


def shift(node, waiting):
    return {"node": node, "type": "MeroRecord", "cause": "has not reported",
            "started": int(time.time()), "waiting": waiting, "next_try": int(time.time()) + 10,
            "given_up": False, "draining": False}


@pytest.fixture
def url(cluster):
    return cluster.url


def check(body, name):
    """Is the body what the service's description calls by that name?"""
    jsonschema.Draft202012Validator(
        {"$ref": f"#/components/schemas/{name}", "components": OPENAPI["components"]}).validate(body)


def test_the_made_up_cluster_speaks_as_the_service_does(cluster):
    cluster.silence("record-002")
    cluster.shifts = [shift("record-002", 2)]
    cluster.plugins[0].update(failure="it has no entry point", failures={"Schedule": 1})
    for path, name in (("cluster", "ClusterGlance"), ("nodes", "Nodes"), ("versions", "Versions"),
                       ("containers", "Containers"), ("plugins", "Plugins"), ("events", "Events"),
                       ("documents", "Documents"),
                       ("containers/MeroRecord/record-003/tasks", "Tasks")):
        status, body = cluster.answer(f"/api/v1/{path}", {})
        assert status == 200
        check(body, name)
    for name in ("Node", "Container"):
        for one in cluster.answer(f"/api/v1/{name.lower()}s", {})[1][f"{name.lower()}s"]:
            check(one, name)
    check(cluster.events[0], "Event")
    cluster.not_ready = "starting"
    status, body = cluster.answer("/api/v1/nodes", {})
    assert status == 503
    check(body, "Error")


def test_each_node_is_a_tile_with_its_containers_load_and_tasks(page, url):
    page.open(url)
    assert len(page.tiles()) == 6
    text = page.tile("record-003").text
    for shown in ("online", "MeroRecord", "RecordPlan", "3 tasks", "39 %", "87 %"):
        assert shown in text
    bar = page.tile("record-003").find_element(By.CSS_SELECTOR, ".bar.disk")
    assert bar.find_element(By.TAG_NAME, "i").size["width"] == pytest.approx(
        0.39 * bar.size["width"], abs=2)


def test_what_happens_is_seen_where_it_happened_and_told(page, cluster, url):
    page.open(url)
    page.says("#state", "Ready")
    cluster.silence("record-002")
    page.tile_says("record-002", "offline")
    page.says("#count-nodes", "6 (1 offline)")
    page.says("h1", "Cluster Main")
    assert page.driver.title == "(1 offline) Main"
    page.says("#event-list", "record-002 falls silent: has not reported")
    assert "online" in page.tile("record-001").text


def test_a_node_that_joins_gets_a_tile_and_one_that_left_has_none(page, cluster, url):
    page.open(url)
    cluster.join("zone-9", 9)
    del cluster.nodes["record-001"]
    cluster.happen("joined", "joins", node="zone-9")
    page.until(lambda: page.tile("zone-9") and not page.tile("record-001"), "another node")


def test_shifts_are_seen_as_they_happen(page, cluster, url):
    page.open(url)
    page.says("#shifts", "Nothing is shifted")
    cluster.shifts = [shift("record-002", 2)]
    cluster.containers["MeroRecord", "record-002"]["shifting"] = True
    cluster.happen("shifted", "takes over 2 tasks from record-002", node="record-001")
    page.says("#shift-list", "record-002 MeroRecord waits for room")
    page.says("#shift-list", "2 tasks waiting")
    page.says("#move-list", "record-001 takes over 2 tasks from record-002")
    page.says("#count-waiting", "2")
    page.tile_says("record-002", "shifting")
    cluster.shifts = []
    cluster.happen("shift_ended", "gives no more work away", node="record-002")
    page.says("#shifts", "Nothing is shifted")


def test_what_keeps_a_container_from_work_is_said(page, cluster, url):
    cluster.containers["MeroRecord", "record-001"]["processes"] = {"recorder": 0, "writer": 1}
    cluster.containers["RecordPlan", "record-002"]["fault_shift"] = True
    cluster.containers["RecordPlan", "record-003"].update(online=False, shifting=True)
    cluster.containers["RecordPlan", "record-004"]["member_status"] = "removed"
    page.open(url)
    page.tile_says("record-001", "a process is not running")
    page.tile_says("record-002", "gets no new work")
    page.tile_says("record-003", "offline, its work is being shifted")
    page.tile_says("record-004", "removed")
    assert "in part" in page.tile("record-001").text


def test_types_that_are_held_are_said_loudly(page, cluster, url):
    page.open(url)
    assert not page.find("#held").is_displayed()
    cluster.held = ["MeroRecord"]
    cluster.happen("held", "does not give its work away", type="MeroRecord")
    page.until(lambda: "MeroRecord" in page.find("#held").text, "the held type")


def test_the_log_has_the_newest_event_first_and_can_be_held(page, cluster, url):
    page.open(url)
    cluster.happen("settled", "has settled")
    page.says("#event-list > li:first-child", "has settled")
    page.find("#events-hold").click()
    cluster.happen("promoted", "has the master of the centre database", node="record-001")
    page.says("#events-hold", "1 new")
    assert "centre database" not in page.find("#event-list").text
    page.find("#events-hold").click()
    page.says("#event-list > li:first-child", "record-001 has the master of the centre database")


def test_events_from_before_the_page_was_opened_are_there(page, cluster, url):
    cluster.happen("loaded", "is loaded")
    page.open(url)
    page.says("#event-list", "cluster is loaded")


def test_health_of_plug_ins_is_shown(page, cluster, url):
    page.open(url)
    page.says("#plugin-list", "image in service")
    cluster.plugins[1].update(out_of_service=True, failures={"Schedule": 3})
    cluster.plugins[0]["failure"] = "it has no entry point"
    cluster.happen("plugin_out", "has a plug-in out of service")
    page.says("#plugin-list", "image out of service")
    page.says("#plugin-list", "Schedule failed 3 times")
    page.says("#plugin-list", "recording not loaded")


def test_documents_stand_beside_their_limits(page, cluster, url):
    page.open(url)
    page.says("#document-list", "21,845 of 65,535 bytes, 33 %")
    cluster.documents["center_db"] = 500
    cluster.decision = 4711
    cluster.happen("document_reloaded", "has a new document")
    page.says("#document-list", "center db nearly full")
    cluster.document_faults = {"cg_list": {"fault": "line 3: is no JSON"}}
    cluster.happen("document_unreadable", "cannot be read")
    page.says("#document-list", "cg list cannot be read")
    page.says("#document-list", "line 3: is no JSON")
    page.says("#version-decision", "4711")


def test_nodes_are_filtered_by_text_and_by_state(page, cluster, url):
    cluster.nodes["record-004"]["online"] = False
    cluster.nodes["record-005"]["draining"] = True
    cluster.containers["MeroRecord", "record-005"]["shifting"] = True
    page.open(url)
    text = page.find("#filter-text")
    text.send_keys("RECORD-00")
    page.says("#filter-count", "6 of 6 nodes")
    text.send_keys("4")
    page.says("#filter-count", "1 of 6 nodes")
    assert page.tile("record-004") and not page.tile("record-001")
    text.send_keys(Keys.CONTROL, "a", Keys.NULL, "no such node")
    page.until(lambda: page.find("#node-none").is_displayed(), "that there is none")
    text.send_keys(Keys.CONTROL, "a", Keys.NULL, Keys.BACKSPACE)
    Select(page.find("#filter-state")).select_by_visible_text("needs attention")
    page.says("#filter-count", "2 of 6 nodes")
    Select(page.find("#filter-state")).select_by_visible_text("draining")
    page.says("#filter-count", "1 of 6 nodes")
    assert page.tile("record-005")


def test_the_keyboard_reaches_everything(page, url):
    page.open(url)
    page.find("#filter-state").send_keys(Keys.TAB)
    assert "record-001" in page.focused().text
    page.press(Keys.ARROW_RIGHT)
    assert "record-002" in page.focused().text
    page.press(Keys.END)
    assert "record-006" in page.focused().text
    page.press(Keys.HOME, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT, Keys.ENTER)
    page.tile_says("record-003", "192.0.2.3")
    page.tile_says("record-003", "record-003-RecordPlan-2")
    assert page.focused().get_attribute("aria-expanded") == "true"
    page.press(Keys.ENTER)
    page.until(lambda: "192.0.2.3" not in page.tile("record-003").text, "that it is closed")
    page.press(Keys.TAB)
    assert page.focused().get_attribute("id") == "events-hold"


def test_details_that_are_open_go_with_the_time(page, cluster, url):
    page.open(url)
    page.tile("record-001").find_element(By.CSS_SELECTOR, ".head").click()
    page.tile_says("record-001", "record-001-RecordPlan-0")
    cluster.tasks["RecordPlan", "record-001"] = ["another-task"]
    cluster.happen("placed", "is given another-task", node="record-001")
    page.tile_says("record-001", "another-task")


def test_a_screen_reader_finds_its_way(page, url):
    page.open(url)
    for selector, role in (("header", "banner"), ("main", "main"), ("nav", "navigation"),
                           ("form", "search"), ("#event-list", "log"), ("#state", "status")):
        assert page.find(selector).aria_role == role
    for section in page.all("section"):
        assert section.accessible_name
    assert page.find("#event-list").get_attribute("aria-live") == "polite"
    for control in page.all("input, select, button"):
        assert control.accessible_name, control.get_attribute("outerHTML")
    head = page.tile("record-001").find_element(By.CSS_SELECTOR, ".head")
    assert head.accessible_name == "record-001 online"


def test_a_service_that_went_is_said_and_one_that_is_back_is_shown(page, cluster, url):
    page.open(url)
    page.says("#state", "Ready")
    cluster.stop()
    page.says("#state", "The service is away since")
    assert page.tile("record-001"), "what was known stays to be seen"
    cluster.nodes["record-001"]["online"] = False
    cluster.happen("offline", "falls silent", node="record-001")
    cluster.start()
    page.says("#state", "Ready")
    page.tile_says("record-001", "offline")
    page.says("#event-list", "record-001 falls silent")


def test_a_service_that_began_anew_tells_its_events_from_the_first(page, cluster, url):
    for _ in range(5):
        cluster.happen("settled", "has settled")
    page.open(url)
    page.says("#event-list", "has settled")
    assert "missed" not in page.find("#event-list").text
    cluster.stop()
    page.says("#state", "away")
    cluster.begin_anew()
    cluster.happen("loaded", "is loaded anew")
    cluster.start()
    page.says("#event-list", "is loaded anew")
    page.says("#event-list", "missed 1 event or more")


def test_why_a_service_is_not_ready_is_said(page, cluster, url):
    page.open(url)
    cluster.not_ready = "the cluster document cannot be read"
    page.says("#state", "Not ready: the cluster document cannot be read")
    cluster.not_ready = ""
    cluster.settling = True
    page.says("#state", "settling")


def test_names_are_texts_and_nothing_else(page, cluster, url):
    name = "<img src=x onerror=document.title='taken'>&amp;"
    cluster.join(name, 1)
    cluster.happen("joined", name, node=name)
    page.open(url)
    page.says("#event-list", name)
    page.until(lambda: page.tile(name), "the name as it is")
    assert not page.all("#node-list img")
    assert page.driver.title == "Main"


def test_nothing_is_asked_from_elsewhere_and_nothing_goes_wrong(page, url):
    page.open(url)
    page.says("#state", "Ready")
    asked = page.driver.execute_script(
        "return performance.getEntriesByType('resource').map((one) => one.name)")
    assert asked and all(one.startswith(url + "/") for one in asked)
    assert page.driver.get_log("browser") == []


def test_of_700_nodes_only_the_one_that_changed_is_touched(page, driver):
    cluster = StubCluster(700).start()
    try:
        page.open(cluster.url)
        page.says("#filter-count", "700 of 700 nodes")
        driver.execute_script("""
            window.touched = new Set();
            new MutationObserver((changes) => changes.forEach(({ target }) => {
                const element = target.closest ? target : target.parentElement;
                window.touched.add(element.closest(".tile")?.id || "the list itself");
            })).observe(document.getElementById("node-list"),
                { subtree: true, childList: true, attributes: true, characterData: true });""")
        cluster.silence("record-500")
        page.says("#count-nodes", "1 offline")
        page.says("#event-list", "record-500")
        assert driver.execute_script("return [...window.touched]") == ["node record-500"]
    finally:
        cluster.stop()


@pytest.fixture(params=["light", "dark"])
def scheme(request, driver):
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": "prefers-color-scheme", "value": request.param}]})
    yield request.param
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})


def luminance(color):
    parts = [int(part) / 255 for part in color[color.index("(") + 1:-1].split(",")[:3]]
    red, green, blue = (part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4
                        for part in parts)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(one, other):
    low, high = sorted((luminance(one), luminance(other)))
    return (high + 0.05) / (low + 0.05)


def test_every_word_can_be_read_in_both_schemes(page, cluster, url, scheme):
    cluster.nodes["record-002"]["online"] = False
    cluster.nodes["record-003"]["draining"] = True
    cluster.containers["MeroRecord", "record-004"]["shifting"] = True
    cluster.plugins[1]["out_of_service"] = True
    page.open(url)
    page.tile_says("record-004", "shifting")
    card = page.find(".tile").value_of_css_property("background-color")
    assert (luminance(card) < 0.1) == (scheme == "dark")
    for element in page.all(".tile .head .word, .tile .name, .tile .tasks, .load, "
                            "#plugin-list .word, #plugin-list .text, time, #figures dt"):
        assert contrast(element.value_of_css_property("color"), card) >= 4.5, element.text


@pytest.fixture
def phone(driver):
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": 360, "height": 780, "deviceScaleFactor": 1, "mobile": True})
    yield
    driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


@pytest.mark.usefixtures("phone")
def test_a_phone_shows_all_of_it_without_scrolling_sideways(page, cluster, url):
    cluster.join("a-name-of-a-node-that-is-as-long-as-an-id-may-be-" + "x" * 79, 5)
    cluster.happen("joined", "joins: " + "y" * 200, node="record-001")
    page.open(url)
    page.says("#event-list", "yyy")
    page.tile("record-001").find_element(By.CSS_SELECTOR, ".head").click()
    page.tile_says("record-001", "192.0.2.1")
    assert page.driver.execute_script("return document.documentElement.scrollWidth") == 360
    for selector in (".tile", "#shifts", "#events", "#plugins", "#documents"):
        box = page.find(selector).rect
        assert box["x"] >= 0 and box["x"] + box["width"] <= 360
