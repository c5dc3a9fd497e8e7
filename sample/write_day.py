#!/usr/bin/env python3
"""Writes sample/day.jsonl, a day of the sample cluster: sample/write_day.py > sample/day.jsonl"""

import json
import os

RECORDERS = [f"mixed-0{i}" for i in range(1, 4)] + [f"record-0{i}" for i in range(1, 9)]
IMAGERS = [f"image-0{i}" for i in range(1, 7)] + [f"mixed-0{i}" for i in range(1, 4)]
CAMERAS = [f"camera-{i:03}" for i in range(1, 211)]
EVENING = "18:00:00"

# Who stops reporting before the evening, and why.
UNTIL = {
    "record-03": "07:59:59",  # falls silent
    "record-08": "14:59:59",  # its recorder leaves
}


def write(*comments, **line):
    for comment in comments:
        print(f"\n# {comment}")
    if line:
        print(json.dumps(line))


def at(time, kind, *comments, **fields):
    write(*comments, time=time, input=kind, **fields)


def expect_event(time, event, times=None, **fields):
    line = {"time": time, "expect": {"event": event, **fields}}
    print(json.dumps(line if times is None else {**line, "times": times}))


def expect_container(time, node, kind="MeroRecord", **fields):
    print(json.dumps({"time": time, "expect": {"container": kind, "node": node, **fields}}))


def again(until, every=30):
    return {"every": every, "until": until}


def recorder_report(time, node, until, **fields):
    at(time, "container_report", node=node, type="MeroRecord",
       total={"disk": 400, "net": 1000}, used={"disk": 10, "net": 5}, **again(until), **fields)


def storage_report(time, node, until):
    pools = {"storage-01": ("pool-a", 12000), "storage-02": ("pool-b", 8000)}
    fields = {}
    if node in pools:
        code, size = pools[node]
        fields["parameters"] = {"Pool.1.Code": code, "Pool.1.Size": str(size),
                                "Pool.1.Dns": f"{code}.storage.example", "Pool.1.Path": "/volume"}
    at(time, "container_report", node=node, type="MeroCloudStorage", **fields, **again(until))


def node_reports(node, types, time, until):
    at(time, "node_report", node=node, **again(until))
    for kind in types:
        if kind == "MeroRecord":
            recorder_report(time, node, until)
        elif kind == "MeroCloudStorage":
            storage_report(time, node, until)
        else:
            at(time, "container_report", node=node, type=kind,
               total={"cpu": 100, "net": 1000}, used={"cpu": 5, "net": 5}, **again(until))


def job(time, job_type, tasks, *comments, kind="job", **fields):
    xml = "".join("<Task>" + "".join(f"<{name}>{value}</{name}>" for name, value in task.items()) +
                  "</Task>" for task in tasks)
    at(time, kind, *comments, node="center-01", job_type=job_type,
       xml=f"<TaskList>{xml}</TaskList>", **fields)


def camera(name):
    return {"TaskID": name, "TaskName": "RECORD_720P", "Net": 4, "Disk": 20}


def morning():
    write("06:00  Everybody reports, twice a minute from here on.")
    with open(os.path.join(os.path.dirname(__file__), "cluster.json"), encoding="utf-8") as file:
        cluster = json.load(file)
    for node in cluster["ClusterNode"]:
        name = node["NodeID"]
        until = UNTIL.get(name, EVENING)
        node_reports(name, [c["ContainerType"] for c in node["Container"]], "06:00:00", until)
    expect_event("06:00:30", "settled")
    expect_event("06:00:30", "offline", times=0)

    write("06:10  Seven districts are recorded, 30 cameras each, spread by the disks.")
    for district in range(7):
        names = CAMERAS[30 * district:30 * district + 30]
        job(f"06:1{district}:00", 1001, [camera(name) for name in names],
            expect={"result": "done", "tasks": [{"task": names[0], "result": "placed"},
                                                {"task": names[-1], "result": "placed"}]})
    expect_container("06:17:00", "mixed-01", tasks=20, disk_percent=100)
    expect_container("06:17:00", "record-03", tasks=19)
    expect_container("06:17:00", "record-08", tasks=19)
    expect_container("06:17:00", "record-00", tasks=0)

    job("06:20:00", 1001, [camera("camera-007")],
        "06:20  A camera that is asked for twice stays where it is.",
        expect={"result": "done", "tasks": [{"task": "camera-007", "result": "stays",
                                             "node": "record-04"}]})
    job("06:30:00", 2001, [{"TaskID": f"analysis-{i:02}", "Cpu": 35, "Net": 8} for i in range(1, 13)],
        "06:30  Pictures are analysed, spread by the number of tasks.", expect={"result": "done"})
    for node in ("image-01", "image-02", "image-03"):
        expect_container("06:30:10", node, "MeroImgDev", tasks=2)
    job("06:40:00", 1001, [camera(f"visitor-{i:02}") for i in range(1, 13)],
        "06:40  Would twelve cameras more find room? Ten would; nothing is changed by asking.",
        kind="dry_run", expect={"result": "in_part",
                                "tasks": [{"task": "visitor-10", "result": "placed"},
                                          {"task": "visitor-11", "result": "refused",
                                           "fault": "no_room"}]})
    expect_container("06:40:00", "record-08", tasks=19)


def silence():
    lost = CAMERAS[5::11]
    write("08:00  record-03 falls silent. Nine of its cameras find room, ten have to wait.")
    expect_event("08:01:40", "offline", node="record-03", type="MeroRecord", times=1)
    expect_event("08:01:40", "shift_started", node="record-03", tasks=len(lost))
    expect_event("08:01:40", "waits_for_room", node="record-03", tasks=10)
    expect_container("08:01:40", "record-03", online=False, tasks=10)
    expect_container("08:01:40", "record-04", tasks=20)

    waiting = lost[9:]
    at("08:30:00", "join", "08:30  A recorder joins, and takes what waits.",
       node="record-09", ip="192.0.2.29", node_role=2, types=["MeroRecord"],
       expect={"result": "done"})
    at("08:30:05", "node_report", node="record-09", **again(EVENING))
    recorder_report("08:30:05", "record-09", EVENING)
    expect_event("08:30:20", "shifted", node="record-09", tasks=len(waiting))
    expect_event("08:30:20", "shift_ended", node="record-03")
    expect_container("08:30:20", "record-03", tasks=0)
    at("08:31:00", "container_report", node="record-09", type="MeroRecord",
       tasks=[{"id": name} for name in waiting])
    expect_container("08:40:00", "record-09", tasks=18)

    at("09:00:00", "container_report",
       "09:00  record-03 is back. It still records what is others' work by now, and is told so.",
       node="record-03", type="MeroRecord", total={"disk": 400, "net": 1000},
       used={"disk": 10, "net": 5}, tasks=[{"id": name} for name in waiting],
       expect={"result": "done", "drop": waiting})
    expect_event("09:00:00", "online", node="record-03", type="MeroRecord")
    node_reports("record-03", ["MeroRecord", "MeroCloudStorage"], "09:00:10", EVENING)
    write("       Every five minutes its disks and those of the others come closer.")
    expect_event("09:40:00", "balanced", node="record-03")
    expect_container("09:40:00", "record-03", tasks=16)


def storage():
    at("10:00:00", "storage_allocate",
       "10:00  record-01 gets cloud storage, of the emptiest pool, and reports it.",
       xml="<CloudStorageAlloc><Node><NodeID>record-01</NodeID><Storage>500</Storage></Node>"
           "</CloudStorageAlloc>", expect={"result": "done"})
    expect_event("10:00:00", "storage_allocated", node="record-01", cause="500 of pool-b")
    at("10:00:40", "container_report", node="record-01", type="MeroCloudStorage",
       message_type=41218, tasks=[{"id": "record-01"}],
       allocations=[{"pool": "pool-a", "allocated": 2400, "used": 1310},
                    {"pool": "pool-b", "allocated": 2100, "used": 420}],
       expect={"result": "done"})
    expect_event("10:00:40", "storage_saved", node="record-01")
    at("10:10:00", "storage_reduce", "10:10  Some of what is used least is taken back.",
       xml="<CloudStorageReduce><Code>pool-b</Code></CloudStorageReduce>",
       change_size=400, total_size=5600, expect={"result": "done"})
    expect_event("10:10:00", "storage_reduced", times=1)


def downloads():
    write("11:00  NVRs report; each download goes to the one with most bandwidth left.")
    for nvr, used in (("nvr-1", 9000), ("nvr-2", 3000), ("nvr-3", 4000)):
        at("11:00:00", "nvr_report", nvr=nvr, total=10000, used=used, mu=1, imgu=1, scu=1,
           **again("11:01:00", every=20))
    at("11:00:05", "high_speed", bit_rate=100, expect={"result": "done", "nvr": "nvr-2"})
    at("11:00:06", "high_speed", bit_rate=100, expect={"result": "done", "nvr": "nvr-3"})
    at("11:00:07", "high_speed", bit_rate=1000, expect={"fault": {"name": "no_room"}})


def records():
    at("12:00:00", "cg_add", "12:00  A CG entry is added. Another with its address is refused.",
       node="record-03", float_code="float-03", float_ip="192.0.2.103", expect={"result": "done"})
    expect_event("12:00:00", "cg_changed")
    at("12:00:10", "cg_add", node="record-04", float_code="float-03", float_ip="192.0.2.103",
       expect={"result": "refused"})
    at("13:00:00", "promote", "13:00  The centre database changes its master.",
       node="center-02", expect={"result": "done"})
    expect_event("13:00:00", "promoted", node="center-02")


def careless():
    archive = [{"TaskID": "archive-01"}]
    refused = {"result": "refused", "fault": {"name": "plugin_failed"}}
    for i in range(3):
        comments = ["14:00  A plug-in names a container that nobody has; after the third time it is "
                    "out of service."] if i == 0 else []
        job(f"14:00:{10 * i:02}", 3001, archive, *comments, expect=refused)
    expect_event("14:00:20", "plugin_out")
    job("14:01:00", 3001, archive,
        expect={"result": "refused", "fault": {"name": "plugin_out_of_service"}})
    at("14:05:00", "readmit", plugin="careless", expect={"result": "done"})
    expect_event("14:05:00", "plugin_readmitted")


def leave():
    at("15:00:00", "leave", "15:00  record-08 leaves, and its cameras go to others.",
       node="record-08", type="MeroRecord", expect={"result": "done"})
    expect_event("15:00:00", "left", node="record-08")
    at("15:00:30", "container_report", node="record-08", type="MeroRecord",
       expect={"fault": {"name": "unknown_container"}})


def evening():
    at("16:00:00", "explain", "16:00  Why is that camera where it is?",
       type="MeroRecord", task="camera-006", expect={"result": "done"})
    at("17:00:00", "end_tasks", "17:00  A district goes dark.", type="MeroRecord",
       tasks=CAMERAS[:30], expect={"result": "done"})
    expect_event("17:00:00", "ended")
    expect_event("17:10:00", "balanced", node="record-03")
    expect_event(EVENING, "offline", times=0)


print("""# A day of the sample cluster (sample/*.json), as sample/write_day.py writes it. It wants the plug-ins
# of the target sample_day; see script/run.""")
write(story=1, name="A day in North Harbour", day="2026-03-04")
morning()
silence()
storage()
downloads()
records()
careless()
leave()
evening()
