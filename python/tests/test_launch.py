"""Starting applications: private folders, accelerated time, a known state."""

import os
import time

import pytest

import vantix
from vantix.launch import faketime_environment, faketime_library

from conftest import EXAMPLE_APP, need


def test_each_application_gets_a_private_folder(example_app):
    with vantix.launch([need(EXAMPLE_APP, "example-app")]) as other:
        assert other.folder != example_app.folder
        assert os.stat(other.folder).st_mode & 0o777 == 0o700
        other.client.debug("setbatteryfuel", 1, 42)
        # The units share nothing: neither their hardware nor their files.
        assert example_app.client.get("battery1", "fuelGauge") == 100
        assert os.listdir(other.root) and os.listdir(example_app.root)
    assert not os.path.exists(other.folder)
    assert "example-app: battery at 42 %" in other.output()
    assert "example-app: ready with 10 devices" in example_app.output()


def test_a_start_that_fails_says_why(tmp_path):
    with pytest.raises(vantix.ConnectError, match="unknown platform nowhere"):
        vantix.launch([need(EXAMPLE_APP, "example-app"), "--platform", "nowhere"])
    with pytest.raises(vantix.ConnectError, match="cannot start %s/missing" % tmp_path):
        vantix.launch([str(tmp_path / "missing")])
    started = time.monotonic()
    with pytest.raises(vantix.ConnectError, match="did not greet within 0.5 s"):
        vantix.launch(["sleep", "30"], start_timeout=0.5)
    assert time.monotonic() - started < 5


def test_accelerated_time(monkeypatch, tmp_path):
    if not os.path.isfile(faketime_library()):
        pytest.skip('libfaketime is not installed (Debian package "faketime")')
    assert faketime_environment(10)["FAKETIME"] == "+0 x10"
    assert faketime_environment(2.5)["FAKETIME"] == "+0 x2.5"
    with vantix.launch([need(EXAMPLE_APP, "example-app")], speed=8) as app:
        started = time.monotonic()
        app.client.run("wait 4000")
        assert time.monotonic() - started < 2.0
    monkeypatch.setenv("VANTIX_FAKETIME_LIB", "/nonexistent/libfaketime.so.1")
    monkeypatch.setenv("TMPDIR", str(tmp_path))
    with pytest.raises(vantix.Error, match='/nonexistent/libfaketime.so.1 is missing; install the Debian package "faketime"'):
        vantix.launch([need(EXAMPLE_APP, "example-app")], speed=8)
    assert list(tmp_path.iterdir()) == []


def test_the_host_network_poll_leaves_a_long_test_alone():
    if not os.path.isfile(faketime_library()):
        pytest.skip('libfaketime is not installed (Debian package "faketime")')
    # Qt's host poll, every 10 s of the unit's time, would empty the SSID.
    with vantix.launch([need(EXAMPLE_APP, "example-app")], speed=100) as app:
        app.client.debug("setssid", "Lab")
        app.client.run("wait 25000")
        assert app.client.get("wifi", "wifiSsid") == "Lab"


def test_snapshot_restore_and_reset(client):
    try:
        client.snapshot("full")
    except vantix.UnknownCommand as e:
        pytest.skip("this application has no snapshots yet: %s" % e.message)
    client.debug("setbatteryfuel", 1, 30)
    client.snapshot("low")
    client.debug("setbatteryfuel", 1, 70)
    client.restore("low")
    assert client.get("battery1", "fuelGauge") == 30
    client.restore("full")
    assert client.get("battery1", "fuelGauge") == 100
    client.debug("setbatteryfuel", 1, 12)
    client.reset()
    assert client.get("battery1", "fuelGauge") == 100
    with pytest.raises(vantix.ExpectationFailed):
        # reset() starts expect_event's search afresh.
        client.expect_event("battery1", "fuelGaugeChanged", timeout=0.1, newValue=12)
