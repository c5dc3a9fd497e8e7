"""The figures of a running service."""

import re
import subprocess

import raw
import requests
from cluster import RECORDING, Agents, await_settled
from service import ROOT

NAME = re.compile(r"cluster_[a-z_]+")


def figures(service):
    return requests.get(service.url + "/metrics", timeout=60).text


def names_of(text):
    """The families that the text has samples of."""
    return set(re.findall(r"^# TYPE (\S+)", text, re.MULTILINE))


def test_prometheus_takes_the_figures_as_they_are(service, api):
    with Agents(service.url):
        await_settled(api)
        api.job(RECORDING, "camera-1", Disk=10)
        text = figures(service)
    done = subprocess.run(["promtool", "check", "metrics"], input=text, text=True,
                          capture_output=True, timeout=60, check=False)
    assert done.returncode == 0, done.stdout + done.stderr


def test_what_happened_is_in_the_figures(service, api):
    with Agents(service.url):
        await_settled(api)
        api.job(RECORDING, "camera-1", "camera-2", Disk=10)
        api.job(4711, "camera-3")
        lines = figures(service).splitlines()
    assert 'cluster_placements_total{by="job"} 2' in lines
    assert 'cluster_task_results_total{result="placed"} 2' in lines
    assert 'cluster_inputs_total{kind="job",result="done"} 1' in lines
    assert 'cluster_inputs_total{kind="job",result="refused"} 1' in lines
    assert 'cluster_refusals_total{reason="no_plugin"} 1' in lines
    assert 'cluster_tasks{type="MeroRecord"} 2' in lines
    assert "cluster_nodes 24" in lines and "cluster_ready 1" in lines


def test_requests_that_are_no_input_count_as_refused_too(service):
    assert raw.ask(service, "GET", "/api/v1/nodes", Host="evil.example").status == 403
    assert raw.ask(service, "POST", "/api/v1/reports", b"{}", Content_Type="text/plain").status == 415
    lines = figures(service).splitlines()
    assert 'cluster_refusals_total{reason="foreign_host"} 1' in lines
    assert 'cluster_refusals_total{reason="not_json"} 1' in lines


def test_every_figure_is_explained(service):
    text = (ROOT / "doc/watching.md").read_text(encoding="utf-8")
    rows = [line for line in text.splitlines() if line.startswith("| `cluster_")]
    explained = set(NAME.findall("\n".join(row.split("|")[1] for row in rows)))
    sources = [ROOT / "src/cluster_service/serve" / name
               for name in ("metrics.cpp", "view_metrics.cpp")]
    there = set(re.findall(r'"(cluster_[a-z_]+)"',
                           "".join(source.read_text(encoding="utf-8") for source in sources)))
    assert explained == there
    assert names_of(figures(service)) <= explained
