"""Builds the wheel of the package with CMake (PEP 517), from the standard library alone.

The wheel holds `geomath/_geomath` and, where GDAL and PROJ are found, `geomath/_files`, which reads
rasters and the EPSG registry, with the libraries of geomath in `geomath/lib`. Settings of the front end
(`pip install . --config-settings build-dir=build/wheel`):

  build-dir   of CMake, kept for the next time; build/wheel without it
  extra       yes, no, or without it: as GDAL and PROJ are found
"""

import base64
import hashlib
import os
import re
import shutil
import subprocess
import sys
import sysconfig
import tarfile
import tempfile
import tomllib
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def get_requires_for_build_wheel(config_settings=None):
    return []


def get_requires_for_build_sdist(config_settings=None):
    return []


def version():
    """As the project says it, once."""
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(geomath VERSION ([\d.]+)", text)[1]


def metadata():
    project = tomllib.loads((ROOT / "pyproject.toml").read_text(encoding="utf-8"))["project"]
    lines = [
        "Metadata-Version: 2.1",
        f"Name: {project['name']}",
        f"Version: {version()}",
        f"Summary: {project['description']}",
        f"Requires-Python: {project['requires-python']}",
        *(f"Requires-Dist: {name}" for name in project["dependencies"]),
    ]
    for extra, names in project["optional-dependencies"].items():
        lines.append(f"Provides-Extra: {extra}")
        lines.extend(f'Requires-Dist: {name}; extra == "{extra}"' for name in names)
    readme = (ROOT / project["readme"]).read_text(encoding="utf-8")
    return "\n".join([*lines, "Description-Content-Type: text/markdown", "", readme])


def tag():
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = re.sub(r"[-.]", "_", sysconfig.get_platform())
    return f"{python}-{python}-{platform}"


def has_gdal_and_proj():
    command = shutil.which("pkg-config")
    return command is not None and not subprocess.run(
        [command, "--exists", "gdal", "proj"], check=False
    ).returncode


def install_package(prefix, settings):
    """Builds the compiled modules and puts the package below prefix."""
    build = ROOT / settings.get("build-dir", "build/wheel")
    extra = settings.get("extra", "yes" if has_gdal_and_proj() else "no")
    if extra not in ("yes", "no"):
        raise SystemExit(f'extra is "{extra}"; "yes" or "no" belongs there')
    cmake = [
        "cmake", "-S", ROOT, "-B", build, "-DCMAKE_BUILD_TYPE=Release",
        "-DBUILD_SHARED_LIBS=ON", "-DGEOMATH_BUILD_PYTHON=ON", "-DGEOMATH_PYTHON_DIR=.",
        "-DCMAKE_INSTALL_LIBDIR=geomath/lib",
        f"-DGEOMATH_FILES_CORE_ONLY={'ON' if extra == 'no' else 'OFF'}",
        f"-DPython3_EXECUTABLE={sys.executable}",
    ]  # fmt: skip
    if not (build / "CMakeCache.txt").exists() and shutil.which("ninja"):
        cmake += ["-G", "Ninja"]
    jobs = str(os.cpu_count() or 1)
    make = ["cmake", "--build", build, "--target", "geomath_python_package", "-j", jobs]
    install = ["cmake", "--install", build, "--prefix", prefix, "--strip", "--component"]
    for command in (cmake, make, [*install, "library"], [*install, "python"]):
        subprocess.run(command, check=True)


def dist_info():
    """The files that describe the wheel, but its record."""
    folder = f"geomath-{version()}.dist-info"
    wheel = ("Wheel-Version: 1.0", "Generator: geomath", "Root-Is-Purelib: false", f"Tag: {tag()}")
    return folder, {
        f"{folder}/METADATA": metadata().encode(),
        f"{folder}/WHEEL": "\n".join([*wheel, ""]).encode(),
        f"{folder}/LICENSE": (ROOT / "LICENSE").read_bytes(),
    }


def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None):
    folder, files = dist_info()
    Path(metadata_directory, folder).mkdir()
    for path, content in files.items():
        Path(metadata_directory, path).write_bytes(content)
    return folder


def record_line(name, content):
    digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
    return f"{name},sha256={digest},{len(content)}\n"


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    info, files = dist_info()
    name = f"geomath-{version()}-{tag()}.whl"
    with tempfile.TemporaryDirectory() as folder:
        install_package(folder, config_settings or {})
        for path in sorted(p for p in Path(folder).rglob("*") if p.is_file()):
            # A wheel has no links: libraries go by the name that is looked for, libgeomath.so.0.1,
            # and not by that with the whole version.
            if not path.name.endswith(f".so.{version()}"):
                files[path.relative_to(folder).as_posix()] = path.read_bytes()
    record = "".join(record_line(*file) for file in files.items()) + f"{info}/RECORD,,\n"
    files[f"{info}/RECORD"] = record.encode()
    with zipfile.ZipFile(Path(wheel_directory, name), "w", zipfile.ZIP_DEFLATED) as wheel:
        for path, content in files.items():
            wheel.writestr(path, content)
    return name


def build_sdist(sdist_directory, config_settings=None):
    base = f"geomath-{version()}"
    listed = subprocess.run(
        ["git", "-C", ROOT, "ls-files"], check=True, capture_output=True, text=True
    ).stdout.splitlines()
    with tempfile.TemporaryDirectory() as folder:
        info = Path(folder, "PKG-INFO")
        info.write_text(metadata(), encoding="utf-8")
        with tarfile.open(Path(sdist_directory, f"{base}.tar.gz"), "w:gz") as archive:
            for path in listed:
                archive.add(ROOT / path, f"{base}/{path}")
            archive.add(info, f"{base}/PKG-INFO")
    return f"{base}.tar.gz"
