"""The program under test, run as its operators run it."""

import ctypes
import os
import random
import signal
import socket
import subprocess
import time
from pathlib import Path

import requests

ROOT = Path(__file__).resolve().parents[2]
SAMPLE = ROOT / "sample"
PROGRAM = Path(os.environ.get("CLUSTER_SERVICE", ROOT / "build/release/bin/cluster_service"))
LIB_DIR = Path(os.environ.get("STEERED_LIB_DIR",
                              PROGRAM.parent.parent / "lib/service_test"))
PATIENCE = 60  # seconds; how long a slow machine may take for what is quick


def free_port():
    """Below the ports that outgoing connections take."""
    for _ in range(1000):
        port = random.randint(20000, 32000)
        with socket.socket() as one:
            try:
                one.bind(("127.0.0.1", port))
                return port
            except OSError:
                continue
    raise RuntimeError("no free port")


def await_true(is_true, what, patience=PATIENCE, pause=0.02):
    """Waits until is_true() is, and returns what it returned."""
    limit = time.monotonic() + patience
    while True:
        found = is_true()
        if found:
            return found
        assert time.monotonic() < limit, f"{what} within {patience} s"
        time.sleep(pause)


def die_with_parent():
    """For the time between fork and exec: nothing outlives the tests."""
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)


class Service:
    """One service on one store; may be started again after it has ended."""

    def __init__(self, folder, store=None, settings=(), limit=None):
        self.folder = Path(folder)
        self.store = store or f"sqlite:{self.folder}/store.db"
        self.settings = list(settings)
        self.steering = self.folder / "steering"
        self.log = self.folder / f"service-{id(self)}.log"
        self.port = free_port()
        self.url = f"http://127.0.0.1:{self.port}"
        self.process = None
        self.cluster = "Main"
        self.limit = limit or (lambda: None)  # called between fork and exec
        self.steer("well")

    def command(self, *arguments):
        return [str(PROGRAM), "--store", self.store, "--cluster-code", self.cluster,
                "--config-dir", str(SAMPLE), "--lib-dir", str(LIB_DIR), "--log-level", "warning",
                *arguments]

    def run(self, *arguments):
        """Runs another command on the same store."""
        return subprocess.run(self.command(*arguments), capture_output=True, text=True,
                              timeout=PATIENCE, check=False)

    def import_sample(self):
        done = self.run("import", "--yes", str(SAMPLE))
        assert done.returncode == 0, done.stderr

    def steer(self, word):
        """What the plug-in "steered" does from now on."""
        new = self.steering.with_suffix(".new")
        new.write_text(word + "\n", encoding="utf-8")
        os.replace(new, self.steering)

    def launch(self):
        """Starts the program and waits for nothing."""
        with open(self.log, "ab") as log:
            self.process = subprocess.Popen(
                self.command("serve", "--listen", f"127.0.0.1:{self.port}", *self.settings),
                stdout=log, stderr=log, stdin=subprocess.DEVNULL, preexec_fn=self.prepare,
                env={**os.environ, "STEERED_PLUGIN": str(self.steering)})

    def prepare(self):
        """Between fork and exec."""
        die_with_parent()
        self.limit()

    def start(self):
        self.launch()
        self.await_ready()
        return self

    def says_yes(self, path):
        assert self.process.poll() is None, f"it ended: {self.logged()}"
        try:
            return requests.get(self.url + path, timeout=PATIENCE).status_code == 200
        except requests.RequestException:
            return False

    def is_ready(self):
        return self.says_yes("/readyz")

    def await_ready(self):
        await_true(self.is_ready, "ready")

    def await_listening(self):
        await_true(lambda: self.says_yes("/healthz"), "listening")

    def signal(self, number):
        self.process.send_signal(number)

    def wait(self, patience=PATIENCE):
        """The exit status."""
        return self.process.wait(patience)

    def stop(self):
        """SIGTERM. The exit status, and how long it took."""
        begun = time.monotonic()
        self.signal(signal.SIGTERM)
        status = self.wait()
        return status, time.monotonic() - begun

    def kill(self):
        self.signal(signal.SIGKILL)
        self.wait()

    def end(self):
        """Whatever state it is in."""
        if self.process is not None and self.process.poll() is None:
            self.process.send_signal(signal.SIGCONT)
            self.process.kill()
            self.process.wait()

    def logged(self):
        return self.log.read_text(encoding="utf-8", errors="replace") if self.log.exists() else ""
