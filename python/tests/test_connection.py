"""The connection: greeting, ids and cwd, a dropped connection, another
user's server, and finding applications as vantix-ctl does."""

import os
import shutil
import socket
import subprocess
import threading
import time

import pytest

import vantix
from vantix import discovery

from conftest import EXAMPLE_APP, need
from fakeserver import GREETING, FakeServer


@pytest.fixture
def short_tmp():
    # Socket paths must fit 108 bytes; pytest's tmp_path may not.
    folder = os.path.realpath(__import__("tempfile").mkdtemp(prefix="vx-"))
    os.chmod(folder, 0o700)
    yield folder
    shutil.rmtree(folder, ignore_errors=True)


def test_lines_carry_their_id_and_the_callers_folder(short_tmp, monkeypatch):
    server = FakeServer(os.path.join(short_tmp, "s"), GREETING)
    monkeypatch.chdir(short_tmp)
    with vantix.Client(server.path) as client:
        client.run("get battery1 fuelGauge")
        client.cwd = "/somewhere"
        client.run("dump x.json")
    assert server.requests[:2] == [{"id": 1, "events": True}, {"id": 2, "log": True}]
    assert server.requests[2:] == [
        {"id": 3, "line": "get battery1 fuelGauge", "cwd": short_tmp},
        {"id": 4, "line": "dump x.json", "cwd": "/somewhere"},
    ]
    server.close()


def test_a_server_must_greet_in_the_protocol_of_this_client(short_tmp):
    server = FakeServer(os.path.join(short_tmp, "v2"), dict(GREETING, protocol=2))
    with pytest.raises(vantix.ConnectError, match="^the application speaks control protocol 2, this client 1$"):
        vantix.Client(server.path)
    mute = FakeServer(os.path.join(short_tmp, "mute"), None)
    started = time.monotonic()
    with pytest.raises(vantix.ConnectError, match="^no greeting from %s$" % mute.path):
        vantix.Client(mute.path, greeting_timeout=0.3)
    assert 0.25 < time.monotonic() - started < 2
    with pytest.raises(vantix.ConnectError, match="cannot connect to %s/none" % short_tmp):
        vantix.Client(os.path.join(short_tmp, "none"))


def test_the_servers_last_word_is_the_reason(short_tmp):
    server = FakeServer(os.path.join(short_tmp, "s"), GREETING, answer=False)
    client = vantix.Client(server.path, events=False, log=False)
    done = threading.Event()
    outcome = []

    def wait():
        try:
            client.run("wait 5000")
        except vantix.Error as e:
            outcome.append(e)
        done.set()

    threading.Thread(target=wait).start()
    while not server.requests:
        time.sleep(0.01)
    server.send({"error": {"class": "Failed", "message": "more than 4194304 bytes waited"}})
    server.close()
    assert done.wait(5)
    assert type(outcome[0]) is vantix.Disconnected
    assert str(outcome[0]) == "the connection was lost: more than 4194304 bytes waited (request: wait 5000)"


def test_a_dropped_connection_raises_in_every_waiting_call(example_app):
    client = example_app.client
    outcomes = {}
    started = threading.Barrier(5)

    def run(name, call):
        started.wait()
        try:
            outcomes[name] = call()
        except BaseException as e:  # noqa: B902 - what each call raised is the point
            outcomes[name] = e

    events = client.events(timeout=None)
    log = client.log(timeout=None)
    calls = {
        "run": lambda: client.run("wait 5000"),
        "events": lambda: events.next(),
        "log": lambda: log.next(),
        "expect_event": lambda: client.expect_event("System", "neverEmitted", timeout=30),
    }
    threads = [threading.Thread(target=run, args=item) for item in calls.items()]
    for t in threads:
        t.start()
    started.wait()
    # Four calls wait: one of them reads, the other three sleep.
    deadline = time.monotonic() + 10
    while len(client._conn._sleepers) < 3 and time.monotonic() < deadline:
        time.sleep(0.01)
    assert len(client._conn._sleepers) == 3 and len(client._conn._pending) == 1
    example_app.process.kill()
    for t in threads:
        t.join(10)
    assert {name: type(o) for name, o in outcomes.items()} == {name: vantix.Disconnected for name in calls}
    assert "the application closed the connection" in str(outcomes["run"])
    assert not client.connected
    with pytest.raises(vantix.Disconnected):
        client.get("battery1", "fuelGauge")
    with pytest.raises(vantix.Disconnected):
        list(client.events())
    client.close()


def stage_for_another_user(program, folder):
    """A copy of @program and of the libraries of its own build it loads, in @folder.

    The build may sit in a folder only its owner can enter (a clone in a 0700
    folder, or under /root), where another user could not load them."""
    staged = os.path.join(folder, os.path.basename(program))
    shutil.copy(program, staged)
    build = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(program))))
    listing = subprocess.run(["ldd", program], capture_output=True, text=True, check=True).stdout
    for line in listing.splitlines():
        name, arrow, rest = line.strip().partition(" => ")
        library = rest.split(" (")[0]
        if arrow and library.startswith(build + os.sep):
            shutil.copy(library, os.path.join(folder, name))
    return staged


@pytest.mark.skipif(os.geteuid() != 0 or not shutil.which("setpriv"), reason="needs root and setpriv to run as nobody")
def test_another_users_server_is_refused(short_tmp):
    os.chmod(short_tmp, 0o777)
    path = os.path.join(short_tmp, "control")
    program = stage_for_another_user(need(EXAMPLE_APP, "example-app"), short_tmp)
    env = dict(os.environ, VANTIX_CONTROL=path, QBCOMMON_ROOT=short_tmp, XDG_RUNTIME_DIR="", QT_QPA_PLATFORM="offscreen",
               LD_LIBRARY_PATH=short_tmp)
    process = subprocess.Popen(
        ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", program],
        env=env, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    try:
        deadline = time.monotonic() + 10
        while not os.path.exists(path) and process.poll() is None and time.monotonic() < deadline:
            time.sleep(0.02)
        assert process.poll() is None, "the application did not run as uid 65534: %s" % process.stderr.read()
        with pytest.raises(vantix.ConnectError) as caught:
            vantix.Client(path)
        assert str(caught.value) == "refusing %s: it is served by uid 65534, not by this user (uid 0)" % path
    finally:
        process.kill()
        process.wait()


@pytest.fixture
def runtime(short_tmp, monkeypatch):
    """A runtime folder of its own, for this test's applications and clients."""
    monkeypatch.setenv("XDG_RUNTIME_DIR", short_tmp)
    processes = []

    def start():
        env = dict(os.environ, VANTIX_CONTROL="", QBCOMMON_ROOT=os.path.join(short_tmp, "root%d" % len(processes)),
                   QT_QPA_PLATFORM="offscreen")
        process = subprocess.Popen([need(EXAMPLE_APP, "example-app")], env=env, stdin=subprocess.PIPE,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        processes.append(process)
        socket_path = os.path.join(short_tmp, "vantix", "example-app-%d" % process.pid)
        deadline = time.monotonic() + 10
        while not os.path.exists(socket_path) and time.monotonic() < deadline:
            time.sleep(0.02)
        return process.pid, socket_path

    yield start
    for process in processes:
        process.kill()
        process.wait()


def test_applications_are_chosen_as_vantix_ctl_chooses(runtime, short_tmp):
    with pytest.raises(vantix.ConnectError, match=r"^no application that uses Vantix is running \(or VANTIX_CONTROL is off in it\)$"):
        vantix.connect()
    first_pid, first_path = runtime()
    with vantix.connect(events=False, log=False) as only:
        assert (only.pid, only.socket_path) == (first_pid, first_path)
    second_pid, second_path = runtime()
    apps = vantix.list()
    assert [(a.pid, a.name, a.platform, a.socket_path) for a in apps] == sorted(
        [(first_pid, "example-app", "PT_TOLVEX", first_path), (second_pid, "example-app", "PT_TOLVEX", second_path)])
    table = "\n".join(["%-8s %-20s %-18s %s" % ("PID", "APPLICATION", "PLATFORM", "SOCKET")] +
                      ["%-8s %-20s %-18s %s" % (a.pid, a.name, a.platform, a.socket_path) for a in apps])
    with pytest.raises(vantix.ConnectError) as caught:
        vantix.connect(app="example-app")
    assert str(caught.value) == "2 applications match; choose one with --pid or --app:\n" + table
    with pytest.raises(vantix.ConnectError) as caught:
        vantix.connect(app="other-app")
    assert str(caught.value) == "no running application matches; running:\n" + table
    with vantix.connect(pid=second_pid) as client:
        assert client.pid == second_pid
    with pytest.raises(vantix.ConnectError, match='^--pid needs a process id, not "0"$'):
        vantix.connect(pid=0)
    # A socket left behind by a process that is gone is removed on the way.
    ghost = os.path.join(short_tmp, "vantix", "ghost-%d" % _dead_pid())
    left = socket.socket(socket.AF_UNIX)
    left.bind(ghost)
    left.close()
    with pytest.raises(vantix.ConnectError, match="no application with pid 1 serves a control socket"):
        vantix.connect(pid=1)
    assert not os.path.exists(ghost)
    assert discovery.sockets() == sorted([first_path, second_path])


def _dead_pid() -> int:
    process = subprocess.Popen(["true"])
    process.wait()
    return process.pid


def test_a_folder_anyone_could_write_to_is_not_searched(short_tmp, monkeypatch):
    folder = os.path.join(short_tmp, "vantix")
    os.mkdir(folder, 0o755)
    os.chmod(folder, 0o755)
    monkeypatch.setenv("XDG_RUNTIME_DIR", short_tmp)
    assert discovery.folder_problem(folder) == "%s has mode 0755, not 0700" % folder
    os.rmdir(folder)
    os.symlink(short_tmp, folder)
    assert discovery.folder_problem(folder) == "%s is a symbolic link" % folder
    assert vantix.list() == []
