#!/usr/bin/python3
"""The bitmap benchmark beside Pillow, on the same pictures in the same run.

Usage: bench/pillow.py BENCH_DIB [benchmark options...]

Runs BENCH_DIB (its usual output and ratios are printed as they come), which also saves its
4096 x 4096 pictures (24 bits, and 8 bits with a palette) for this script; then times the
same operations with Pillow on those pictures and prints one table: each operation's time
against memcpy of the picture's bytes (from the same BENCH_DIB run) and against Pillow, with
the goals. Times are CPU times, the best of several runs, as the benchmark library reports.
"""
import json
import os
import subprocess
import sys
import tempfile
import time

from PIL import Image

SIDE = 4096
REPEATS = 5


def best_cpu_ms(action):
    best = None
    for _ in range(REPEATS):
        start = time.process_time()
        action()
        spent = (time.process_time() - start) * 1000.0
        best = spent if best is None or spent < best else best
    return best


def library_times(exe, extra, prefix, out):
    env = dict(os.environ, QM_BENCH_PICTURE=prefix)
    subprocess.run([exe, "--benchmark_min_time=0.2", "--benchmark_out=" + out, "--benchmark_out_format=json"] + extra,
                   env=env, check=True)
    per_ms = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1000.0}
    with open(out) as f:
        runs = json.load(f)["benchmarks"]
    return {r["name"]: r["cpu_time"] * per_ms[r["time_unit"]] for r in runs if r.get("run_type", "iteration") == "iteration"}


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as folder:
        prefix = os.path.join(folder, "picture")
        lib = library_times(sys.argv[1], sys.argv[2:], prefix, os.path.join(folder, "dib.json"))
        rgb = Image.open(prefix + "_24.bmp")
        rgb.load()
        palette = Image.open(prefix + "_8.bmp")
        palette.load()
        saved = os.path.join(folder, "pillow.bmp")
        brighter = [min(255, c + 1) for c in range(256)] * 3
        contrast = [min(255, max(0, c + (c - 128) * 5 // 100)) for c in range(256)] * 3
        pillow = {
            "BM_AdjustBrightness": best_cpu_ms(lambda: rgb.point(brighter)),
            "BM_AdjustContrast": best_cpu_ms(lambda: rgb.point(contrast)),
            "BM_Mirror": best_cpu_ms(lambda: rgb.transpose(Image.Transpose.FLIP_LEFT_RIGHT)),
            "BM_Rotate90": best_cpu_ms(lambda: rgb.transpose(Image.Transpose.ROTATE_270)),
            "BM_Resize/2048": best_cpu_ms(lambda: rgb.resize((SIDE // 2, SIDE // 2), Image.Resampling.NEAREST)),
            "BM_Resize/8192": best_cpu_ms(lambda: rgb.resize((SIDE * 2, SIDE * 2), Image.Resampling.NEAREST)),
            "BM_CopyAs24BitsFrom8": best_cpu_ms(lambda: palette.convert("RGB")),
            "BM_BlackAndWhite": best_cpu_ms(lambda: rgb.convert("L")),
            "BM_Save": best_cpu_ms(lambda: rgb.save(saved, "BMP")),
            "BM_Load": best_cpu_ms(lambda: Image.open(prefix + "_24.bmp").load()),
        }

    # (label, benchmark, baseline of the first ratio, its goal)
    rows = [
        ("AdjustBrightness", "BM_AdjustBrightness", "BM_Memcpy", 1.5),
        ("AdjustContrast", "BM_AdjustContrast", "BM_Memcpy", 1.5),
        ("Mirror", "BM_Mirror", "BM_Memcpy", 1.5),
        ("Rotate(90)", "BM_Rotate90", "BM_Memcpy", 3.0),
        ("Resize to half, with its copy", "BM_Resize/2048", "BM_Memcpy", 2.0),
        ("Resize to double, with its copy", "BM_Resize/8192", "BM_Memcpy", 6.0),
        ("CopyAs24Bits from 8 bits", "BM_CopyAs24BitsFrom8", "BM_Memcpy", 2.0),
        ("BlackAndWhite (Pillow: to grey)", "BM_BlackAndWhite", "BM_Memcpy", 2.0),
        ("Save", "BM_Save", "BM_PlainWrite", 2.0),
        ("Load", "BM_Load", "BM_PlainRead", 2.0),
    ]
    print("\nBitmaps, 4096 x 4096 x 24 bits: CPU time ratios (load average %.2f)" % os.getloadavg()[0])
    header = "%-34s %9s %9s %8s %9s %9s %8s" % ("operation", "library", "/ base", "goal", "Pillow", "lib/PIL", "goal")
    print(header)
    print("-" * len(header))
    for label, name, base, goal in rows:
        if name not in lib or base not in lib:
            print("%-34s not measured" % label)
            continue
        ours, theirs = lib[name], pillow[name]
        ratio, versus = ours / lib[base], ours / theirs
        if name.startswith("BM_Resize") and "BM_CopyOnly" in lib:
            # Pillow makes a new picture from the old one: the library's resize without the
            # copy the benchmark makes first so that it can resize the same picture again.
            versus = (ours - lib["BM_CopyOnly"]) / theirs
        print("%-34s %7.2fms %9.2f %8s %7.2fms %9.2f %8s" % (label, ours, ratio, ("<= %g" % goal) + (" " if ratio <= goal else "!"),
                                                           theirs, versus, "<= 0.5" + (" " if versus <= 0.5 else "!")))
    print("(/ base: against memcpy of the picture's bytes, Save and Load against plain fwrite and fread; lib/PIL of"
          " the resizes: without their copy; '!' marks a goal not met)")


if __name__ == "__main__":
    main()
