"""Typed values, typed errors and the commands of the client, against real
applications."""

import json
import os
import threading
import time

import pytest

import vantix
from vantix.errors import error_for
from vantix.values import FLOAT_TYPES, INTEGER_TYPES


def _check_type(schema, prop, value):
    t = prop.type
    if t in INTEGER_TYPES:
        assert type(value) is int
    elif t in FLOAT_TYPES:
        assert type(value) is float
    elif t == "bool":
        assert type(value) is bool
    elif t in ("QString", "ConstAccessPointListPtr"):
        assert type(value) is str
    elif t == "QStringList":
        assert type(value) is list and all(type(v) is str for v in value)
    elif t == "QVariantMap":
        assert type(value) is dict
    elif t.startswith("QList<int>"):
        assert type(value) is list and all(type(v) is int for v in value)
    elif t in schema.enums and schema.enums[t].flag:
        assert type(value) is frozenset and value <= set(schema.enums[t].keys), value
    elif t in schema.enums:
        assert type(value) is str and value in schema.enums[t].keys, value
    else:
        pytest.fail("property type %s is not covered by this test" % t)


@pytest.mark.parametrize("which", ["example_app", "sim"])
def test_every_property_type_comes_typed(request, which):
    client = request.getfixturevalue(which).client
    schema = client.describe()
    seen = set()
    for target, prop in schema.properties():
        _check_type(schema, prop, client.get(target.name, prop.name))
        seen.add(prop.type)
    # Every kind above occurs at least once.
    assert {"int", "uint", "double", "bool", "QString", "QStringList", "QVariantMap", "DeviceFlags",
            "NetworkState"} <= seen


def test_values_written_and_read_back(client):
    assert client.set("display", "brightnes", 40) == 40
    assert client.set("display", "backlight", False) is False
    assert client.set("ID_TEMP_CPU", "threshold", 2.5) == 2.5
    assert client.set("timesettings", "urlList", ("a.org", "b.org")) == ["a.org", "b.org"]
    assert client.get("battery1", "status") == {"F_ENABLE", "F_CHARGE"}
    assert client.run("set", "display", "brightnes", 7) is None
    assert client.get("display", "brightnes") == 7
    assert client.call("ledpower", "setFlash", "red", 100, 200) is None
    assert (client.get("ledpower", "color"), client.get("ledpower", "msOn")) == ("red", 100)
    assert client.debug("setbatteryfuel", 1, 40) is None
    assert client.get("battery1", "fuelGauge") == 40
    assert client.run("devices")[0].keys() >= {"name", "alias", "status"}
    assert client.text("get battery1 fuelGauge") == "OK 40"
    with pytest.raises(ValueError):
        client.debug("setbatteryfuel", "1,2", 40)
    with pytest.raises(TypeError):
        client.set("display", "brightnes", object())


@pytest.mark.parametrize(
    "line, cls, message",
    [
        ("frobnicate", vantix.UnknownCommand, 'unknown command "frobnicate"; help lists the commands'),
        ("get battery9 fuelGauge", vantix.UnknownTarget, 'unknown device or object "battery9"'),
        ("set display brightnes 40%", vantix.BadValue, 'brightnes: expected a whole number'),
        ("get battery1", vantix.BadRequest, "usage: get <target> <property>"),
        ("set battery1 fuelGauge 3", vantix.Failed, "ID_BATTERY_1ST.fuelGauge is read-only"),
        ('get "battery1', vantix.BadRequest, "a quote is not closed"),
    ],
)
def test_each_error_class(client, line, cls, message):
    with pytest.raises(cls) as caught:
        client.run(line)
    error = caught.value
    assert isinstance(error, vantix.Error)
    assert error.message.startswith(message)
    assert error.request == line
    assert error.error_class == cls.__name__
    # The connection stays usable.
    assert client.get("battery1", "fuelGauge") == 100


def test_errors_of_the_request_itself(client):
    with pytest.raises(vantix.BadRequest, match="at most 65536 bytes"):
        client.run("get battery1 " + "x" * 70000)
    reply = client.request({"line": 42})
    assert reply["ok"] is False and error_for(reply, 42).error_class == "BadRequest"
    # A class this client does not know is a Failed, as the protocol asks.
    unknown = error_for({"ok": False, "error": {"class": "Overheated", "message": "too hot"}}, "x")
    assert type(unknown) is vantix.Failed and unknown.message == "too hot"
    assert client.get("battery1", "fuelGauge") == 100


def test_describe_gives_a_typed_schema(client):
    schema = client.describe()
    battery = schema.target("battery1")
    assert battery is schema.targets["ID_BATTERY_1ST"] and battery.kind == "device"
    fuel = battery.properties["fuelGauge"]
    assert (fuel.type, fuel.writable, fuel.notify) == ("int", False, "fuelGaugeChanged")
    assert schema.target("timesettings").properties["timeZone"].writable
    assert battery.signal("fuelGaugeChanged").arguments[0].name == "newValue"
    assert battery.method("reset") is not None
    assert schema.targets["ID_NETWORK_WIFI"].properties["wifiCountry"].effect == "none"
    get = schema.command("GET")
    assert [a.type for a in get.arguments] == ["target", "property"] and not get.debug
    fuel_command = schema.command("setbatteryfuel")
    assert fuel_command.debug and "percent" in (fuel_command.arguments_text or "") + str(
        [a.name for a in fuel_command.arguments])
    assert schema.enums["DeviceFlags"].flag and "F_ENABLE" in schema.enums["DeviceFlags"].keys
    assert any(d.alias == "battery2" and not d.present for d in schema.devices)


def test_schema_takes_one_shape_for_console_and_debug_commands():
    # The shape where a debug command's arguments are a list, as the console's are,
    # and where a server lists debug commands among the commands.
    raw = {
        "commands": [
            {"name": "get", "usage": ["get <target> <property>"], "help": "", "host": False,
             "arguments": [{"name": "target", "type": "target", "optional": False, "repeated": False}]},
            {"name": "addotga", "debug": True, "help": "plug", "arguments": []},
        ],
        "debugCommands": [
            {"name": "setbatteryfuel", "help": "fuel", "arguments": [
                {"name": "battery", "type": "choice", "optional": True, "repeated": False, "choices": ["1", "2"]},
                {"name": "percent", "type": "number", "optional": False, "repeated": False}]},
            {"name": "addotga", "help": "plug", "arguments": "[,1|2]"},
        ],
    }
    schema = vantix.Schema(raw)
    assert [c.name for c in schema.debug_commands] == ["addotga", "setbatteryfuel"]
    fuel = schema.command("setbatteryfuel")
    assert fuel.arguments_text is None
    assert [(a.name, a.type, a.optional, a.choices) for a in fuel.arguments] == [
        ("battery", "choice", True, ["1", "2"]), ("percent", "number", False, [])]
    assert vantix.Schema({"debugCommands": [{"name": "jack", "arguments": ",<flags>"}]}).command(
        "jack").arguments_text == ",<flags>"


def test_script_runs_lines_and_stops_at_the_first_failure(client, tmp_path):
    assert client.script("# a comment\n\nsetbatteryfuel,1,30\nget battery1 fuelGauge\n") == [None, 30]
    path = tmp_path / "drain.vsim"
    path.write_text("setbatteryfuel,1,20\n# next\nexpect battery1 fuelGauge 99\nsetbatteryfuel,1,1\n")
    with pytest.raises(vantix.ScriptError) as caught:
        client.script(path)
    error = caught.value
    assert (error.line, error.text) == (3, "expect battery1 fuelGauge 99")
    assert str(error) == "%s:3: expect battery1 fuelGauge 99: KO: ID_BATTERY_1ST.fuelGauge is 20, expected 99" % path
    assert isinstance(error.cause, vantix.Failed)
    assert client.get("battery1", "fuelGauge") == 20


def test_relative_files_resolve_in_the_callers_folder(client, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    written = client.run("dump state.json")
    if written != str(tmp_path / "state.json"):
        os.remove(written)
        pytest.skip("this application resolves files in its own folder: its engine does not read cwd yet")
    assert "ID_BATTERY_1ST" in json.loads((tmp_path / "state.json").read_text())["devices"]


def test_cancel_stops_the_running_and_waiting_lines(client):
    outcomes = []

    def run(line):
        try:
            outcomes.append(client.run(line))
        except vantix.Error as e:
            outcomes.append(e)

    threads = [threading.Thread(target=run, args=("wait 5000",))]
    threads[0].start()
    while not client._conn._pending:
        time.sleep(0.001)
    threads.append(threading.Thread(target=run, args=("get battery1 fuelGauge",)))
    threads[1].start()
    while len(client._conn._pending) < 2:
        time.sleep(0.001)
    client.cancel()
    for t in threads:
        t.join(5)
    assert [type(o) for o in outcomes] == [vantix.Failed, vantix.Failed]
    assert all(o.message == "cancelled" for o in outcomes)
    assert client.get("battery1", "fuelGauge") == 100


def test_threads_share_a_client_and_each_gets_its_own_answer(client):
    client.set("display", "brightnes", 7)
    client.set("timesettings", "timeZone", "Asia/Tokyo")
    wanted = {("display", "brightnes"): 7, ("battery1", "fuelGauge"): 100,
              ("timesettings", "timeZone"): "Asia/Tokyo", ("battery1", "status"): {"F_ENABLE", "F_CHARGE"}}
    wrong = []

    def work(target, prop):
        for _ in range(100):
            value = client.get(target, prop)
            if value != wanted[target, prop]:
                wrong.append((target, prop, value))

    threads = [threading.Thread(target=work, args=key) for key in wanted for _ in range(2)]
    for t in threads:
        t.start()
    for t in threads:
        t.join(60)
    assert wrong == []
    # Every request was answered, and only once.
    assert not client._conn._pending and client._conn._next_id > 800


def test_two_clients_have_sessions_of_their_own(example_app, tmp_path):
    first = example_app.client
    with vantix.connect(socket=example_app.socket_path, events=False) as second:
        assert second.pid == first.pid == example_app.pid
        events = first.events("battery1", "fuelGaugeChanged", timeout=2)
        second.debug("setbatteryfuel", 1, 33)
        assert events.next().args == {"newValue": 33}
        assert first.get("battery1", "fuelGauge") == 33
        # The second never asked for events: none came.
        assert second._conn.seq == 0
        second.run("record %s" % (tmp_path / "second.vsim"))
        with pytest.raises(vantix.Failed, match="nothing is being recorded"):
            first.run("record stop")
