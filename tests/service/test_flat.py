"""A service under a steady load needs no more memory and handles as time goes on."""

import os
import time
from pathlib import Path

from api import Api
from cluster import RECORDING, Agents, await_settled

SECONDS = float(os.environ.get("SERVICE_TEST_SOAK_SECONDS", "10"))
SLACK_KIB = 16 * 1024
SLACK_HANDLES = 8


def use_of(process):
    """Resident memory in KiB, and open handles."""
    status = Path(f"/proc/{process.pid}/status").read_text(encoding="utf-8")
    memory = next(int(line.split()[1]) for line in status.splitlines() if line.startswith("VmRSS:"))
    return memory, len(os.listdir(f"/proc/{process.pid}/fd"))


def round_of(service, number):
    """Jobs that come and go, questions, a client that does not come back, and one that is rude."""
    api = Api(service.url)
    names = [f"task-{number}-{i}" for i in range(20)]
    assert api.job(RECORDING, *names, Net=1, Disk=1).status_code == 200
    api.get("/api/v1/containers")
    api.get("/api/v1/events")
    api.ask("GET", "/metrics")
    api.refused("POST", "/api/v1/reports", data=b"[" * 1000)
    api.ask("GET", "/api/v1/events/stream", stream=True).close()
    api.done("end_tasks", type="MeroRecord", tasks=names)
    api.session.close()


def test_memory_and_handles_are_flat(service, api):
    with Agents(service.url, pause=0.1):
        await_settled(api)
        number = 0

        def run_until(limit):
            nonlocal number
            while time.monotonic() < limit:
                round_of(service, number)
                number += 1

        begun = time.monotonic()
        run_until(begun + SECONDS / 2)  # logs of bounded length fill up meanwhile
        memory, handles = use_of(service.process)
        run_until(begun + SECONDS)
        later_memory, later_handles = use_of(service.process)
    print(f"{number} rounds; at half time {memory} KiB and {handles} handles, in the end "
          f"{later_memory} KiB and {later_handles}")
    assert later_memory < memory + SLACK_KIB + memory // 10
    assert later_handles <= handles + SLACK_HANDLES
