"""Counts what the batch of a conversion computes for one point, for the table of floor_bench.cc.

    count_operations.py build/release/geomath/libgeomath.so TmFormulas BlhToXyz ...

Reads the machine code of the loops for AVX-512 (column_kernel_loops.h), whose names contain a word, by
objdump: the products, sums, divisions and roots of doubles in each loop. The largest takes four registers
side by side; of those that one register goes through, a loop inside is counted once in the one around it,
however often it runs.
"""
import re
import subprocess
import sys

OPERATIONS = {"products": ["vmulpd"], "sums": ["vaddpd", "vsubpd"], "divisions": ["vdivpd"],
              "roots": ["vsqrtpd"]}


def functions(library):
    text = subprocess.run(["objdump", "-dC", "--no-show-raw-insn", library], check=True,
                          capture_output=True, text=True).stdout
    for part in re.split(r"\n\n(?=[0-9a-f]+ <)", text):
        head, *lines = part.split("\n")
        found = (re.match(r"\s*([0-9a-f]+):\t(\S+)\s*(.*)", line) for line in lines)
        yield head, [(int(m[1], 16), m[2], m[3]) for m in found if m]


def loops(code):
    """The instructions between each jump backwards and where it leads."""
    for address, name, operands in code:
        target = re.match(r"([0-9a-f]+) <", operands) if name.startswith("j") else None
        if target and code[0][0] <= int(target[1], 16) <= address:
            yield [line for line in code if int(target[1], 16) <= line[0] <= address]


def counts(loop):
    return {what: sum(name in names and "zmm" in operands for _, name, operands in loop)
            for what, names in OPERATIONS.items()}


def main():
    library, *words = sys.argv[1:]
    for head, code in functions(library):
        head = re.sub(r"\w+::(?=\w)", "", head)  # without namespaces
        loop = re.search(r"Avx512, *(.*?) *>::Convert\b", head)
        if loop and any(re.search(rf"\b{word}\b", loop[1]) for word in words):
            print(loop[1])
            found = [count for count in map(counts, loops(code)) if count["products"]]
            for line in dict.fromkeys(", ".join(f"{n} {what}" for what, n in c.items()) for c in found):
                print(" ", line)


if __name__ == "__main__":
    main()
