"""What is no request, or is meant ill, gets a named error and leaves the cluster as it was."""

import json
import resource
import time

import pytest
import raw
from service import PATIENCE, await_true
from undisturbed import shared, unchanged  # noqa: F401

REPORTS = "/api/v1/reports"
GOOD = json.dumps({"input": "node_report", "node": "record-01"}).encode()
CONNECTIONS = 2000  # that the service takes


def name_and_status(answer):
    return answer.status, answer.error["name"]


@pytest.mark.parametrize("body", [
    b" ", b"nonsense", b"{", b"[", b'{"input":', GOOD[:-1], GOOD + b"x", GOOD + GOOD,
    b'{"input": "node_report", "node": "record-01", "node": "record-02"}',
    b"{'input': 1}", b"[1,]", b"// no\n{}", b"NaN", b"\x00", b"\xff\xfe\x00",
    b'{"input": "node_report", "node": "\xff\xfe"}',
    b'{"input": "node_report", "node": "\xed\xa0\x80"}',
    b'{"input": "node_report", "node": "\\ud800"}',
    b"[" * 1000 + b"]" * 1000, b'{"a":' * 1000 + b"1" + b"}" * 1000, b"[" * 1000000,
    b'{"input": "node_report", "node": "' + b"x" * (10 << 20),
    b'{"input": "node_report", "node": "record-01", "total": {"disk": 1e400}, "used": {}}',
], ids=lambda body: repr(body[:40]))
def test_what_is_no_json_is_refused(shared, body):
    answer = raw.ask(shared, "POST", REPORTS, body, Content_Type="application/json",
                     Content_Length=len(body))
    assert name_and_status(answer) == (400, "bad_json")


@pytest.mark.parametrize("body", [
    b"", b"null", b"true", b"1", b'"text"', b"{}", b'{"input": null}', b'{"input": "nonsense"}',
    b'{"input": "node_report"}', b'{"input": "node_report", "node": 1}',
    b'{"input": "node_report", "node": ""}', b'{"input": "node_report", "node": null}',
    b'{"input": "node_report", "node": []}',
    b'{"input": "node_report", "node": "%s"}' % (b"x" * 129),
    b'{"input": "node_report", "node": "a\\u0000b"}',
    b'{"input": "node_report", "node": "record-01", "total": {"disk": 1.5}, "used": {}}',
    b'{"input": "node_report", "node": "record-01", "total": {"disk": 99999999999}, "used": {}}',
    b'{"input": "node_report", "node": "record-01", "total": {"disk": "1"}, "used": {}}',
    b'{"input": "node_report", "node": "record-01", "total": []}',
    b'{"input": "node_report", "node": "record-01", "total": {}}',
    b'{"input": "node_report", "node": "record-01", "total": {"disk": -1}, "used": {}}',
    b'{"input": "node_report", "node": "record-01", "total": {"disk": -99999999999}, "used": {}}',
    b'{"input": "nvr_report", "nvr": "nvr-1", "total": 1, "used": -1}',
    b'{"input": "container_report", "node": "record-01", "type": "MeroRecord", "total": {},'
    b' "used": {"net": -1}}',
    b'{"input": "container_report", "node": "record-01", "type": "MeroRecord", "seen": -1}',
    b'{"input": "container_report", "node": "record-01", "type": "MeroRecord",'
    b' "seen": 18446744073709551616}',
    b'{"input": "container_report", "node": "record-01", "type": "MeroRecord",'
    b' "tasks": [{"id": "camera-1", "costs": {"disk": -1}}]}',
    b'{"input": "container_report", "node": "record-01", "type": "MeroRecord",'
    b' "tasks": [{"id": "camera-1"}, {"id": "camera-1"}]}',
    b'{"input": "container_report", "node": "record-01", "type": "MeroRecord", "tasks": {}}',
    b'{"input": "container_report", "node": "record-01", "type": "MeroRecord", "tasks": [1]}',
    b'{"input": "tick"}', b'{"input": "job"}',
], ids=lambda body: repr(body[:90]))
def test_what_is_no_report_is_refused(shared, body):
    answer = raw.ask(shared, "POST", REPORTS, body, Content_Type="application/json",
                     Content_Length=len(body))
    assert name_and_status(answer) == (400, "bad_input")


@pytest.mark.parametrize("body, name", [
    (b'{"input": "node_report", "node": "nobody"}', "unknown_node"),
    (b'{"input": "container_report", "node": "nobody", "type": "MeroRecord"}', "unknown_container"),
    (b'{"input": "container_report", "node": "record-01", "type": "Nothing"}', "unknown_container"),
], ids=repr)
def test_a_report_from_nobody_is_refused(shared, body, name):
    assert name_and_status(raw.ask(shared, "POST", REPORTS, body)) == (404, name)


@pytest.mark.parametrize("size, status, name", [
    (10 << 20, 400, "bad_input"), (20 << 20, 413, "body_too_large")])
def test_a_large_body_is_refused(shared, size, status, name):
    body = b'{"input": "node_report", "node": "' + b"x" * size + b'"}'
    assert name_and_status(raw.ask(shared, "POST", REPORTS, body)) == (status, name)


def test_a_list_of_too_many_reports_is_refused(shared):
    body = b"[" + b",".join([GOOD] * 100001) + b"]"
    assert name_and_status(raw.ask(shared, "POST", REPORTS, body)) == (413, "too_much")


def test_a_large_body_in_chunks_is_refused(shared):
    with raw.Connection(shared) as one:
        one.request("POST", REPORTS, Content_Type="application/json", Transfer_Encoding="chunked")
        try:
            for _ in range(20):
                one.send(b"100000\r\n" + b" " * (1 << 20) + b"\r\n")
            one.send(b"0\r\n\r\n")
        except ConnectionError:
            pass
        answer = one.receive()
    assert name_and_status(answer) == (413, "body_too_large")


@pytest.mark.parametrize("content_type", [
    None, "text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=x",
    "text/json", "application/jsonp"])
def test_a_body_that_is_not_declared_as_json_is_refused(shared, content_type):
    answer = raw.ask(shared, "POST", REPORTS, GOOD, Content_Type=content_type)
    assert name_and_status(answer) == (415, "not_json")


@pytest.mark.parametrize("host", ["evil.example", "evil.example:80", "127.0.0.1.evil.example",
                                  "192.0.2.1", "", "127.0.0.1:1", "[::1", "localhost.evil"])
@pytest.mark.parametrize("method", ["GET", "POST"])
def test_a_request_for_another_host_is_refused(shared, method, host):
    path, body = (REPORTS, GOOD) if method == "POST" else ("/api/v1/nodes", b"")
    answer = raw.ask(shared, method, path, body, Host=host)
    assert name_and_status(answer) == (403, "foreign_host")


def test_our_own_name_is_taken(shared):
    for host in (f"127.0.0.1:{shared.port}", f"localhost:{shared.port}"):
        assert raw.ask(shared, "GET", "/api/v1/nodes", Host=host).status == 200


@pytest.mark.parametrize("path", ["/api/v1/nothing", "/nothing", "/api", "/api/v2/nodes", "//",
                                  "/api/v1/nodes/", "/../etc/passwd", "/%00",
                                  "/api/v1/" + "x" * 3000])
def test_a_path_with_nothing_at_it_is_said(shared, path):
    assert name_and_status(raw.ask(shared, "GET", path)) == (404, "unknown_path")


@pytest.mark.parametrize("path", ["/api/v1/nodes/%zz", "/api/v1/containers/MeroRecord/%ff",
                                  "/api/v1/nodes/%00", "/api/v1/nodes/%"])
def test_an_id_in_a_path_that_is_none_is_refused(shared, path):
    assert name_and_status(raw.ask(shared, "GET", path)) == (400, "bad_request")


def test_a_long_url_is_refused(shared):
    answer = raw.ask(shared, "GET", "/api/v1/nodes?node=" + "x" * 10000)
    assert name_and_status(answer) == (414, "url_too_long")


@pytest.mark.parametrize("method", ["DELETE", "PUT", "PATCH", "OPTIONS", "BREW", "TRACE"])
def test_a_method_that_the_path_does_not_take_is_said(shared, method):
    for path in ("/api/v1/nodes", "/"):
        answer = raw.ask(shared, method, path)
        assert name_and_status(answer) == (405, "wrong_method")
        assert "GET" in answer.headers["allow"]


@pytest.mark.parametrize("text", [
    b"GET\r\n\r\n", b"nonsense\r\n\r\n", b"\x16\x03\x01\x02\x00\r\n\r\n",
    b"GET / HTTP/9.9\r\n\r\n", b"GET / HTTP/1.1\r\n: x\r\n\r\n",
    b"POST " + REPORTS.encode() + b" HTTP/1.1\r\nHost: x\r\nContent-Length: -1\r\n\r\n",
    b"POST " + REPORTS.encode() + b" HTTP/1.1\r\nHost: x\r\nContent-Length: 99999999999999999999"
    b"\r\n\r\n",
])
def test_what_is_no_request_ends_its_connection(shared, text):
    """With an error, or without a word, but never with a success."""
    with raw.Connection(shared) as one:
        one.send(text)
        one.socket.shutdown(1)
        answer = one.receive()
    assert answer is None or answer.status >= 400


@pytest.mark.parametrize("number, size", [(90, 100), (150, 100), (9, 1000), (1, 30000)])
def test_a_header_above_the_limit_is_refused(shared, number, size):
    headers = {f"X-{i}": "x" * size for i in range(number)}
    answer = raw.ask(shared, "POST", REPORTS, GOOD, **headers)
    assert name_and_status(answer) == (431, "header_too_large")


def test_a_flood_of_headers_is_refused(shared):
    """Without a name: so much is not even kept until it could be looked at."""
    with raw.Connection(shared) as one:
        try:
            one.send(f"GET /api/v1/nodes HTTP/1.1\r\nHost: 127.0.0.1:{shared.port}\r\n")
            for i in range(100000):
                one.send(f"X-Flood-{i}: {'x' * 100}\r\n")
            one.send("\r\n")
        except ConnectionError:
            pass
        answer = one.receive()
    assert answer is None or (answer.status == 431 and b"xxx" not in answer.body)


def test_a_half_request_that_stalls_disturbs_nobody(shared):
    stalled = [raw.Connection(shared) for _ in range(50)]
    try:
        for i, one in enumerate(stalled):
            one.send(f"POST {REPORTS} HTTP/1.1\r\nHost: 127.0.0.1:{shared.port}\r\n")
            if i % 2 == 0:
                one.send("Content-Type: application/json\r\nContent-Length: 1000\r\n\r\n[")
        assert raw.ask(shared, "GET", "/api/v1/nodes").status == 200
    finally:
        for one in stalled:
            one.socket.close()


def test_a_half_request_ends_after_its_time(shared):
    head = f"POST {REPORTS} HTTP/1.1\r\nHost: 127.0.0.1:{shared.port}\r\n"
    with raw.Connection(shared, PATIENCE + 60) as first, raw.Connection(shared) as second:
        first.send(head)
        second.send(head + "Content-Type: application/json\r\nContent-Length: 1000\r\n\r\n[")
        for one in (first, second):
            assert name_and_status(one.receive()) == (408, "too_slow")


def test_a_thousand_idle_connections_disturb_nobody(shared):
    idle = [raw.Connection(shared) for _ in range(1000)]
    try:
        begun = time.monotonic()
        assert raw.ask(shared, "GET", "/api/v1/nodes").status == 200
        assert raw.ask(shared, "POST", REPORTS, GOOD.replace(b"record-01", b"nobody")).status == 404
        assert time.monotonic() - begun < PATIENCE
        idle[0].request("GET", "/api/v1/nodes")
        assert idle[0].receive().status == 200
    finally:
        for one in idle:
            one.socket.close()


def test_more_connections_than_the_service_takes_are_told_so_and_leave_room_afterwards(shared):
    limits = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (limits[1], limits[1]))
    many = []
    try:
        for _ in range(CONNECTIONS + 10):
            many.append(raw.Connection(shared))
        many[-1].request("GET", "/api/v1/nodes")
        assert name_and_status(many[-1].receive()) == (503, "too_many_connections")
    finally:
        for one in many:
            one.socket.close()
        resource.setrlimit(resource.RLIMIT_NOFILE, limits)
    await_true(lambda: raw.ask(shared, "GET", "/readyz").status == 200, "there is room again")
