#!/usr/bin/env python3
"""Checks the layering of the library's sources; prints each breach and exits 1 if any.

The layers, bottom up; a file may include headers of its own layer or a lower one:
  0 types      utils/framework/win*.h, objidl.h, export.h, civil.h, mbchar.h
  1 platform   utils/platform/ (generic code, and the backends in posix/ and win32/)
  2 framework  the other files of utils/framework/ (the framework's classes)
  3 common     utils/common/ (the library's modules)
  4 module     utils/module/ (the module frame)
  5 tools      tools/ (which may include public headers only)

Outside the backends (utils/platform/posix/, utils/platform/win32/) a file includes only the
C and C++ standard headers, and names no operating system in a preprocessor condition. The
types headers are the one exception: on Windows they take the Win32 types from the system's
headers, so that a host that includes both sees one set of definitions.

A public header (the framework, the common modules, the module frame and
utils/platform/host.h, all of them installed) includes no internal one.

Usage: layers.py [ROOT]   (ROOT defaults to the repository holding this script)
"""
import os
import re
import sys

TYPES_HEADERS = re.compile(r"^utils/framework/(win\w*\.h|objidl\.h|export\.h|civil\.h|mbchar\.h)$")
BACKEND = re.compile(r"^utils/platform/(posix|win32)/")
HOST_HEADER = "utils/platform/host.h"
# The Windows SDK headers the types headers may take their definitions from.
TYPES_SYSTEM_HEADERS = {"windows.h", "wtypes.h", "objidl.h", "ole2.h", "shellapi.h", "winnetwk.h"}
C_HEADERS = {
    "assert.h", "ctype.h", "errno.h", "float.h", "inttypes.h", "limits.h", "locale.h", "math.h",
    "setjmp.h", "signal.h", "stdarg.h", "stddef.h", "stdint.h", "stdio.h", "stdlib.h", "string.h",
    "time.h", "wchar.h", "wctype.h", "uchar.h", "stdbool.h", "iso646.h",
}
CXX_HEADER = re.compile(r"^[a-z_0-9]+$")  # <vector>, <cstdio>, <string_view>, ...
INTRINSICS = re.compile(r"^[a-z]*intrin\.h$")  # the compiler's vector intrinsics, not the system's
OS_CONDITION = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif)\b.*\b(_WIN32|_WIN64|__linux__|__unix__|__APPLE__|_MSC_VER|__MINGW32__|__MINGW64__)\b")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')

LAYER_NAMES = ["types", "platform", "framework", "common", "module", "tools"]


def layer(path):
    if TYPES_HEADERS.match(path):
        return 0
    if path.startswith("utils/platform/"):
        return 1
    if path.startswith("utils/framework/"):
        return 2
    if path.startswith("utils/common/"):
        return 3
    if path.startswith("utils/module/"):
        return 4
    if path.startswith("tools/"):
        return 5
    return None


def is_public_header(path):
    if not path.endswith(".h"):
        return False
    if path == HOST_HEADER:
        return True
    if path.endswith("_internal.h"):
        return False
    return layer(path) in (0, 2, 3, 4)


def sources(root):
    for top in ("utils", "tools"):
        for dirpath, _, names in os.walk(os.path.join(root, top)):
            for name in sorted(names):
                if name.endswith((".h", ".cpp")):
                    full = os.path.join(dirpath, name)
                    yield os.path.relpath(full, root).replace(os.sep, "/"), full


def check(root):
    problems = []
    for rel, full in sources(root):
        own = layer(rel)
        if own is None:
            continue
        backend = bool(BACKEND.match(rel))
        types = bool(TYPES_HEADERS.match(rel))
        with open(full, encoding="utf-8", errors="replace") as f:
            lines = f.read().split("\n")
        for number, text in enumerate(lines, 1):
            where = f"{rel}:{number}"
            if OS_CONDITION.match(text) and not backend and not types:
                problems.append(f"{where}: operating-system condition outside a platform backend: {text.strip()}")
            m = INCLUDE.match(text)
            if not m:
                continue
            quoted, target = m.group(1) == '"', m.group(2)
            if quoted:
                if not target.startswith("utils/"):
                    continue
                theirs = layer(target)
                if theirs is not None and theirs > own:
                    problems.append(f"{where}: {LAYER_NAMES[own]} file includes {target} of the higher {LAYER_NAMES[theirs]} layer")
                if (is_public_header(rel) or own == 5) and not is_public_header(target):
                    what = "public header" if own != 5 else "tool (public interface only)"
                    problems.append(f"{where}: {what} includes internal header {target}")
                if target.endswith(".h") and not os.path.exists(os.path.join(root, target)):
                    problems.append(f"{where}: includes {target}, which does not exist")
            else:
                if backend:
                    continue
                if types and target in TYPES_SYSTEM_HEADERS:
                    continue
                if target in C_HEADERS or CXX_HEADER.match(target) or INTRINSICS.match(target):
                    continue
                problems.append(f"{where}: system header <{target}> outside a platform backend")
    return problems


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    problems = check(root)
    for p in problems:
        print(p)
    print(f"layers: {len(problems)} problem(s)")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
