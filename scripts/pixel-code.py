#!/usr/bin/env python3
"""Measures every kind of state on the reference device and puts the table into docs/devices.md.

  scripts/pixel-code.py [--build DIR]    a build folder with -DQL_BENCH=ON (default: builds the preset "bench")
"""
import argparse
import pathlib
import platform
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "devices.md"
MARKS = ("<!-- bench_pixel_code -->", "<!-- end -->")


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.partition(":")[2].strip()
    return platform.processor()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path)
    options = parser.parse_args()
    if options.build is None:
        options.build = ROOT / "build" / "bench"
        subprocess.run(["cmake", "--preset", "bench"], cwd=ROOT, check=True)
        subprocess.run(["cmake", "--build", "--preset", "bench", "--target", "bench_pixel_code"], cwd=ROOT, check=True)
    table = subprocess.run([options.build / "bin" / "bench_pixel_code"], check=True, capture_output=True, text=True).stdout
    caption = f"One thread of this machine ({processor()}), layers of 1024 × 768."
    page = PAGE.read_text()
    between = re.compile(f"{MARKS[0]}.*?{MARKS[1]}", re.S)
    if not between.search(page):
        raise SystemExit(f"{PAGE} has no place for the table: {MARKS[0]} ... {MARKS[1]}")
    PAGE.write_text(between.sub(lambda _: f"{MARKS[0]}\n{caption}\n\n{table}{MARKS[1]}", page))


if __name__ == "__main__":
    main()
