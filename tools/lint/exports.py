#!/usr/bin/env python3
"""Checks that the shared library exports no platform internals.

Every defined dynamic symbol (nm -D --defined-only, demangled) in the namespaces of the
platform layer (qm::platform, qm::crt) must be one that utils/platform/host.h, the only public
header of that layer, declares. Prints each stray symbol and exits 1 if there is any.

Usage: exports.py LIBRARY [HOST_HEADER]
"""
import os
import re
import subprocess
import sys

PLATFORM_NAME = re.compile(r"\bqm::(platform|crt)::([A-Za-z_]\w*)")


def public_names(host_header):
    with open(host_header, encoding="utf-8") as f:
        text = f.read()
    names = set()
    for line in text.split("\n"):
        if "MFCQMUTILS_API" not in line:
            continue
        m = re.search(r"class\s+MFCQMUTILS_API\s+(\w+)", line) or re.search(r"(\w+)\s*\(", line)
        if m:
            names.add(m.group(1))
    return names


def main():
    if len(sys.argv) < 2:
        print(__doc__.strip())
        return 2
    library = sys.argv[1]
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    host = sys.argv[2] if len(sys.argv) > 2 else os.path.join(root, "utils/platform/host.h")
    allowed = public_names(host)
    out = subprocess.run(["nm", "-D", "--defined-only", "-C", library], check=True, capture_output=True, text=True).stdout
    exported = 0
    stray = []
    for line in out.split("\n"):
        m = PLATFORM_NAME.search(line)
        if not m:
            continue
        exported += 1
        if m.group(2) not in allowed:
            stray.append(line.strip())
    for s in stray:
        print("exported platform internal:", s)
    print(f"exports: {exported} symbol(s) of the platform layer, all from host.h" if not stray
          else f"exports: {len(stray)} platform internal(s) exported")
    return 1 if stray else 0


if __name__ == "__main__":
    sys.exit(main())
