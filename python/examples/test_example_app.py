# The battery of a Tolvex runs down until examples/app powers the unit off.
#
#   pytest --vantix-app=build/examples/app/example-app python/examples/test_example_app.py


def test_battery_drain_powers_the_unit_off(vantix_app):
    app = vantix_app

    # The unit runs on its battery, which reports itself charging.
    app.expect("battery1", "status", "has", "F_ENABLE", within=0.5)
    assert "F_CHARGE" in app.get("battery1", "status")

    # The charger is pulled and the battery drains over three seconds.
    app.debug("togglecharging")
    assert "F_CHARGE" not in app.get("battery1", "status")
    app.run("ramp battery1 setbatteryfuel,1 100 15 3000")
    assert app.get("battery1", "fuelGauge") == 15

    # At 10 % the application saves its work; at 5 % it powers off by itself.
    app.debug("setbatteryfuel", 1, 10)
    app.expect_event("battery1", "fuelGaugeChanged", newValue=10)
    app.debug("setbatteryfuel", 1, 5)
    app.expect_event("System", "apiClosed", timeout=1)

    # The devices stay as they are.
    assert app.get("battery1", "fuelGauge") == 5
    assert "example-app: battery empty, powering off" in app.app.output()
