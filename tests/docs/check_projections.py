#!/usr/bin/env python3
"""Compares the pages of the projection families with what `geomath projections --json` lists.

A table whose first heading holds short names in backticks gives their parameters: names, quantities
and units, all of them, in order. In docs/projections/README.md a table row of short name, kind and
class links the page that has that table; the class must be one of the library's headers.

Usage: check_projections.py SOURCE_DIR GEOMATH_PROGRAM
"""

import json
import re
import subprocess
import sys
from pathlib import Path


def tables(path):
    """(line, heading cells, rows of cells) of every table of a page."""
    table = None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines() + [""], 1):
        if not line.startswith("|"):
            if table:
                yield table
            table = None
            continue
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if table is None:
            table = (number, cells, [])
        elif not re.fullmatch(r"[-:]+", cells[0]):
            table[2].append(cells)


def code(cell):
    return re.findall(r"`([^`]+)`", cell)


def main():
    source, program = Path(sys.argv[1]), sys.argv[2]
    listed = {kind["name"]: kind for kind in json.loads(
        subprocess.run([program, "projections", "--json"], check=True, stdout=subprocess.PIPE).stdout)}
    headers = "".join(path.read_text(encoding="utf-8")
                      for path in (source / "geomath/proj/methods").glob("*.h"))
    complaints, page_of, index = [], {}, {}

    def complain(path, line, reason):
        complaints.append(f"{path.relative_to(source)}:{line}: {reason}")

    for path in sorted((source / "docs/projections").glob("*.md")):
        for line, heading, rows in tables(path):
            if path.name == "README.md":
                index.update({code(row[0])[0]: (line + 2 + i, row)
                              for i, row in enumerate(rows) if code(row[0])})
                for i, row in enumerate(rows):
                    for name in code(row[2]):
                        if not re.search(rf"class GEOMATH_API {name}\b", headers):
                            complain(path, line + 2 + i, f"there is no class {name}")
                continue
            for name in code(heading[0]):
                if name not in listed:
                    complain(path, line, f"{name} is no short name")
                    continue
                if name in page_of:
                    complain(path, line, f"{name} has a table in {page_of[name]} too")
                page_of[name] = path.name
                wanted = [[p["name"], p["quantity"], p.get("unit", "")]
                          for p in listed[name]["parameters"]]
                given = [[*code(row[0]), row[1], row[2]] for row in rows]
                for i in range(max(len(wanted), len(given))):
                    if wanted[i:i + 1] != given[i:i + 1]:
                        complain(path, line + 2 + i, f"{name}: the program lists {wanted[i:i + 1]}")
                        break

    overview = source / "docs/projections/README.md"
    for name, kind in listed.items():
        line, row = index.pop(name, (1, None))
        if row is None:
            complain(overview, line, f"{name} is missing")
        elif row[1] != str(kind["kind"]):
            complain(overview, line, f"{name} is of kind {kind['kind']}")
        elif kind["parameters"] and f"({page_of.get(name)})" not in row[3]:
            complain(overview, line, f"the parameters of {name} are in {page_of.get(name)}")
    for name, (line, _) in index.items():
        complain(overview, line, f"{name} is no short name")
    print("\n".join(complaints) or f"{len(listed)} projections agree")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
