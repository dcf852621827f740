#!/usr/bin/env python3
"""Guest instructions executed, from a `qemu-arm -d in_asm,exec,nochain` log.

Each translation block's instruction count comes from its `in_asm` listing
(one "0x<address>:" line per guest instruction after an "IN:" line); every
`exec` line ("Trace n: host [cs_base/pc/flags/cflags] ...") is one execution
of the block at that guest pc. The log is streamed: a block translated again
at the same pc (after a flush) keeps the executions counted so far at its old
size. Prints the total.
"""
import sys
from collections import Counter


def count(stream):
    size = {}          # pc -> instructions of its current translation
    runs = Counter()   # pc -> executions since that translation
    total = 0
    pc, n = None, 0    # the listing being read
    for line in stream:
        if pc is not None:
            if line.startswith("0x"):
                if n == 0 and pc == "":
                    pc = line[2:line.index(":")].lstrip("0") or "0"
                n += 1
                continue
            if pc in runs:
                total += runs.pop(pc) * size[pc]
            size[pc] = n
            pc = None
        if line.startswith("Trace "):
            b = line.index("[")
            runs[line[b:].split("/", 2)[1].lstrip("0") or "0"] += 1
        elif line.startswith("IN:"):
            pc, n = "", 0
    if pc:
        size[pc] = n
    for p, k in runs.items():
        if p not in size:
            sys.exit(f"arm_insn_count: block at 0x{p} executed without a listing")
        total += k * size[p]
    return total


def main():
    with open(sys.argv[1], errors="replace") as f:
        print(count(f))


if __name__ == "__main__":
    main()
