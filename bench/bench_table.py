"""Makes one table and one JSON file of a run of the benchmark programs.

    bench_table.py collect DIRECTORY [-o bench.json]   prints the table of DIRECTORY/*.json
    bench_table.py page bench.json [narrow.json] docs/performance.md
                                                        puts it between the marks of the page, the
                                                        batches of a run on a narrower set, and what
                                                        misses its goal
    bench_table.py compare old.json new.json            how many times faster ours have become

DIRECTORY holds for each program NAME.json, Google Benchmark's output, and NAME.list, the names of
its benchmarks in their order. A benchmark is named "row/contender"; the contenders "batch" and
"scalar" are ours, "floor" is the least that the batch can take, "without" the batch without its
covariances, every other one is a peer. Times are medians of the repetitions.
"""
import argparse
import json
import os
import pathlib
import platform
import re
import statistics
import subprocess

OURS = ("batch", "scalar")
COPY = "copy of "  # how the rows begin that convert nothing

# How many times faster than the fastest peer a contender is to be, on which set, by program and row. The
# first line that fits holds.
GOALS = [
    (r"conversion_bench whole chain forward", "batch", {"avx512": 20, "avx2": 10}),
    (r"conversion_bench whole chain inverse", "batch", {"avx512": 15, "avx2": 8}),
    (r"(projection_bench .*|conversion_bench UTM) forward", "batch", {"avx512": 10, "avx2": 6}),
    (r"(projection_bench .*|conversion_bench UTM) inverse", "batch", {"avx512": 10, "avx2": 8}),
    (r"geoid_bench geoid grid, bilinear", "batch", {"avx512": 8}),
    (r"setup_bench .*", "scalar", {"avx512": 20}),
    (r"registry_bench .*", "scalar", {}),
    (r".*", "scalar", {"avx512": 1.5}),
]


def times_of(report):
    """Nanoseconds per point of each benchmark: one figure for each repetition."""
    times = {}
    for run in report["benchmarks"]:
        if run["run_type"] == "iteration" and "items_per_second" in run:
            times.setdefault(run["run_name"], []).append(1e9 / run["items_per_second"])
    return times


def rows_of(program, report, names):
    rows = {}
    times = times_of(report)
    for name in names:
        if name not in times:
            continue
        row, contender = name.rsplit("/", 1)
        entry = rows.setdefault(row, {"row": row, "program": program, "ours": {}, "peers": {}})
        figures = {"median_ns": statistics.median(times[name]), "least_ns": min(times[name])}
        if contender == "floor":
            entry["floor"] = figures
        else:
            entry["ours" if contender in OURS else "peers"][contender] = figures
    return list(rows.values())


def with_floors(rows):
    """Rows of conversions, each with the floor that a program of its own has measured."""
    floors = {row["row"]: row["floor"] for row in rows if "floor" in row}
    return [row | ({"floor": floors[row["row"]]} if row["row"] in floors else {})
            for row in rows if "floor" not in row]


def processor():
    try:
        for line in open("/proc/cpuinfo"):
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or platform.machine()


def system():
    try:
        name = platform.freedesktop_os_release()["PRETTY_NAME"]
    except (AttributeError, OSError, KeyError):
        name = platform.system()
    return " ".join([name, *platform.libc_ver()]).strip()


def commit():
    here = pathlib.Path(__file__).resolve().parent
    git = subprocess.run(["git", "-C", here, "describe", "--always", "--dirty"],
                         capture_output=True, text=True)
    return git.stdout.strip() or None


def collect(directory):
    rows, contexts = [], []
    for path in sorted(pathlib.Path(directory).glob("*.json")):
        report = json.loads(path.read_text())
        contexts.append(report["context"])
        rows += rows_of(path.stem, report, path.with_suffix(".list").read_text().splitlines())
    if not rows:
        raise SystemExit(f"{directory} holds no benchmark results")
    context = contexts[0]
    return {
        "machine": {"processor": processor(), "processors": os.cpu_count(),
                    "caches": context["caches"], "system": system()},
        "load": [c["load_avg"][0] for c in contexts if c.get("load_avg")],
        "date": context["date"],
        "commit": commit(),
        "compiler": context.get("compiler"),
        "instruction_set": context.get("instruction set"),
        "peers": {name: context[name] for name in ("PROJ", "GeographicLib") if name in context},
        "rows": with_floors(rows),
    }


def number(value):
    """Three significant digits without an exponent."""
    if value is None:
        return ""
    value = float(f"{value:.3g}")
    if value >= 1000:
        return f"{value:,.0f}".replace(",", " ")
    return f"{value:.{0 if value >= 100 else 1 if value >= 10 else 2}f}"


def fastest_peer(row):
    """Its name and nanoseconds; None where there is none."""
    peers = {name: figures["median_ns"] for name, figures in row["peers"].items()}
    name = min(peers, key=peers.get, default="")
    return name, peers.get(name)


def times_faster(peer, mine):
    return f"{peer / mine:.1f} ×" if peer and mine else ""


def table_of(result):
    table = [["row", "batch", "one point", "fastest peer", "", "batch is faster", "one point is"]]
    for row in result["rows"]:
        ours = {name: figures["median_ns"] for name, figures in row["ours"].items()}
        batch, scalar = ours.get("batch"), ours.get("scalar")
        name, peer = fastest_peer(row)
        table.append([row["row"], number(batch), number(scalar), number(peer), name,
                      times_faster(peer, batch), times_faster(peer, scalar)])
    return table


def batches_of(result):
    """The table of a set for comparison: batches that have a peer."""
    table = [["row", "batch", "floor", "fastest peer", "", "batch is faster"]]
    for row in result["rows"]:
        name, peer = fastest_peer(row)
        batch = row["ours"].get("batch", {}).get("median_ns")
        if batch and peer and name != "without":
            table.append([row["row"], number(batch), number(floor_of(row)), number(peer), name,
                          times_faster(peer, batch)])
    return table


def floor_of(row):
    return row.get("floor", {}).get("median_ns")


def misses_of(results):
    table = [["row", "", "on", "takes", "floor", "is faster", "goal"]]
    for result in results:
        where = result["instruction_set"]
        for row in result["rows"]:
            name, peer = fastest_peer(row)
            for contender, figures in row["ours"].items():
                mine, goal = figures["median_ns"], goal_of(row, contender, where)
                if not peer or name == "without" or not goal or peer / mine >= goal:
                    continue
                batch = contender == "batch"
                table.append([row["row"], "batch" if batch else "one", where, number(mine),
                              number(floor_of(row) if batch else None), times_faster(peer, mine),
                              f"{goal} ×"])
    return table


def goal_of(row, contender, instruction_set):
    for pattern, whose, goals in GOALS:
        if whose == contender and re.fullmatch(pattern, f"{row['program']} {row['row']}"):
            return goals.get(instruction_set)
    return None


def aligned(table):
    widths = [max(map(len, column)) for column in zip(*table)]
    for line in table:
        cells = [cell.ljust(width) if i in (0, 4) else cell.rjust(width)  # names to the left
                 for i, (cell, width) in enumerate(zip(line, widths))]
        yield "  ".join(cells).rstrip()


def made_with(result):
    caches = {f"L{c['level']}": c["size"] // 1024 for c in result["machine"]["caches"]
              if c["type"] != "Instruction"}
    caches = ", ".join(f"{name} {size} KB" for name, size in caches.items())
    peers = ", ".join(f"{name} {version}" for name, version in result["peers"].items())
    return (f"{result['machine']['processor']}, {result['machine']['processors']} processors "
            f"({caches}); {result['machine']['system']}; {result['compiler']}, Release; batches on "
            f"{result['instruction_set']}; {peers or 'no peers'}.")


def in_markdown(table, names):
    """`names` are the columns of words, which stand to the left."""
    head, *lines = table
    marks = ["---" if i in names else "---:" for i in range(len(head))]
    return "\n".join("| " + " | ".join(cells) + " |" for cells in [head, marks, *lines])


def between_marks(text, name, content):
    begin, end = f"<!-- {name}: begin -->", f"<!-- {name}: end -->"
    if begin not in text or end not in text:
        raise SystemExit(f"the page has no marks {begin} and {end}")
    before, rest = text.split(begin, 1)
    return f"{before}{begin}\n{content}\n{end}{rest.split(end, 1)[1]}"


def write_page(results, page):
    widest, *narrower = results
    parts = {"table": f"{made_with(widest)}\n\n{in_markdown(table_of(widest), (0, 4))}",
             "misses": in_markdown(misses_of(results), (0, 1, 2))}
    for result in narrower:
        parts["narrower"] = f"{made_with(result)}\n\n{in_markdown(batches_of(result), (0, 4))}"
    text = page.read_text()
    for name, content in parts.items():
        text = between_marks(text, name, content)
    page.write_text(text)


def compared(old, new):
    before = {row["row"]: row["ours"] for row in old["rows"]}
    table, gains = [["row", *OURS]], {name: [] for name in OURS}
    for row in new["rows"]:
        if row["row"].startswith(COPY):
            continue
        cells = [row["row"]]
        for name in OURS:
            was, now = before.get(row["row"], {}).get(name), row["ours"].get(name)
            gain = was["median_ns"] / now["median_ns"] if was and now else None
            if gain:
                gains[name].append(gain)
            cells.append(f"{gain:.2f} ×" if gain else "")
        table.append(cells)
    means = [f"{statistics.geometric_mean(gains[name]):.2f} ×" if gains[name] else ""
             for name in OURS]
    return [*table, ["geometric mean", *means]]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    commands = parser.add_subparsers(dest="command", required=True)
    collecting = commands.add_parser("collect")
    collecting.add_argument("directory", type=pathlib.Path)
    collecting.add_argument("-o", "--output", type=pathlib.Path)
    paging = commands.add_parser("page")
    paging.add_argument("results", type=pathlib.Path, nargs="+")
    paging.add_argument("page", type=pathlib.Path)
    comparing = commands.add_parser("compare")
    comparing.add_argument("old", type=pathlib.Path)
    comparing.add_argument("new", type=pathlib.Path)
    options = parser.parse_args()
    if options.command == "compare":
        old, new = (json.loads(path.read_text()) for path in (options.old, options.new))
        print("\n".join(aligned(compared(old, new))))
        return
    if options.command == "page":
        write_page([json.loads(path.read_text()) for path in options.results], options.page)
        return
    result = collect(options.directory)
    print(made_with(result))
    print("Nanoseconds per point, medians; times faster than the fastest peer.\n")
    print("\n".join(aligned(table_of(result))))
    if options.output:
        options.output.write_text(json.dumps(result, indent=1) + "\n")


if __name__ == "__main__":
    main()
