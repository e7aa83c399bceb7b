"""The package's own build backend (PEP 517 and PEP 660), standard library only.

pip builds the package with it in a machine that reaches no package index:
the package needs nothing to be built, so ``pip install ./python`` works
with or without build isolation. The Debian package takes its
``.dist-info`` from here as well::

    python3 build_backend/vantix_build.py dist-info OUTPUT_FOLDER
"""

import base64
import hashlib
import io
import os
import re
import sys
import tarfile
import zipfile
from typing import Dict, List, Optional, Tuple

NAME = "vantix"
SUMMARY = "Client of the Vantix control protocol, and a pytest plugin for simulated hardware"
REQUIRES_PYTHON = ">=3.9"
ENTRY_POINTS = "[pytest11]\nvantix.pytest_plugin = vantix.pytest_plugin\n"
TAG = "py3-none-any"

HERE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PACKAGE = os.path.join(HERE, NAME)
# What an sdist holds besides the package.
SDIST_FILES = ["pyproject.toml", "README.md", "build_backend/vantix_build.py"]


def version() -> str:
    with open(os.path.join(PACKAGE, "__init__.py"), encoding="utf-8") as f:
        match = re.search(r'^__version__ = "([^"]+)"', f.read(), re.M)
    if not match:
        raise RuntimeError("vantix/__init__.py has no __version__")
    return match.group(1)


def _dist_info_name() -> str:
    return "%s-%s.dist-info" % (NAME, version())


def _metadata() -> str:
    with open(os.path.join(HERE, "README.md"), encoding="utf-8") as f:
        readme = f.read()
    return (
        "Metadata-Version: 2.1\n"
        "Name: %s\n"
        "Version: %s\n"
        "Summary: %s\n"
        "Requires-Python: %s\n"
        "Classifier: Framework :: Pytest\n"
        "Description-Content-Type: text/markdown\n"
        "\n%s" % (NAME, version(), SUMMARY, REQUIRES_PYTHON, readme)
    )


def _dist_info_files(wheel: bool = True) -> Dict[str, str]:
    files = {"METADATA": _metadata(), "entry_points.txt": ENTRY_POINTS}
    if wheel:
        files["WHEEL"] = "Wheel-Version: 1.0\nGenerator: vantix_build\nRoot-Is-Purelib: true\nTag: %s\n" % TAG
        files["top_level.txt"] = NAME + "\n"
    return files


def _package_files() -> List[Tuple[str, str]]:
    """(name in the archive, path on disk) of every module, sorted."""
    result = []
    for folder, dirs, names in os.walk(PACKAGE):
        dirs[:] = sorted(d for d in dirs if d != "__pycache__")
        for name in sorted(names):
            if name.endswith(".py") or name == "py.typed":
                path = os.path.join(folder, name)
                result.append((os.path.relpath(path, HERE).replace(os.sep, "/"), path))
    return result


def _record_line(name: str, data: bytes) -> str:
    digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
    return "%s,sha256=%s,%d" % (name, digest, len(data))


def _write_wheel(wheel_directory: str, entries: List[Tuple[str, bytes]]) -> str:
    dist_info = _dist_info_name()
    for name, text in _dist_info_files().items():
        entries.append(("%s/%s" % (dist_info, name), text.encode()))
    record = [_record_line(name, data) for name, data in entries]
    record.append("%s/RECORD,," % dist_info)
    entries.append(("%s/RECORD" % dist_info, ("\n".join(record) + "\n").encode()))
    filename = "%s-%s-%s.whl" % (NAME, version(), TAG)
    with zipfile.ZipFile(os.path.join(wheel_directory, filename), "w", zipfile.ZIP_DEFLATED) as wheel:
        for name, data in entries:
            # A fixed date: the same sources make the same wheel.
            info = zipfile.ZipInfo(name, date_time=(1980, 1, 1, 0, 0, 0))
            info.external_attr = 0o644 << 16
            info.compress_type = zipfile.ZIP_DEFLATED
            wheel.writestr(info, data)
    return filename


# -- PEP 517 ------------------------------------------------------------------


def get_requires_for_build_wheel(config_settings: Optional[dict] = None) -> List[str]:
    return []


def get_requires_for_build_sdist(config_settings: Optional[dict] = None) -> List[str]:
    return []


def get_requires_for_build_editable(config_settings: Optional[dict] = None) -> List[str]:
    return []


def prepare_metadata_for_build_wheel(metadata_directory: str, config_settings: Optional[dict] = None) -> str:
    return write_dist_info(metadata_directory)


def build_wheel(
    wheel_directory: str, config_settings: Optional[dict] = None, metadata_directory: Optional[str] = None
) -> str:
    entries = []
    for name, path in _package_files():
        with open(path, "rb") as f:
            entries.append((name, f.read()))
    return _write_wheel(wheel_directory, entries)


def build_editable(
    wheel_directory: str, config_settings: Optional[dict] = None, metadata_directory: Optional[str] = None
) -> str:
    # A .pth file puts this folder on the path: edits take effect at once.
    return _write_wheel(wheel_directory, [("%s.pth" % NAME, (HERE + "\n").encode())])


def prepare_metadata_for_build_editable(metadata_directory: str, config_settings: Optional[dict] = None) -> str:
    return write_dist_info(metadata_directory)


def build_sdist(sdist_directory: str, config_settings: Optional[dict] = None) -> str:
    base = "%s-%s" % (NAME, version())
    filename = base + ".tar.gz"
    files = [(rel, os.path.join(HERE, rel)) for rel in SDIST_FILES] + _package_files()
    with tarfile.open(os.path.join(sdist_directory, filename), "w:gz", format=tarfile.PAX_FORMAT) as sdist:
        for rel, path in files:
            with open(path, "rb") as f:
                data = f.read()
            info = tarfile.TarInfo("%s/%s" % (base, rel))
            info.size = len(data)
            info.mode = 0o644
            sdist.addfile(info, io.BytesIO(data))
        pkg_info = tarfile.TarInfo("%s/PKG-INFO" % base)
        metadata = _metadata().encode()
        pkg_info.size = len(metadata)
        pkg_info.mode = 0o644
        sdist.addfile(pkg_info, io.BytesIO(metadata))
    return filename


# -- the Debian package ----------------------------------------------------------


def write_dist_info(directory: str, wheel: bool = True) -> str:
    """Writes the .dist-info folder into ``directory`` and returns its name."""
    name = _dist_info_name()
    folder = os.path.join(directory, name)
    os.makedirs(folder, exist_ok=True)
    for file_name, text in _dist_info_files(wheel).items():
        with open(os.path.join(folder, file_name), "w", encoding="utf-8") as f:
            f.write(text)
    return name


if __name__ == "__main__":
    if len(sys.argv) == 3 and sys.argv[1] == "dist-info":
        # What the Debian package ships: it is no wheel.
        print(write_dist_info(sys.argv[2], wheel=False))
    elif len(sys.argv) == 2 and sys.argv[1] == "version":
        print(version())
    else:
        sys.stderr.write("usage: vantix_build.py dist-info FOLDER | version\n")
        sys.exit(2)
