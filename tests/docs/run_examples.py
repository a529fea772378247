#!/usr/bin/env python3
"""Runs the code blocks of one page of the documentation.

They run in a scratch directory that holds copies of examples/ and tests/data/ and a link `build` to
the build tree.

Languages of the fences, in the order in which the blocks stand:

  sh      run by bash, with the built program on PATH
  cpp     with a main: a program, which is built and run. All other cpp blocks of a page are one
          program, in their order: #include lines go to its head, the rest into its main
  python  run in one namespace, with the built package on the path
  json    parsed; one with a projection must be a system file that the program accepts
  usage   a synopsis of the program: each option must be one that its --help names
  text    behind sh, cpp, python or js: the output; "..." stands for the rest of a line, and on a line
          of its own for any lines
  csv, cmake, formula  not run
  js      not run here: the tests of the JavaScript package run them

Attributes behind the language:

  file="NAME"     the block is written to this file, for the blocks behind it
  exit="N"        the exit status of a sh block that does not end with 0
  norun="REASON"  the block is not run

A relative link of the page must lead to a file. Exit status: 0, or 1 when something fails, with
file:line and the reason on standard output.
"""

import argparse
import contextlib
import io
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import traceback
from pathlib import Path

RUN = ("sh", "cpp", "python")
KNOWN = RUN + ("js", "json", "usage", "text", "csv", "cmake", "formula")
TIMEOUT = 240  # seconds for one block


class Failure(Exception):
    def __init__(self, line, reason):
        super().__init__(reason)
        self.line = line


class Block:
    def __init__(self, line, info):
        self.line = line  # of the first line inside the fence
        self.language, _, rest = info.partition(" ")
        self.attributes = dict(re.findall(r'(\w+)="([^"]*)"', rest))
        if self.language not in KNOWN:
            raise Failure(line - 1, f'"{self.language}" is no language of a code block')
        if re.sub(r'\s*\w+="[^"]+"', "", rest).strip():
            raise Failure(line - 1, f"cannot read the attributes: {rest}")
        unknown = self.attributes.keys() - {"file", "exit", "norun"}
        if unknown:
            raise Failure(line - 1, f"unknown attribute {', '.join(unknown)}")
        self.text = ""
        self.output = None  # the text block behind it

    def runs(self, language):
        return self.language == language and "norun" not in self.attributes


def read_page(path, root):
    """The blocks of a page, each with its expected output."""
    blocks, block, awaiting, previous = [], None, None, ""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        fence = re.match(r"```(.*)$", line)
        if block is None and fence:
            block = Block(number + 1, fence[1])
        elif fence:
            if block.language == "text":
                if awaiting is None:
                    raise Failure(block.line - 1, "output of which block?")
                awaiting.output = block
            awaiting = block if block.language in RUN + ("js",) else None
            blocks.append(block)
            block = None
        elif block is not None:
            block.text += line + "\n"
        else:
            if line.startswith("#"):
                awaiting = None
            if line.startswith("    ") and not previous.strip():
                raise Failure(number, "indented code is not tested: give it a fence")
            for target in re.findall(r"\]\(([^)#:\s]+)(?:#[^)]*)?\)", line):
                if not (path.parent / target).exists():
                    raise Failure(number, f"the link leads nowhere: {target}")
        previous = line
    if block is not None:
        raise Failure(block.line - 1, "the fence is not closed")
    return blocks


def compare(block, printed):
    if block.output is None:
        return
    pattern = ""
    for line in block.output.text.splitlines():
        anything = r"(?:.*\n)*?" if line.strip() == "..." else None
        pattern += anything or ".*".join(map(re.escape, line.rstrip().split("..."))) + r"\n"
    printed = "".join(line.rstrip() + "\n" for line in printed.splitlines())
    if not re.fullmatch(pattern, printed):
        raise Failure(block.output.line, f"the block before prints something else:\n{printed}")


class Runner:
    def __init__(self, arguments):
        self.arguments = arguments
        self.scratch = Path(arguments.scratch)
        self.environment = dict(os.environ, LC_ALL="C.UTF-8", HOME=str(self.scratch))
        self.environment["PATH"] = f"{arguments.program_dir}:{os.environ['PATH']}"
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)
        for folder in ("examples", "tests/data"):
            shutil.copytree(Path(arguments.source) / folder, self.scratch / folder)
        (self.scratch / "build").symlink_to(arguments.build)

    def command(self, *words, feed=None):
        """Exit status and everything that a command printed; nothing of it runs on."""
        with subprocess.Popen(words, cwd=self.scratch, env=self.environment,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, encoding="utf-8", errors="replace",
                              start_new_session=True) as process:
            try:
                printed, _ = process.communicate(feed or "", timeout=TIMEOUT)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                return "none", f"stopped after {TIMEOUT} s\n"
        return process.returncode, printed

    def must(self, block, *words, feed=None, status=0):
        code, printed = self.command(*words, feed=feed)
        if code != status:
            last = "\n".join(printed.splitlines()[-40:])
            raise Failure(block.line, f"exit status {code} instead of {status}:\n{last}")
        return printed

    def write(self, block):
        name = block.attributes.get("file")
        if name:
            path = self.scratch / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(block.text, encoding="utf-8")
        return name

    def sh(self, block):
        status = int(block.attributes.get("exit", 0))
        script = "set -euo pipefail\n" + block.text
        compare(block, self.must(block, "bash", "-c", script, status=status))

    def build(self, block, program, name):
        source = self.scratch / f"{name}.cc"
        source.write_text(program, encoding="utf-8")
        self.must(block, *self.arguments.compile.split(), source.name, "-o", name,
                  *self.arguments.link.split())
        return self.must(block, f"./{name}")

    def cpp_program(self, block):
        text = f'#line {block.line} "{self.arguments.page}"\n{block.text}'
        compare(block, self.build(block, text, f"program_{block.line}"))

    def cpp_fragments(self, blocks):
        """One program of all fragments; a marker in its output says where each begins."""
        head, body = "#include <cstdio>\n", ""
        for index, block in enumerate(blocks):
            lines = block.text.splitlines(keepends=True)
            included = [line.startswith("#include") for line in lines]
            head += "".join(line for line, is_include in zip(lines, included) if is_include)
            body += f'std::fputs("\\001{index}\\n", stdout);\n'
            body += f'#line {block.line} "{self.arguments.page}"\n'
            body += "".join("\n" if is_include else line
                            for line, is_include in zip(lines, included))
        printed = self.build(blocks[0], head + "int main() {\n" + body + "}\n", "fragments")
        for block, part in zip(blocks, re.split(r"\001\d+\n", printed)[1:]):
            compare(block, part)

    def python(self, block, namespace):
        printed = io.StringIO()
        code = compile("\n" * (block.line - 1) + block.text, self.arguments.page, "exec")
        try:
            with contextlib.redirect_stdout(printed):
                exec(code, namespace)
        except Exception as error:
            frames = [f.lineno for f in traceback.extract_tb(error.__traceback__)
                      if f.filename == self.arguments.page]
            raise Failure(frames[-1] if frames else block.line,
                          f"{type(error).__name__}: {error}") from error
        compare(block, printed.getvalue())

    def json(self, block, name):
        try:
            value = json.loads(block.text)
        except ValueError as error:
            raise Failure(block.line, f"no JSON: {error}") from error
        if isinstance(value, dict) and "projection" in value:
            if not name:
                name = f"system_{block.line}.json"
                (self.scratch / name).write_text(block.text, encoding="utf-8")
            self.must(block, "geomath", "convert", "--system", name, "-", "-o", "-",
                      feed="lat,lon,h\n")

    def usage(self, block):
        for offset, line in enumerate(block.text.splitlines()):
            command = re.match(r"geomath (\w+)", line)
            if not command:
                continue
            known = self.must(block, "geomath", command[1], "--help")
            for option in re.findall(r"(?<![\w-])--?[a-z][a-z-]*", line):
                if not re.search(rf"(?<![\w-]){option}(?![\w-])", known):
                    raise Failure(block.line + offset, f"geomath {command[1]} has no {option}")

    def run_main(self, blocks):
        fragments = [b for b in blocks if b.runs("cpp") and "int main(" not in b.text]
        for block in blocks:
            name = self.write(block)
            if "norun" in block.attributes:
                print(f"not run: line {block.line - 1}: {block.attributes['norun']}")
            elif block.language == "sh":
                self.sh(block)
            elif block.language == "cpp" and block not in fragments:
                self.cpp_program(block)
            elif block.language == "json":
                self.json(block, name)
            elif block.language == "usage":
                self.usage(block)
        if fragments:
            self.cpp_fragments(fragments)

    def run_python(self, blocks):
        sys.path.insert(0, self.arguments.python_path)
        os.chdir(self.scratch)
        namespace = {"__name__": "__main__"}
        for block in blocks:
            self.write(block)
            if block.runs("python"):
                self.python(block, namespace)


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("page", help="from the root of the project")
    for name in ("source", "build", "scratch"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--program-dir", default="")
    parser.add_argument("--compile", default="", help="compiler and its options")
    parser.add_argument("--link", default="", help="what follows the source and the output")
    parser.add_argument("--python-path", help="run the python blocks instead of the others")
    arguments = parser.parse_args()
    try:
        blocks = read_page(Path(arguments.source) / arguments.page, arguments.source)
        runner = Runner(arguments)
        if arguments.python_path:
            runner.run_python(blocks)
        else:
            runner.run_main(blocks)
    except Failure as failure:
        print(f"{arguments.page}:{failure.line}: {failure}")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
