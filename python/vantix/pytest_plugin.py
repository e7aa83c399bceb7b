"""pytest plugin: a running application per test, and scenarios as tests.

- ``vantix_app`` starts the application, waits for its greeting and gives a
  connected :class:`~vantix.Client` (its :class:`~vantix.App` is
  ``vantix_app.app``); it stops the application after the test. A failed
  test's report holds the events and the message log of the test, and the
  application's output.
- ``vantix_scenario`` is a function that runs a ``.vsim`` file against
  ``vantix_app`` (or a client given) and fails the test at the scenario's
  line.

Which application, in this order: a ``@pytest.mark.vantix_app(...)``
marker, ``--vantix-app "./build/myapp --flag"``, ``--vantix-platform
NAME`` (``vantix-sim --platform NAME``), the ini options ``vantix_app`` and
``vantix_platform``. ``--vantix-speed X`` runs it under
libfaketime, X times as fast. ``--vantix-scope module`` keeps one
application per module and resets it (``reset``) between tests; an
application without ``reset`` is started afresh instead.

Each application gets a private runtime folder and unit root, so that
tests run in parallel (``pytest -n auto``) never meet.
"""

import os
import shlex
from pathlib import Path
from typing import Any, Dict, List, NamedTuple, Optional, Tuple

import pytest

from .client import Client
from .errors import Disconnected, Error, ScriptError
from .launch import App, find_program, launch

_SCOPES = ("test", "module")
# How many events and log entries a failure report shows at most.
_REPORT_LINES = 400


class AppChoice(NamedTuple):
    """What to start and how."""

    command: Tuple[str, ...]
    speed: Optional[float]
    scope: str
    env: Tuple[Tuple[str, str], ...]


def pytest_addoption(parser: Any) -> None:
    group = parser.getgroup("vantix", "Vantix applications")
    group.addoption(
        "--vantix-app",
        dest="vantix_app",
        metavar="COMMAND",
        help="the application the vantix_app fixture starts, with its arguments (split as a shell does)",
    )
    group.addoption(
        "--vantix-platform",
        dest="vantix_platform",
        metavar="NAME",
        help="start vantix-sim --platform NAME when no application is given",
    )
    group.addoption(
        "--vantix-sim",
        dest="vantix_sim",
        metavar="PATH",
        help="the vantix-sim program (default: $VANTIX_SIM, the checkout's build folder, PATH)",
    )
    group.addoption(
        "--vantix-speed",
        dest="vantix_speed",
        type=float,
        metavar="X",
        help='run the application X times as fast, under libfaketime (Debian package "faketime")',
    )
    group.addoption(
        "--vantix-scope",
        dest="vantix_scope",
        choices=_SCOPES,
        help="one application per test (default) or per module, reset between tests",
    )
    group.addoption(
        "--vantix-timeout",
        dest="vantix_timeout",
        type=float,
        metavar="SECONDS",
        help="how long a request may wait for its answer (default 60; 0 waits for ever)",
    )
    parser.addini("vantix_app", "the application the vantix_app fixture starts, with its arguments")
    parser.addini("vantix_platform", "start vantix-sim --platform NAME when no application is given")
    parser.addini("vantix_sim", "the vantix-sim program")
    parser.addini("vantix_speed", "run the application this many times as fast, under libfaketime")
    parser.addini("vantix_scope", "test (default) or module")
    parser.addini("vantix_timeout", "how long a request may wait for its answer, in seconds", default="60")
    parser.addini("vantix_start_timeout", "how long an application may take to greet, in seconds", default="20")


def pytest_configure(config: Any) -> None:
    config.addinivalue_line(
        "markers",
        "vantix_app(command=None, *, platform=None, speed=None, scope=None, env=None): "
        "the application the vantix_app fixture starts for this test",
    )


def _option(config: Any, name: str) -> Tuple[Optional[str], Optional[Path]]:
    """An option's value and the folder a relative path in it is relative to."""
    value = config.getoption(name)
    if value is not None:
        return str(value), _base(config, True)
    value = config.getini(name)
    if value:
        return str(value), _base(config, False)
    return None, None


def _base(config: Any, from_command_line: bool) -> Path:
    """What a relative path in an option is relative to: where pytest runs, or the ini file."""
    if from_command_line:
        return Path(config.invocation_params.dir)
    return Path(config.inipath).parent if getattr(config, "inipath", None) else Path(config.rootpath)


def _absolute(argv: List[str], base: Optional[Path]) -> List[str]:
    # "./build/myapp" names a file relative to where it was written, not to the test's folder.
    if argv and base is not None and os.sep in argv[0] and not os.path.isabs(argv[0]):
        argv[0] = str((base / argv[0]).resolve())
    return argv


def _test_folder(item: Any) -> Path:
    path = getattr(item, "path", None)
    return Path(str(path if path is not None else item.fspath)).parent


def _sim_command(config: Any, platform: str) -> List[str]:
    path, base = _option(config, "vantix_sim")
    sim = str((base / path).resolve()) if path and base and os.sep in path else path
    sim = sim or find_program("vantix-sim", "VANTIX_SIM")
    if not sim:
        raise pytest.UsageError("vantix-sim not found: give --vantix-sim PATH or set VANTIX_SIM")
    return [sim, "--platform", platform, "--quiet"]


def choice_for(item: Any) -> AppChoice:
    """The application a test starts: marker, then options, then ini."""
    config = item.config
    marker = item.get_closest_marker("vantix_app")
    kwargs = dict(marker.kwargs) if marker else {}
    command = marker.args[0] if marker and marker.args else kwargs.get("command")
    argv = None  # type: Optional[List[str]]
    if command:
        argv = shlex.split(command) if isinstance(command, str) else [str(a) for a in command]
        argv = _absolute(argv, _test_folder(item))
    elif kwargs.get("platform"):
        argv = _sim_command(config, kwargs["platform"])
    else:
        # The command line first, then the ini file; an application before a platform.
        app, platform = config.getoption("vantix_app"), config.getoption("vantix_platform")
        if not app and not platform:
            app, platform = config.getini("vantix_app"), config.getini("vantix_platform")
        if app:
            argv = _absolute(shlex.split(app), _base(config, app == config.getoption("vantix_app")))
        elif platform:
            argv = _sim_command(config, platform)
    if not argv:
        raise pytest.UsageError(
            "no application to start: give --vantix-app COMMAND, the ini option vantix_app, "
            "a vantix_app marker or --vantix-platform NAME"
        )
    speed = kwargs.get("speed")
    if speed is None:
        value, _ = _option(config, "vantix_speed")
        speed = float(value) if value else None
    scope = kwargs.get("scope")
    if scope is None:
        value, _ = _option(config, "vantix_scope")
        scope = value or "test"
    if scope not in _SCOPES:
        raise pytest.UsageError("vantix scope is test or module, not %r" % scope)
    env = tuple(sorted((str(k), str(v)) for k, v in (kwargs.get("env") or {}).items()))
    return AppChoice(tuple(argv), speed, scope, env)


def _timeout(config: Any, name: str) -> Optional[float]:
    value, _ = _option(config, name)
    seconds = float(value) if value else 0.0
    return seconds if seconds > 0 else None


def _start(config: Any, choice: AppChoice) -> App:
    start_timeout = float(config.getini("vantix_start_timeout") or 20)
    return launch(
        list(choice.command),
        speed=choice.speed,
        env=dict(choice.env),
        start_timeout=start_timeout,
        timeout=_timeout(config, "vantix_timeout"),
    )


def _finish(app: App) -> None:
    app.stop()
    app.remove()


class _ModuleApps:
    """The applications kept for a module, by what they were started as."""

    def __init__(self) -> None:
        self.apps = {}  # type: Dict[AppChoice, App]

    def close(self) -> None:
        for app in self.apps.values():
            _finish(app)
        self.apps.clear()


@pytest.fixture(scope="module")
def _vantix_module_apps() -> Any:
    apps = _ModuleApps()
    yield apps
    apps.close()


class _Attached(NamedTuple):
    app: App
    event_seq: int
    log_seq: int


def _attach(item: Any, app: App) -> None:
    conn = app.client._conn if app.client else None
    item._vantix_attached = _Attached(app, conn.seq if conn else 0, conn.log_seq if conn else 0)


@pytest.fixture
def vantix_app(request: Any) -> Any:
    """A client connected to a freshly started application (see the module's text)."""
    try:
        choice = choice_for(request.node)
        problem = None
    except pytest.UsageError as e:
        problem = str(e)
    if problem:
        pytest.fail(problem, pytrace=False)
    if choice.scope == "module":
        apps = request.getfixturevalue("_vantix_module_apps")
        app = apps.apps.get(choice)
        if app is not None:
            try:
                if not app.running():
                    raise Disconnected("the application ended")
                app.client.reset()
            except Error:
                # No reset in this application, or it ended: a fresh one is the known state.
                _finish(app)
                del apps.apps[choice]
                app = None
        if app is None:
            app = _start(request.config, choice)
            apps.apps[choice] = app
        _attach(request.node, app)
        yield app.client
        return
    app = _start(request.config, choice)
    _attach(request.node, app)
    try:
        yield app.client
    finally:
        _finish(app)


@pytest.fixture
def vantix_scenario(request: Any) -> Any:
    """``run(path, client=None)``: runs a ``.vsim`` scenario line by line
    against ``client`` (default: the ``vantix_app`` fixture's) and returns
    the lines' values; the first failed line fails the test, reported at
    ``file:line``. A relative path is looked for beside the test file, then
    in pytest's rootdir, then in the current folder."""

    def run(path: Any, client: Optional[Client] = None) -> List[Any]:
        target = client if client is not None else request.getfixturevalue("vantix_app")
        script = Path(path)
        if not script.is_absolute():
            for base in (_test_folder(request.node), Path(request.config.rootpath), Path.cwd()):
                if (base / script).is_file():
                    script = base / script
                    break
        if not script.is_file():
            pytest.fail("scenario %s not found" % path, pytrace=False)
        try:
            return target.script(script, source=str(path))
        except ScriptError as e:
            pytest.fail(str(e), pytrace=False)

    return run


def _tail(lines: List[str], what: str) -> str:
    if len(lines) > _REPORT_LINES:
        lines = ["... %d earlier %s left out" % (len(lines) - _REPORT_LINES, what)] + lines[-_REPORT_LINES:]
    return "\n".join(lines) if lines else "(none)"


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item: Any, call: Any) -> Any:
    outcome = yield
    report = outcome.get_result()
    attached = getattr(item, "_vantix_attached", None)
    if attached is None or not report.failed:
        return
    app = attached.app
    client = app.client
    if client is not None:
        events = [str(e) for e in client.history if e.seq > attached.event_seq]
        entries = [str(e) for e in client.log_history if e.seq > attached.log_seq]
        report.sections.append(("vantix events", _tail(events, "events")))
        report.sections.append(("vantix log", _tail(entries, "log entries")))
    report.sections.append(("vantix output (%s, pid %d)" % (shlex.join(app.command), app.pid), app.output() or "(none)"))
