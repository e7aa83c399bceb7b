"""The pytest plugin, run in pytest processes of its own (pytester)."""

import subprocess
import sys
from pathlib import Path

import pytest

from conftest import EXAMPLE_APP, VANTIX_SIM, need

EXAMPLES = Path(__file__).resolve().parents[1] / "examples"


@pytest.fixture
def run(pytester):
    def run(*args):
        # -p loads the plugin also where the package is used from the source tree.
        return pytester.runpytest_subprocess("-p", "vantix.pytest_plugin", "-p", "no:cacheprovider", *args)

    return run


def test_a_passing_and_a_failing_hardware_test(pytester, run):
    pytester.makepyfile(
        test_battery="""
        def test_drains(vantix_app):
            vantix_app.debug("setbatteryfuel", 1, 7)
            vantix_app.expect_event("battery1", "fuelGaugeChanged", newValue=7)

        def test_claims_too_much(vantix_app):
            vantix_app.debug("setbatteryfuel", 1, 8)
            assert vantix_app.get("battery1", "fuelGauge") == 99
        """
    )
    result = run("--vantix-app=" + need(EXAMPLE_APP, "example-app"))
    result.assert_outcomes(passed=1, failed=1)
    result.stdout.fnmatch_lines(
        [
            "*_ test_claims_too_much _*",
            "*assert 8 == 99*",
            "*- vantix events -*",
            "*ID_BATTERY_1ST statusChanged newStatus=F_ENABLE|F_OVERRIDE|F_CHARGE",
            "*ID_BATTERY_1ST fuelGaugeChanged newValue=8",
            "*- vantix log -*",
            "*- vantix output (*example-app, pid *) -*",
            "example-app: battery at 8 %",
        ]
    )
    # Only the failed test's report carries them.
    assert "newValue=7" not in result.stdout.str()


def test_applications_of_parallel_workers_stay_apart(pytester, run):
    pytest.importorskip("xdist")
    pytester.makepyfile(
        test_parallel="""
        import time
        import pytest

        @pytest.mark.parametrize("percent", [11, 22, 33, 44])
        def test_own_unit(vantix_app, percent):
            assert vantix_app.get("battery1", "fuelGauge") == 100
            vantix_app.debug("setbatteryfuel", 1, percent)
            time.sleep(0.3)
            assert vantix_app.get("battery1", "fuelGauge") == percent
        """
    )
    result = run("-n", "2", "--vantix-app=" + need(EXAMPLE_APP, "example-app"))
    result.assert_outcomes(passed=4)
    result.stdout.fnmatch_lines(["gw0 ?4? / gw1 ?4?"])


def test_one_application_per_module_is_reset_between_tests(pytester, run):
    pytester.makepyfile(
        test_module="""
        pids = []

        def test_first(vantix_app):
            pids.append(vantix_app.pid)
            vantix_app.debug("setbatteryfuel", 1, 20)

        def test_second(vantix_app):
            pids.append(vantix_app.pid)
            assert vantix_app.get("battery1", "fuelGauge") == 100
        """
    )
    result = run("--vantix-scope", "module", "--vantix-app=" + need(EXAMPLE_APP, "example-app"))
    result.assert_outcomes(passed=2)


def test_marker_command_line_and_ini(pytester, run):
    need(VANTIX_SIM, "vantix-sim")
    pytester.makeini("[pytest]\nvantix_app = %s\nvantix_platform = quarnel\n" % need(EXAMPLE_APP, "example-app"))
    pytester.makepyfile(
        test_choice="""
        import pytest

        def test_unmarked(vantix_app, request):
            wanted = request.config.getoption("vantix_platform") or "tolvex"
            assert (vantix_app.application, vantix_app.platform_name) == (
                "example-app" if wanted == "tolvex" else "vantix-sim", wanted)

        @pytest.mark.vantix_app(platform="tolvex-plus")
        def test_marked(vantix_app):
            assert (vantix_app.application, vantix_app.platform_name) == ("vantix-sim", "tolvex-plus")
        """
    )
    # The ini file's application; the command line's platform over it.
    run().assert_outcomes(passed=2)
    run("--vantix-platform=quarnel").assert_outcomes(passed=2)


def test_no_application_given(pytester, run):
    pytester.makepyfile("def test_x(vantix_app):\n    pass\n")
    result = run()
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines(["*no application to start: give --vantix-app COMMAND*"])


def test_scenarios_fail_at_their_line(pytester, run):
    pytester.makefile(".vsim", drain="setbatteryfuel,1,20\n\nexpect battery1 fuelGauge 99\n")
    pytester.makepyfile(
        test_scenarios="""
        def test_readme_story(vantix_scenario):
            vantix_scenario(%r)

        def test_broken(vantix_scenario):
            vantix_scenario("drain.vsim")
        """
        % str(EXAMPLES / "example-app-battery.vsim")
    )
    result = run("--vantix-app=" + need(EXAMPLE_APP, "example-app"))
    result.assert_outcomes(passed=1, failed=1)
    result.stdout.fnmatch_lines(
        ["*drain.vsim:3: expect battery1 fuelGauge 99: KO: ID_BATTERY_1ST.fuelGauge is 20, expected 99"]
    )


def test_the_readme_example(pytester, run):
    pytester.copy_example(str(EXAMPLES / "test_example_app.py"))
    run("--vantix-app=" + need(EXAMPLE_APP, "example-app")).assert_outcomes(passed=1)


def test_the_readmes_show_the_examples_and_the_api_as_they_are():
    for readme in (EXAMPLES.parents[1] / "README.md", EXAMPLES.parent / "README.md"):
        text = readme.read_text()
        for example in ("test_example_app.py", "example-app-battery.vsim"):
            assert (EXAMPLES / example).read_text() in text, (readme, example)
    apidoc = subprocess.run([sys.executable, str(EXAMPLES.parent / "tools" / "apidoc.py")], capture_output=True,
                            text=True, check=True)
    assert apidoc.stdout in (EXAMPLES.parent / "README.md").read_text(), "run python/tools/apidoc.py --write"
