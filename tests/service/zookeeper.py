"""A real ZooKeeper server of our own, on a free loopback port."""

import os
import signal
import socket
import subprocess
from pathlib import Path

from service import await_true, die_with_parent, free_port

JARS = ("/usr/share/java/zookeeper.jar", "/usr/share/java/slf4j-simple.jar")


class ZooKeeper:
    def __init__(self, folder):
        self.folder = Path(folder)
        self.port = free_port()
        self.address = f"127.0.0.1:{self.port}"
        self.process = None
        (self.folder / "data").mkdir(parents=True)
        (self.folder / "zoo.cfg").write_text(
            f"tickTime=200\ndataDir={self.folder}/data\nclientPort={self.port}\n"
            "clientPortAddress=127.0.0.1\nmaxClientCnxns=0\nsnapCount=1000\n"
            "admin.enableServer=false\n4lw.commands.whitelist=srvr\n", encoding="utf-8")

    def start(self):
        assert all(Path(jar).exists() for jar in JARS), "install the package zookeeper"
        with open(self.folder / "log", "ab") as log:
            self.process = subprocess.Popen(
                ["java", "-Xmx64m", "-XX:+UseSerialGC", "-XX:TieredStopAtLevel=1",
                 "-XX:-UsePerfData", "-Dzookeeper.preAllocSize=1024",
                 "-Dorg.slf4j.simpleLogger.defaultLogLevel=warn", "-cp", ":".join(JARS),
                 "org.apache.zookeeper.server.quorum.QuorumPeerMain",
                 str(self.folder / "zoo.cfg")],
                stdout=log, stderr=log, stdin=subprocess.DEVNULL, preexec_fn=die_with_parent)
        await_true(self.is_serving, "a ZooKeeper server that serves")
        return self

    def is_serving(self):
        assert self.process.poll() is None, (self.folder / "log").read_text(encoding="utf-8")
        try:
            with socket.create_connection(("127.0.0.1", self.port), timeout=1) as one:
                one.sendall(b"srvr")
                return b"Mode: " in one.recv(65536)
        except OSError:
            return False

    def freeze(self):
        self.process.send_signal(signal.SIGSTOP)
        os.waitpid(self.process.pid, os.WUNTRACED)  # its threads stop one after the other

    def thaw(self):
        self.process.send_signal(signal.SIGCONT)

    def stop(self):
        """As a machine that goes away: its data stay."""
        if self.process is not None and self.process.poll() is None:
            self.process.kill()
            self.process.wait()
