"""A service whose process is stopped for a while, and goes on."""

import signal
import time

from api import Api
from cluster import Agents, await_settled
from service import await_true

SILENCE = 6  # seconds


def has_watched_nobody(api):
    return any(event["event"] == "settling" and "nobody watched" in event["cause"]
               for event in api.events())


def test_nobody_falls_silent_because_the_service_slept(make_service):
    """For longer than the silence, and shorter than what makes no difference to a long one."""
    service = make_service(settings=("--silence", str(SILENCE))).start()
    api = Api(service.url)
    with Agents(service.url):
        await_settled(api)
        service.signal(signal.SIGSTOP)
        time.sleep(SILENCE + 2)
        service.signal(signal.SIGCONT)
        await_true(lambda: has_watched_nobody(api), "settles anew")
        await_true(lambda: not api.get("/api/v1/cluster")["settling"], "settled anew")
    assert not [event for event in api.events() if event["event"] == "offline"]
