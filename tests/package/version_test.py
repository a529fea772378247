"""version_test.py SOURCE_DIR VERSION: packaging repeats the version of CMakeLists.txt where it must."""

import json
import re
import sys
from pathlib import Path

source, version = Path(sys.argv[1]), sys.argv[2]
port = json.loads((source / "packaging/vcpkg/geomath/vcpkg.json").read_text())["version"]
debian = re.match(r"geomath \(([0-9.]+)-", (source / "debian/changelog").read_text())
assert port == version, f"vcpkg.json has {port}, CMakeLists.txt {version}"
assert debian and debian[1] == version, f"debian/changelog has {debian}, CMakeLists.txt {version}"
soname = version.rsplit(".", 1)[0]
control = (source / "debian/control").read_text()
assert f"Package: libgeomath{soname}\n" in control, f"debian/control has no libgeomath{soname}"
