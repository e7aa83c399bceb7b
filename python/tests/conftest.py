"""The suite runs against real processes: example-app and vantix-sim from the
build folder (VANTIX_BUILD_DIR, default <checkout>/build) or from
VANTIX_EXAMPLE_APP and VANTIX_SIM. A test whose program is missing skips."""

import os
from pathlib import Path

import pytest

import vantix

pytest_plugins = ["pytester"]

CHECKOUT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("VANTIX_BUILD_DIR") or CHECKOUT / "build")


def _program(variable: str, relative: str) -> str:
    path = os.environ.get(variable) or str(BUILD / relative)
    return path if os.access(path, os.X_OK) else ""


EXAMPLE_APP = _program("VANTIX_EXAMPLE_APP", "examples/app/example-app")
VANTIX_SIM = _program("VANTIX_SIM", "apps/vantix-sim/vantix-sim")
if VANTIX_SIM:
    # The plugin (also in pytester's runs) finds vantix-sim there.
    os.environ["VANTIX_SIM"] = VANTIX_SIM


def need(program: str, name: str) -> str:
    if not program:
        pytest.skip("%s is not built: build it (make build) or point %s at it" % (name, "VANTIX_BUILD_DIR"))
    return program


@pytest.fixture
def example_app():
    """example-app, started with a private runtime folder; its App object."""
    app = vantix.launch([need(EXAMPLE_APP, "example-app")])
    yield app
    app.stop()
    app.remove()


@pytest.fixture
def client(example_app):
    return example_app.client


@pytest.fixture
def sim():
    """vantix-sim --platform quarnel (more devices than a Tolvex)."""
    app = vantix.launch([need(VANTIX_SIM, "vantix-sim"), "--platform", "quarnel", "--quiet"])
    yield app
    app.stop()
    app.remove()
