"""Seven hundred agents that keep their connections."""

import asyncio
import json
import os
import time

import requests
from api import ERROR, Api, validate
from cluster import await_settled
from service import SAMPLE, PATIENCE

AGENTS = 700
TYPES = ("MeroRecord", "MeroImgDev")
SECONDS = float(os.environ.get("SERVICE_TEST_LOAD_SECONDS", "10"))


def big_cluster(folder):
    """As many containers as there are agents, two on a node: more nodes do not fit the document."""
    nodes = [{"NodeID": f"n{i}", "NodeIP": f"10.0.{i // 250}.{i % 250}", "NodeIPType": 0,
              "NodeRole": 4, "DomainRole": 0, "Status": "Normal",
              "Container": [{"ContainerType": kind} for kind in TYPES]}
             for i in range(AGENTS // len(TYPES))]
    document = json.loads((SAMPLE / "cluster.json").read_text(encoding="utf-8"))
    document["ClusterNode"] = nodes
    folder.mkdir()
    (folder / "cluster.json").write_text(json.dumps(document, separators=(",", ":")),
                                         encoding="utf-8")
    return folder


async def request(reader, writer, port, body):
    writer.write(f"POST /api/v1/reports HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\n"
                 f"Content-Type: application/json\r\nContent-Length: {len(body)}\r\n\r\n".encode()
                 + body)
    head = await reader.readuntil(b"\r\n\r\n")
    length = next(int(line.split(b":")[1]) for line in head.lower().split(b"\r\n")
                  if line.startswith(b"content-length:"))
    return int(head.split(b" ")[1]), json.loads(await reader.readexactly(length))


async def live(port, number, limit, answers):
    """The agent of one container: reports as often as the service answers."""
    node, kind = f"n{number // len(TYPES)}", TYPES[number % len(TYPES)]
    reader, writer = await asyncio.open_connection("127.0.0.1", port)
    seen = 0
    while time.monotonic() < limit:
        body = json.dumps([
            {"input": "node_report", "node": node},
            {"input": "container_report", "node": node, "type": kind, "seen": seen,
             "total": {"disk": 400, "net": 1000}, "used": {"disk": 10, "net": 5}}]).encode()
        begun = time.monotonic()
        status, answer = await request(reader, writer, port, body)
        answers.append((status, time.monotonic() - begun, answer))
        if status == 200:
            seen = answer["answers"][1]["number"]
    writer.close()


async def live_all(port, answers):
    limit = time.monotonic() + SECONDS
    await asyncio.wait_for(
        asyncio.gather(*(live(port, i, limit, answers) for i in range(AGENTS))),
        SECONDS + 2 * PATIENCE)


def test_seven_hundred_agents_are_all_served(make_service, tmp_path):
    service = make_service(filled=False)
    done = service.run("import", "--yes", str(big_cluster(tmp_path / "files")))
    assert done.returncode == 0, done.stderr
    service.start()
    answers = []
    asyncio.run(live_all(service.port, answers))
    api = Api(service.url)
    await_settled(api)
    refused = [answer for status, _, answer in answers if status != 200]
    for answer in refused:
        validate(ERROR, answer)
        assert answer["error"]["name"] == "queue_full"
    assert len(answers) - len(refused) >= AGENTS, "each was answered at least once"
    assert all(one["result"] == "done" for status, _, answer in answers if status == 200
               for one in answer["answers"])
    nodes = api.get("/api/v1/nodes")["nodes"]
    assert len(nodes) == AGENTS // len(TYPES) and all(node["online"] for node in nodes)
    assert not [one for one in api.events() if one["event"] == "offline"]
    times = sorted(took for _, took, _ in answers)
    print(f"{len(answers) * 2 / SECONDS:.0f} reports a second, 99th percentile "
          f"{times[len(times) * 99 // 100] * 1000:.1f} ms, {len(refused)} refused")
    assert requests.get(service.url + "/healthz", timeout=PATIENCE).status_code == 200
