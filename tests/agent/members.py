# SPDX-License-Identifier: Apache-2.0
"""A fleet for tests and measurements: members of a store, emulated hosts and their agents, in the current directory."""
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import time

QUIET = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def until(condition, what, seconds=30):
    """Waits until a condition holds, and returns what it returned."""
    end = time.monotonic() + seconds
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what() if callable(what) else what}")
        time.sleep(0.05)


class Store:
    def __init__(self, members=1):
        ports = [(free_port(), free_port()) for _ in range(members)]
        self.urls = [f"http://127.0.0.1:{client}" for client, _ in ports]
        peers = [f"http://127.0.0.1:{peer}" for _, peer in ports]
        cluster = ",".join(f"m{i}={url}" for i, url in enumerate(peers))
        self.commands = [
            ["etcd", "--name", f"m{i}", "--data-dir", f"store{i}", "--listen-client-urls", self.urls[i],
             "--advertise-client-urls", self.urls[i], "--listen-peer-urls", peers[i], "--initial-advertise-peer-urls",
             peers[i], "--initial-cluster", cluster, "--unsafe-no-fsync", "--log-level", "error"]
            for i in range(members)]
        self.processes = [None] * members
        for i in range(members):
            self.start(i)
        until(lambda: self.control("endpoint", "health").returncode == 0, "the store answers")

    def start(self, member):
        # Two faults may have ended the same member, and both start it again.
        if self.processes[member] is None or self.processes[member].poll() is not None:
            self.processes[member] = subprocess.Popen(self.commands[member], **QUIET)

    def kill(self, member):
        self.processes[member].kill()
        self.processes[member].wait()

    def control(self, *words):
        environment = dict(os.environ, ETCDCTL_API="3")
        return subprocess.run(["etcdctl", "--endpoints", ",".join(self.urls), *words], env=environment,
                              capture_output=True, text=True)

    def leader(self):
        status = json.loads(self.control("endpoint", "status", "-w", "json").stdout)
        leader = status[0]["Status"]["leader"]
        return next(self.urls.index(one["Endpoint"]) for one in status
                    if one["Status"]["header"]["member_id"] == leader)

    def end(self):
        for process in self.processes:
            process.kill()
            process.wait()


class Member:
    """A host with its agent."""

    def __init__(self, name, urls, environment=None, **settings):
        self.name = name
        self.environment = dict(os.environ, **(environment or {}))
        self.port = free_port()
        self.config = pathlib.Path(f"{name}.yaml")
        self.settings = {"host": name, "directory": f"{os.getcwd()}/{name}-agent", "window": 0, "lease": 3, "drift": 1,
                         "confirm": 10, "requestLimit": 1, "listen": f"127.0.0.1:{self.port}", "endpoints": urls,
                         **settings}
        self.process = None
        self.start()

    def start_host(self):
        """A host that `qvs-host run` starts would end with the agent."""
        subprocess.run(["qvs-host", "start", "--state", self.name], **QUIET)

    def start(self, **settings):
        self.start_host()
        self.settings.update(settings)
        self.config.write_text("# of a test\n" + json.dumps(self.settings))
        with open(f"{self.name}.log", "a") as log:
            self.process = subprocess.Popen(
                ["qvs-host", "run", "--state", self.name, "--", "qvs-agent", "run", "--config", str(self.config)],
                stderr=log, env=self.environment)

    def agent(self):
        """The number of the agent's process."""
        children = until(pathlib.Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children").read_text,
                         "the agent runs")
        return int(children.split()[0])

    def host(self):
        """The number of the host's process."""
        status = subprocess.run(["qvs-host", "status", "--state", self.name, "--json"], capture_output=True)
        return json.loads(status.stdout)["pid"]

    def kill(self, number=signal.SIGKILL):
        os.kill(self.agent(), number)
        self.process.wait()

    def qvs(self, *words):
        return subprocess.run(["qvs-host", "run", "--state", self.name, "--", "qvs", *words], capture_output=True,
                              text=True).stdout

    def get(self, path):
        with socket.create_connection(("127.0.0.1", self.port)) as one:
            one.sendall(f"GET {path} HTTP/1.0\r\n\r\n".encode())
            return one.makefile().read()

    def log(self):
        return pathlib.Path(f"{self.name}.log").read_text()

    def end(self):
        if self.process.poll() is None:
            self.kill(signal.SIGTERM)
        subprocess.run(["qvs-host", "stop", "--state", self.name], **QUIET)


class Fleet:
    def __init__(self, members=1):
        if shutil.which("etcd") is None or shutil.which("etcdctl") is None:
            print("skipped: etcd-server and etcd-client are not installed")
            sys.exit(77)
        self.store = Store(members)
        self.members = []
        pathlib.Path("fleet.yaml").write_text(json.dumps({"endpoints": self.store.urls}))
        os.environ["QVS_FLEET"] = "fleet.yaml"

    def add(self, name, urls=None, **settings):
        member = Member(name, urls or self.store.urls, **settings)
        self.members.append(member)
        return member

    def run(self, *words):
        return subprocess.run(["qvs", "fleet", *words], capture_output=True, text=True)

    def json(self, *words):
        return json.loads(self.run(*words, "--json").stdout or "null")

    def hosts(self):
        return {host["host"]: host for host in self.json("hosts") or []}

    def apply(self, text, *options):
        pathlib.Path("wanted.yaml").write_text(text)
        return self.run("apply", "wanted.yaml", *options)

    def __enter__(self):
        return self

    def __exit__(self, kind, value, trace):
        if kind is not None:
            for member in self.members:
                print(f"--- {member.name}\n{member.log()}", file=sys.stderr)
        for member in self.members:
            member.end()
        self.store.end()
