"""The command that lives a story with a service."""

import json
import subprocess

import pytest
from service import PROGRAM

STORY = [
    {"story": 1, "day": "2026-03-04"},
    {"time": "06:00:00", "input": "node_report", "node": "record-01", "every": 30,
     "until": "09:00:00"},
    {"time": "06:00:00", "input": "container_report", "node": "record-01", "type": "MeroRecord",
     "total": {"disk": 400, "net": 1000}, "used": {"disk": 10, "net": 5}, "every": 30,
     "until": "09:00:00"},
    {"time": "06:02:00", "expect": {"event": "settled"}},
    {"time": "06:02:00", "expect": {"container": "MeroRecord", "node": "record-02",
                                    "online": False}},
    {"time": "07:00:00", "input": "job", "node": "center-01", "job_type": 1001,
     "xml": "<TaskList><Task><TaskID>camera-1</TaskID><Disk>20</Disk></Task></TaskList>",
     "expect": {"result": "done", "tasks": [{"task": "camera-1", "node": "record-01"}]}},
    {"time": "07:01:00", "expect": {"container": "MeroRecord", "node": "record-01", "tasks": 1}},
    {"time": "08:00:00", "input": "leave", "node": "nobody",
     "expect": {"fault": {"name": "unknown_node"}}},
]
SETTINGS = ("--silence", "3")


@pytest.fixture
def live(make_service, tmp_path):
    """Lets agents live the story with a service; the command when it has ended."""
    def run(story, *options):
        service = make_service(settings=SETTINGS).start()
        file = tmp_path / "story.jsonl"
        file.write_text("\n".join(map(json.dumps, story)), encoding="utf-8")
        return subprocess.run([PROGRAM, "agents", "--server", service.url, "--story", file,
                               *options], capture_output=True, text=True, timeout=120, check=False)
    return run


def test_a_story_that_comes_true_is_told_and_ends_well(live):
    done = live(STORY)
    assert done.returncode == 0, done.stdout + done.stderr
    assert "before: containers (34)" in done.stdout
    assert "after: containers (34)" in done.stdout
    assert "is given camera-1" in done.stdout
    assert "all 5 expectations were met" in done.stdout


def test_an_answer_that_is_another_than_expected_is_told_with_its_line(live):
    done = live(STORY + [{"time": "08:10:00", "input": "promote", "node": "nobody",
                          "expect": {"result": "done"}}])
    assert done.returncode == 1
    assert f"!! line {len(STORY) + 1}: expected the answer" in done.stdout
    assert '"result":"refused"' in done.stdout


def test_an_event_that_does_not_come_is_told_with_its_line(live):
    done = live(STORY + [{"time": "08:10:00", "expect": {"event": "promoted"}}])
    assert done.returncode == 1
    assert f"!! line {len(STORY) + 1}: expected 1 times at least, happened 0 times" in done.stdout


def test_for_programs_each_line_is_json(live):
    done = live(STORY, "--json")
    assert done.returncode == 0, done.stdout + done.stderr
    kinds = [set(json.loads(line)) for line in done.stdout.splitlines()]
    assert any("event" in kind for kind in kinds) and any("containers" in kind for kind in kinds)


def test_a_file_that_is_no_story_is_told_before_anything_is_sent(live):
    done = live([{"story": 1}, {"time": 1, "input": "nonsense"}])
    assert done.returncode == 2
    assert "story.jsonl: line 2" in done.stderr


def test_a_service_that_is_not_there_is_told(tmp_path):
    file = tmp_path / "story.jsonl"
    file.write_text("\n".join(map(json.dumps, STORY)), encoding="utf-8")
    done = subprocess.run([PROGRAM, "agents", "--server", "http://127.0.0.1:1", "--story", file],
                          capture_output=True, text=True, timeout=120, check=False)
    assert done.returncode == 2
    assert "the service is not ready" in done.stderr
