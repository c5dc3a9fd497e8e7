"""A service that is killed under load, again and again: what it acknowledged holds."""

import itertools
import os
import random
import threading
import time
from ipaddress import ip_address

import requests
from api import Api
from cluster import RECORDING, Agents, await_settled, where

KILLS = int(os.environ.get("SERVICE_TEST_KILLS", "3"))
WORKERS = 4


class Load:
    """Jobs and changes from several connections. Keeps what was acknowledged."""

    def __init__(self, url, life):
        self.url = url
        self.life = life
        self.jobs = set()
        self.address = ""  # of a CG entry that changes
        self.master = 0
        self.faults = []
        self.over = threading.Event()
        self.threads = [threading.Thread(target=self.work, args=(one,)) for one in range(WORKERS)]

    def __enter__(self):
        for one in self.threads:
            one.start()
        return self

    def __exit__(self, *_):
        self.over.set()
        for one in self.threads:
            one.join()
        assert not self.faults, self.faults[0]

    def work(self, worker):
        api = Api(self.url)
        try:
            for number in itertools.count():
                if self.over.is_set():
                    return
                self.send(api, f"{self.life}-{worker}-{number}", number, worker)
        except requests.RequestException:
            pass  # killed
        except AssertionError as fault:
            self.faults.append(fault)

    def send(self, api, name, number, worker):
        if api.job(RECORDING, name, Net=1, Disk=1).status_code == 200:
            self.jobs.add(name)
        if worker == 0:
            address = f"10.{self.life}.{number // 256}.{number % 256}"
            if api.input("cg_update", node="record-01", float_code="float-01",
                         float_ip=address).status_code == 200:
                self.address = address
        if worker == 1:
            if api.input("next_master_version").status_code == 200:
                self.master += 1


def address_of_entry(api):
    return next(one["float_ip"] for one in api.get("/api/v1/cgs")["cgs"]
                if one["float_code"] == "float-01")


def test_what_was_acknowledged_outlives_every_kill(make_service, store):
    service = make_service(store).start()
    jobs, address, masters = set(), "", 0
    first_master = Api(service.url).get("/api/v1/versions")["master"]
    with Agents(service.url):
        await_settled(Api(service.url))
        for life in range(KILLS):
            with Load(service.url, life) as load:
                time.sleep(random.uniform(0.2, 1.5))
                service.kill()
            jobs |= load.jobs
            address = load.address or address
            masters += load.master
            service.start()
            api = Api(service.url)
            places = where(api, "MeroRecord")
            assert jobs <= set(places), "every acknowledged job is there"
            assert not [task for task, nodes in places.items() if len(nodes) != 1], "and once"
            assert ip_address(address_of_entry(api)) >= ip_address(address or "0.0.0.0")
            assert api.get("/api/v1/versions")["master"] >= first_master + masters
    assert jobs and address and masters
    print(f"{KILLS} kills: {len(jobs)} jobs and {masters} next master versions were acknowledged, "
          "none is lost")
