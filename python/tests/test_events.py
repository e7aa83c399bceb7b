"""Events and log entries: filters, timeouts, expect_event and expect."""

import threading
import time

import pytest

import vantix


def test_events_filtered_by_object_signal_and_arguments(client):
    by_alias = client.events("battery1", "fuelGaugeChanged", timeout=0.5)
    by_value = client.events("ID_BATTERY_1ST", "fuelGaugeChanged", timeout=0.5, newValue=lambda v: v < 30)
    everything = client.events(timeout=0.5)
    for percent in (50, 20, 10):
        client.debug("setbatteryfuel", 1, percent)
    client.set("display", "brightnes", 3)
    assert [e.args["newValue"] for e in by_alias] == [50, 20, 10]
    assert [e["newValue"] for e in by_value] == [20, 10]
    seen = list(everything)
    assert ("ID_DISPLAY", "brightnesChanged") in [(e.object, e.signal) for e in seen]
    assert all(isinstance(e.ms, int) for e in seen)
    # The first override of the fuel also raises F_OVERRIDE.
    assert [str(e).split("] ", 1)[1] for e in seen[:2]] == [
        "ID_BATTERY_1ST statusChanged newStatus=F_ENABLE|F_OVERRIDE|F_CHARGE",
        "ID_BATTERY_1ST fuelGaugeChanged newValue=50"]
    assert str(seen[0]).startswith("[%d ms] " % seen[0].ms)


def test_an_event_stream_times_out(client):
    stream = client.events("battery1", "fuelGaugeChanged", timeout=0.2)
    started = time.monotonic()
    assert list(stream) == []
    assert 0.15 < time.monotonic() - started < 1.5
    with pytest.raises(vantix.Timeout, match="no event within 0.1 s"):
        stream.next(0.1)
    client.debug("setbatteryfuel", 1, 60)
    assert stream.next(2).args == {"newValue": 60}
    stream.close()
    client.debug("setbatteryfuel", 1, 61)
    assert stream.drain() == []


def test_expect_event_finds_events_that_came_before_it_and_in_any_order(client):
    client.debug("setbatteryfuel", 1, 10)
    client.debug("setbatteryfuel", 1, 5)
    # At 5 % the application powers off from its slot: apiClosed comes first.
    first = client.expect_event("battery1", "fuelGaugeChanged", newValue=5)
    second = client.expect_event("System", "apiClosed")
    assert second.seq < first.seq
    critical = client.expect_event("battery1", "fuelGaugeChanged", newValue=lambda v: v <= 10)
    assert critical.args == {"newValue": 10}
    # Each event is found once.
    with pytest.raises(vantix.ExpectationFailed):
        client.expect_event("System", "apiClosed", timeout=0.2)


def test_expect_event_waits_and_reports_what_it_saw(client):
    client.mark()
    client.debug("setbatteryfuel", 1, 40)
    started = time.monotonic()
    with pytest.raises(vantix.ExpectationFailed) as caught:
        client.expect_event("battery1", "fuelGaugeChanged", timeout=0.3, newValue=41)
    assert 0.25 < time.monotonic() - started < 2
    error = caught.value
    assert isinstance(error, AssertionError)
    assert [e.signal for e in error.events] == ["statusChanged", "fuelGaugeChanged"]
    assert str(error).startswith(
        "expected battery1 fuelGaugeChanged with newValue=41 within 0.3 s; events seen meanwhile (2):\n")
    assert str(error).endswith("ID_BATTERY_1ST fuelGaugeChanged newValue=40")
    # What arrives while it waits counts as well.
    threading.Timer(0.2, client.debug, args=("setbatteryfuel", 1, 41)).start()
    assert client.expect_event("battery1", "fuelGaugeChanged", timeout=3, newValue=41).args == {"newValue": 41}


def test_expect_checks_a_property_within_a_time(example_app):
    client = example_app.client
    assert client.expect("battery1", "fuelGauge", 100) == 100
    assert client.expect("battery1", "status", "has", {"F_CHARGE"}) == {"F_ENABLE", "F_CHARGE"}
    assert client.expect("battery1", "present") is None
    # The session runs one line at a time: the change comes through another.
    with vantix.connect(socket=example_app.socket_path, events=False, log=False) as other:
        threading.Timer(0.2, other.debug, args=("setbatteryfuel", 1, 30)).start()
        assert client.expect("battery1", "fuelGauge", "<=", 30, within=3) == 30
    client.debug("setbatteryfuel", 1, 20)
    with pytest.raises(vantix.ExpectationFailed) as caught:
        client.expect("battery1", "fuelGauge", ">", 50, within=0.2)
    assert str(caught.value).startswith("ID_BATTERY_1ST.fuelGauge is 20, expected > 50 within 200 ms")
    with pytest.raises(vantix.ExpectationFailed, match="is present, expected absent"):
        client.expect("battery1", "absent")
    with pytest.raises(vantix.BadRequest):
        client.expect("battery1", "fuelGauge", "~", 5)


def test_log_entries_filtered(client):
    debug = client.log(type="debug", contains="stub called", timeout=2)
    warnings = client.log(type="warning", timeout=0.3)
    with pytest.raises(vantix.Failed, match="only writes a trace line"):
        client.call("system", "reboot")
    entry = debug.next()
    assert (entry.type, entry.category, entry.message) == ("debug", "default", "stub called")
    assert "reboot" in entry.function
    assert list(warnings) == []
    assert entry in client.log_history
