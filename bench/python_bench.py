"""The Python client's figures beside a bare Python socket's, measured side by
side in one run against vantix_bench_server (bench/benchserver.cpp):

- get round trip: client.get("battery1", "fuelGauge") against a bare
  socket that writes the same request line and parses the answer line with
  json.loads; blocks taken in turns, median of the blocks' means. Target:
  under 1.5x the bare socket.
- events per second: one `burst N` request, the events read through
  client.events() against a bare reader that splits and parses the same
  stream; from the request to the last event, median of the bursts.
  Target: at least 0.7x the bare reader.

    python3 bench/python_bench.py BUILD_DIR
Environment: VANTIX_BENCH_PY_ROUNDS (round trips per block, 500),
VANTIX_BENCH_PY_BLOCKS (blocks per side, 24), VANTIX_BENCH_PY_EVENTS (events
per burst, 30000), VANTIX_BENCH_PY_BURSTS (5).
"""

import json
import os
import shutil
import socket
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(HERE), "python"))

import vantix  # noqa: E402

REQUEST = b'{"id":%d,"line":"get battery1 fuelGauge"}\n'
FUEL_EVENT = b'{"event":"fuelGaugeChanged"'


def _env_int(name: str, default: int) -> int:
    try:
        value = int(os.environ.get(name, ""))
    except ValueError:
        return default
    return value if value > 0 else default


class Server:
    """vantix_bench_server in a folder of its own."""

    def __init__(self, program: str):
        self.folder = tempfile.mkdtemp(prefix="vantix-pybench-")
        self.socket_path = os.path.join(self.folder, "control")
        env = dict(os.environ, QT_QPA_PLATFORM="offscreen", XDG_RUNTIME_DIR=self.folder)
        self.process = subprocess.Popen(
            [program, self.socket_path, os.path.join(self.folder, "root")],
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            env=env,
        )
        if self.process.stdout.readline().strip() != b"ready":
            raise RuntimeError("vantix_bench_server did not start")

    def close(self) -> None:
        self.process.terminate()
        self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


class Bare:
    """The least a Python client does: write a line, read lines, parse them."""

    def __init__(self, path: str):
        self.sock = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.sock.connect(path)
        self.buffer = b""
        self.next_id = 1
        self.lines()  # the greeting

    def lines(self):
        while b"\n" not in self.buffer:
            chunk = self.sock.recv(262144)
            if not chunk:
                raise RuntimeError("the server closed the connection: " + self.buffer[-300:].decode(errors="replace"))
            self.buffer += chunk
        lines = self.buffer.split(b"\n")
        self.buffer = lines.pop()
        return lines

    def request(self, body: bytes) -> None:
        self.sock.sendall(b'{"id":%d,%s}\n' % (self.next_id, body))
        self.next_id += 1

    def get(self) -> int:
        self.sock.sendall(REQUEST % self.next_id)
        self.next_id += 1
        while True:
            for line in self.lines():
                reply = json.loads(line)
                if "ok" in reply:
                    return reply["value"]


def round_trips(server: Server, rounds: int, blocks: int):
    bare = Bare(server.socket_path)
    client = vantix.Client(server.socket_path)
    assert bare.get() == client.get("battery1", "fuelGauge")
    # One core for the client and the server, as the C++ figure pins them: across
    # cores a round trip waits for a wake-up that costs more than the work.
    saved = os.sched_getaffinity(0)
    core = {sorted(saved)[0]}
    os.sched_setaffinity(0, core)
    os.sched_setaffinity(server.process.pid, core)
    try:
        for _ in range(rounds):
            bare.get()
            client.get("battery1", "fuelGauge")
        means = {"bare": [], "client": []}
        for _ in range(blocks):
            started = time.perf_counter()
            for _ in range(rounds):
                bare.get()
            means["bare"].append((time.perf_counter() - started) / rounds)
            started = time.perf_counter()
            for _ in range(rounds):
                client.get("battery1", "fuelGauge")
            means["client"].append((time.perf_counter() - started) / rounds)
    finally:
        os.sched_setaffinity(0, saved)
        os.sched_setaffinity(server.process.pid, saved)
        client.close()
        bare.sock.close()
    return statistics.median(means["client"]) * 1e6, statistics.median(means["bare"]) * 1e6


def bare_burst(server: Server, count: int) -> float:
    bare = Bare(server.socket_path)
    bare.request(b'"events":true')
    bare.lines()
    started = time.perf_counter()
    bare.request(b'"line":"burst %d"' % count)
    seen = 0
    while seen < count:
        for line in bare.lines():
            message = json.loads(line)
            if message.get("event") == "fuelGaugeChanged" and message.get("object") == "ID_BATTERY_1ST":
                if message["args"]["newValue"] != seen % 101:
                    raise RuntimeError("bare reader: event %d out of order" % seen)
                seen += 1
    elapsed = time.perf_counter() - started
    bare.sock.close()
    return count / elapsed


def client_burst(server: Server, count: int) -> float:
    with vantix.Client(server.socket_path, log=False) as client:
        seen = 0
        with client.events("ID_BATTERY_1ST", "fuelGaugeChanged", timeout=10) as events:
            started = time.perf_counter()
            client.run("burst %d" % count)
            for event in events:
                if event.args["newValue"] != seen % 101:
                    raise RuntimeError("client: event %d out of order" % seen)
                seen += 1
                if seen == count:
                    break
        elapsed = time.perf_counter() - started
    if seen != count:
        raise RuntimeError("client: %d of %d events" % (seen, count))
    return count / elapsed


def main() -> int:
    build = sys.argv[1] if len(sys.argv) > 1 else "build"
    program = os.path.join(build, "bench", "vantix_bench_server")
    if not os.access(program, os.X_OK):
        sys.stderr.write("python bench: %s is not built\n" % program)
        return 1
    rounds = _env_int("VANTIX_BENCH_PY_ROUNDS", 500)
    blocks = _env_int("VANTIX_BENCH_PY_BLOCKS", 24)
    # The server outruns a Python reader, and drops a client once 4 MiB wait
    # for it: 30000 events of about 115 bytes stay below that even unread.
    count = _env_int("VANTIX_BENCH_PY_EVENTS", 30000)
    bursts = _env_int("VANTIX_BENCH_PY_BURSTS", 5)

    server = Server(program)
    try:
        client_rt, bare_rt = round_trips(server, rounds, blocks)
    finally:
        server.close()
    # A fresh server per burst: each starts at the same fuel, so both readers
    # check the same values.
    rates = {"client": [], "bare": []}
    for _ in range(bursts):
        for side, burst in (("bare", bare_burst), ("client", client_burst)):
            server = Server(program)
            try:
                rates[side].append(burst(server, count))
            finally:
                server.close()
    client_rate = statistics.median(rates["client"])
    bare_rate = statistics.median(rates["bare"])

    rt_ratio = client_rt / bare_rt
    ev_ratio = client_rate / bare_rate
    print("Python client (python/vantix, %s %s)" % (sys.implementation.name, sys.version.split()[0]))
    print("%-44s %12s %18s %7s  %s" % ("figure", "client", "baseline", "ratio", "target"))
    print("%-44s %9.1f us %12.1f us bare %6.2fx  < 1.5x %s"
          % ("get round trip (%d x %d, one core)" % (blocks, rounds), client_rt, bare_rt, rt_ratio,
             "ok" if rt_ratio < 1.5 else "MISSED"))
    print("%-44s %10.0f/s %13.0f/s bare %6.2fx  >= 0.7x %s"
          % ("events per second (burst %d, median of %d)" % (count, bursts), client_rate, bare_rate, ev_ratio,
             "ok" if ev_ratio >= 0.7 else "MISSED"))
    out = os.path.join(build, "bench", "python_bench.json")
    with open(out, "w") as f:
        json.dump({"get_round_trip_us": {"client": client_rt, "bare": bare_rt, "ratio": rt_ratio},
                   "events_per_s": {"client": client_rate, "bare": bare_rate, "ratio": ev_ratio,
                                    "client_runs": rates["client"], "bare_runs": rates["bare"]}}, f, indent=1)
    return 0


if __name__ == "__main__":
    sys.exit(main())
