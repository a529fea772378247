"""fast_math_test.py SOURCE_DIR WORK_DIR COMPILER

A parent project's -ffast-math must not reach the library: its objects are the same machine code
with and without it. Compiles some sources, plain and of batches, under each setting and compares
what objdump prints of them.
"""

import json
import shlex
import subprocess
import sys
from pathlib import Path

SOURCES = (
    "geomath/datum/datum.cc",
    "geomath/geoid/global_geoid.cc",  # whose code differs where a single flag gets through
    "geomath/magnetic/magnetic_field.cc",
    "tm_formulas_kernel.cc",
    "geodesic_formulas_kernel.cc",
)
SETTINGS = ("", "-ffast-math", "-Ofast", "-fassociative-math -fno-signed-zeros -fno-trapping-math")


def machine_code(source: Path, work: Path, compiler: str, flags: str) -> dict[str, str]:
    build = work / ("plain" if not flags else flags.replace(" ", "_"))
    subprocess.run(
        ["cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
         f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_CXX_FLAGS={flags}",
         "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"],
        check=True, stdout=subprocess.DEVNULL,
    )
    code = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if not entry["file"].endswith(SOURCES) or "_avx" in entry["command"]:
            continue
        command = shlex.split(entry["command"])
        target = build / command[command.index("-o") + 1]
        target.parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(command, cwd=entry["directory"], check=True)
        listing = subprocess.run(
            ["objdump", "-d", "-r", "--no-show-raw-insn", target],
            check=True, capture_output=True, text=True,
        ).stdout
        code[str(target.relative_to(build))] = listing.split("file format", 1)[1]
    return code


def main() -> None:
    source, work, compiler = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
    plain, *others = (machine_code(source, work, compiler, flags) for flags in SETTINGS)
    assert len(plain) >= len(SOURCES), f"only {sorted(plain)} were found"
    for flags, code in zip(SETTINGS[1:], others):
        different = [name for name in plain if code[name] != plain[name]]
        assert not different, f"{flags} changes {different}"


main()
