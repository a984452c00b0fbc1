#!/usr/bin/env python3
"""Measures the engine beside its peers and writes docs/performance.md with its plots.

The programs run by turns, so that what else the machine does meets all of them; the fastest frame of all runs counts.
Peers that are not built, and levels that are not given, leave their columns and rows out.

  scripts/performance.py                                  the demo level, every peer that is built
  scripts/performance.py --levels DIR --poses DIR         also the levels of DIR/maps that have poses: DIR/walk_NAME.json
                                                          or DIR/NAME-poses.json, as ql-walk --poses reads them
  scripts/performance.py --quick                          one short run, to see that everything works
"""
import argparse
import json
import math
import os
import pathlib
import platform
import re
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts"))
import plots  # noqa: E402

SIZES = ["640x480", "1024x768"]
OURS, GL, IRRLICHT = "ours", "gl", "irrlicht"
NAMES = {OURS: "Quasarlens8", GL: "llvmpipe", IRRLICHT: "Irrlicht"}
LAYERS, TRIANGLES = 16, 31 * 128 * 128 * 2
FILLS = {
    "fill-opaque": "one texture",
    "fill-alpha": "one texture, alpha blended",
    "fill-two-textures": "two textures in one pass",
    "fill-colour-fog-alpha-test": "one texture, colour, fog, alpha test",
    "fill-tilted": "one texture, in perspective",
}
OTHER_BENCHMARKS = ["bench_images", "bench_level", "bench_half_life", "bench_shaders", "bench_level_rays", "bench_screen",
                    "bench_mesh_build", "bench_mesh_drawing", "bench_mesh_files", "bench_mesh_rays", "bench_devices",
                    "bench_archive", "bench_log", "bench_rays", "bench_input"]
# Of 255, in red and green; blue is noise, which shows where a texel lies more than what is drawn.
PICTURE_TOLERANCE = 6


class Level:
    def __init__(self, base, file, poses):
        self.base, self.file, self.poses = base, file, poses
        self.name = pathlib.Path(file).stem


class Bench:
    """Runs the programs and keeps the smallest time of each case."""

    def __init__(self, options, scratch):
        self.options, self.scratch = options, pathlib.Path(scratch)
        self.bin = options.build / "bin"
        self.least = {}  # (case, level or "", size, threads or 0) -> {who: ms}
        self.runs = {}  # the same -> {who: [ms of each run]}
        self.facts = {}  # (what, level, size) -> {who: number}
        self.limits = {}  # (case, threads) -> rate
        self.seconds = 0.05 if options.quick else 0.7

    def has(self, program):
        return (self.bin / program).exists()

    def run(self, program, *arguments):
        command = [str(self.bin / program), *map(str, arguments)]
        done = subprocess.run(command, capture_output=True, text=True, cwd=ROOT)
        if done.returncode != 0:
            sys.exit(f"{program} ended with {done.returncode}: {' '.join(command)}\n{done.stdout}{done.stderr}")
        return done.stdout

    def note(self, who, case, level, size, threads, ms):
        key = (case, level, size, threads)
        self.runs.setdefault(key, {}).setdefault(who, []).append(ms)
        least = self.least.setdefault(key, {})
        least[who] = min(ms, least.get(who, math.inf))

    def ms(self, who, case, level, size, threads=0):
        return self.least.get((case, level, size, threads), {}).get(who)

    def google(self, program, *arguments):
        """The cases of a Google Benchmark program."""
        out = self.scratch / "benchmark.json"
        self.run(program, f"--benchmark_min_time={self.seconds}", f"--benchmark_out={out}",
                 "--benchmark_out_format=json", *arguments)
        cases = json.loads(out.read_text())["benchmarks"]
        for case in cases:
            if case.get("error_occurred"):
                sys.exit(f"{program}: {case['name']}: {case['error_message']}")
        return cases

    def ours(self, size, pictures):
        more = ["--pictures", pictures] if pictures else []
        for case in self.google("bench_peers", f"--benchmark_filter=/{size}/", *more):
            name, _, rest = case["name"].split("/")[:3]
            self.note(OURS, name, "", size, int(rest.split(":")[1]), case["min_ms"])

    def our_level(self, level, size):
        for case in self.google("bench_walk", "--base", level.base, "--level", level.file, "--poses", level.poses,
                                "--fov", self.options.fov, f"--benchmark_filter=/{size}/"):
            name = case["name"].split("/")[0]
            self.note(OURS, name, level.name, size, 0, case["min_ms"])
            for what in ("triangles", "grown_bytes"):
                if what in case:
                    self.facts.setdefault((what, level.name, size), {})[OURS] = case[what]

    def peer(self, who, size, cases, level=None, pictures=None):
        arguments = [*cases, "--size", size, "--seconds", self.seconds]
        if level:
            arguments += ["--base", level.base, "--level", level.file, "--poses", level.poses, "--fov", self.options.fov]
        if pictures:
            arguments += ["--pictures", pictures]
        for line in self.run(f"ql-peer-{who}", *arguments).splitlines():
            if not line.startswith("{"):
                continue
            case = json.loads(line)
            name = level.name if level else ""
            self.note(who, case["case"], name, size, 0, case["min_ms"])
            for what in ("triangles", "peak_bytes", "content_bytes"):
                if what in case:
                    self.facts.setdefault((what, name, size), {})[who] = case[what]

    def walk(self, level, size):
        """Load time and memory as the main program reports them."""
        report = json.loads(self.run("ql-walk", level.file, "--base", level.base, "--poses", level.poses, "--fov",
                                     self.options.fov, "--size", size, "--curves", "high", "--device", "ref", "--out",
                                     self.scratch / "walk", "--json", "-", "--quiet"))
        self.facts.setdefault(("peak_bytes", level.name, size), {})[OURS] = report["peak_bytes"]

    def measure_limits(self):
        for line in self.run("ql-peer-limits", "bandwidth", "fill", "--seconds", self.seconds).splitlines():
            case = json.loads(line)
            key, rate = (case["case"], int(case["threads"])), case.get("gb_s", case.get("mpix_s"))
            self.limits[key] = max(rate, self.limits.get(key, 0))


def read_ppm(path):
    data = path.read_bytes()
    magic, size, most, pixels = data.split(b"\n", 3)
    assert magic == b"P6" and most == b"255"
    return pixels


def compare_pictures(folder):
    """Mean difference of ours and each peer's pictures; ends the program when one is not of the same thing."""
    out = []
    for ours in sorted(folder.glob("ours-*.ppm")):
        for who in (GL, IRRLICHT):
            theirs = folder / ours.name.replace("ours", who)
            if not theirs.exists():
                continue
            a, b = read_ppm(ours), read_ppm(theirs)
            places = [i + c for i in range(0, len(a) - 2, 3 * 37) for c in (0, 1)]
            mean = sum(abs(a[i] - b[i]) for i in places) / len(places)
            out.append((ours.stem[len("ours-"):], who, mean))
            if mean > PICTURE_TOLERANCE:
                sys.exit(f"{theirs.name} differs from {ours.name} by {mean:.1f} of 255 on average: not the same work")
    return out


def find_levels(options):
    assets = ROOT / "assets"
    levels = []
    if (assets / "maps/court.bsp").exists():
        levels.append(Level(assets, "maps/court.bsp", assets / "maps/court-poses.json"))
    if options.levels:
        base = options.levels.resolve()
        poses = (options.poses or base / "maps").resolve()
        for file in sorted((base / "maps").glob("*.bsp")):
            for candidate in (poses / f"walk_{file.stem}.json", poses / f"{file.stem}-poses.json"):
                if candidate.exists() and (not options.maps or file.stem in options.maps):
                    levels.append(Level(base, f"maps/{file.name}", candidate))
                    break
    return levels


def build(options):
    subprocess.run(["cmake", "--preset", "bench", "-DQL_BUILD_TESTS=OFF", "-DQL_BUILD_EXAMPLES=OFF"], cwd=ROOT,
                   check=True, stdout=subprocess.DEVNULL)
    wanted = ["bench_peers", "bench_walk", "ql-walk", "peers", *OTHER_BENCHMARKS]
    subprocess.run(["cmake", "--build", "--preset", "bench", "--target", *wanted], cwd=ROOT, check=True)


def measure(bench, levels, sizes):
    peers = [who for who in (GL, IRRLICHT) if bench.has(f"ql-peer-{who}")]
    pictures = bench.scratch / "pictures"
    pictures.mkdir()
    differences = []
    for run in range(bench.options.runs):
        print(f"run {run + 1} of {bench.options.runs}", file=sys.stderr)
        if bench.has("ql-peer-limits"):
            bench.measure_limits()
        for size in sizes:
            keep = pictures if run == 0 and size == sizes[-1] else None
            print(f"  {size}: fill, triangles", file=sys.stderr)
            bench.ours(size, keep)
            for who in peers:
                bench.peer(who, size, ["fill", "triangles"], pictures=keep)
            if keep:
                differences = compare_pictures(keep)
            for level in levels:
                print(f"  {size}: {level.name}", file=sys.stderr)
                bench.our_level(level, size)
                for who in peers:
                    bench.peer(who, size, ["level"], level)
                if run == 0:
                    bench.walk(level, size)
    others = {program: bench.google(program) for program in OTHER_BENCHMARKS if bench.has(program)}
    return peers, differences, others


# ---- the page -------------------------------------------------------------------------------------------------------


def table(heads, rows):
    """A Markdown table; columns of which no row holds anything are left out."""
    kept = [i for i in range(len(heads)) if i == 0 or any(row[i] not in ("", None) for row in rows)]
    lines = ["| " + " | ".join(heads[i] for i in kept) + " |",
             "|" + "|".join("---" if i == 0 else "---:" for i in kept) + "|"]
    for row in rows:
        lines.append("| " + " | ".join("" if row[i] is None else str(row[i]) for i in kept) + " |")
    return "\n".join(lines) + "\n"


def number(value, digits=3):
    """With so many significant digits."""
    if value is None:
        return ""
    if value == 0:
        return "0"
    places = max(digits - 1 - math.floor(math.log10(abs(value))), 0)
    return f"{value:,.{places}f}"


def times(ratio):
    return "" if ratio is None else f"**{ratio:.2f}×**"


def ratio(theirs, ours):
    return theirs / ours if theirs and ours else None


def pixels_of(size):
    width, height = map(int, size.split("x"))
    return width * height


def fill_section(bench, peers, sizes, best_threads):
    text = ("Sixteen layers over the whole picture: bilinear, the nearest mip level, perspective-correct, a texture of "
            "256 × 256. Rates in millions of pixels a second.\n\n")
    for size in sizes:
        rows = []
        opaque = bench.ms(OURS, "fill-opaque", "", size, best_threads)
        for case, name in FILLS.items():
            ours = bench.ms(OURS, case, "", size, best_threads)
            if not ours:
                continue
            row = [name, number(ours), number(pixels_of(size) * LAYERS / ours / 1e3), f"{opaque / ours:.2f}"]
            for who in (GL, IRRLICHT):
                theirs = bench.ms(who, case, "", size)
                row += [number(theirs), number(theirs and pixels_of(size) * LAYERS / theirs / 1e3),
                        times(ratio(theirs, ours))]
            rows.append(row)
        text += table([size.replace("x", " × "), "ms", "rate", "of our opaque", "llvmpipe ms", "rate", "ratio",
                       "Irrlicht ms", "rate", "ratio"], rows) + "\n"
    return text + "![Fill rates](pictures/performance-fill.svg)\n"


def triangle_section(bench, sizes, best_threads):
    rows = []
    for size in sizes:
        ours = bench.ms(OURS, "triangles", "", size, best_threads)
        if not ours:
            continue
        row = [size.replace("x", " × "), number(ours), number(TRIANGLES / ours / 1e3)]
        for who in (GL, IRRLICHT):
            theirs = bench.ms(who, "triangles", "", size)
            row += [number(theirs), times(ratio(theirs, ours))]
        rows.append(row)
    return ("A million textured triangles with depth; at 1024 × 768 one covers six pixels. Ours are drawn from a plain "
            "vertex buffer, the peers' with indices.\n\n" +
            table(["picture", "ms", "million a second", "llvmpipe ms", "ratio", "Irrlicht ms", "ratio"], rows))


def level_section(bench, levels, sizes):
    rows = []
    for level in levels:
        for size in sizes:
            ours = bench.ms(OURS, "level-frame", level.name, size)
            if not ours:
                continue
            triangles = bench.facts.get(("triangles", level.name, size), {})
            row = [f"{level.name}, {size.replace('x', ' × ')}", number(triangles.get(OURS), 4), number(ours)]
            for who in (GL, IRRLICHT):
                theirs = bench.ms(who, "level-frame", level.name, size)
                row += [number(triangles.get(who), 4), number(theirs), times(ratio(theirs, ours))]
            rows.append(row)
    return ("The mean of a frame over all poses, each with its visible faces found anew, and with curves as "
            "fine as they get: eight segments to a piece, everywhere the same. The engine draws what its rules "
            "say: faces in a base pass and again in a lightmap pass. The OpenGL program draws both in one pass, in "
            "batches of one texture and lightmap, culls faces by the view and from behind, and leaves out sky and "
            "undrawn surfaces. Irrlicht draws with its own loader and octree.\n\n" +
            table(["level", "triangles, both passes", "ms", "llvmpipe triangles", "ms", "ratio", "Irrlicht triangles", "ms", "ratio"],
                  rows) + "\n![Frames of levels](pictures/performance-levels.svg)\n")


def load_section(bench, levels, sizes):
    rows = []
    size = sizes[-1]
    for level in levels:
        ours = bench.ms(OURS, "level-load", level.name, size)
        if not ours:
            continue
        memory = bench.facts.get(("peak_bytes", level.name, size), {})
        content = bench.facts.get(("content_bytes", level.name, size), {}).get(GL)
        grown = bench.facts.get(("grown_bytes", level.name, size), {}).get(OURS)
        row = [level.name, number((level.base / level.file).stat().st_size / 1e6), number(content and content / 1e6),
               number(ours), number(grown and grown / 1e6), number(memory.get(OURS) and memory[OURS] / 1e6)]
        for who in (GL, IRRLICHT):
            theirs = bench.ms(who, "level-load", level.name, size)
            row += [number(theirs), times(ratio(theirs, ours)), number(memory.get(who) and memory[who] / 1e6)]
        rows.append(row)
    return (f"From the file to the first finished picture at {size.replace('x', ' × ')}, files in the system's cache, "
            "milliseconds. Content is what the level's triangles, lightmaps and textures with their mip levels come to, "
            "in millions of bytes; grown is what loading and the first picture added to the process's memory, peak the "
            "most that the whole process held (ours: of `ql-walk`, the pictures it writes included).\n\n" +
            table(["level", "file MB", "content MB", "ms", "grown MB", "peak MB", "llvmpipe ms", "ratio", "peak MB",
                   "Irrlicht ms", "ratio", "peak MB"], rows) +
            "\n![Loading](pictures/performance-load.svg)\n")


def limit_section(bench, sizes, best_threads, quiet):
    if not bench.limits:
        return ""
    one, all_ = 1, max(threads for _, threads in bench.limits)
    rows = []
    for case, name in {"copy": "copying memory, GB/s read and written", "triad": "a = b + 3c in memory, GB/s",
                       "fill-frame": "writing a picture of 1024 × 768, Mpix/s",
                       "fill-tile": "writing tiles of 64 × 64 in the first cache, Mpix/s",
                       "add-tile": "reading, adding and writing them, Mpix/s"}.items():
        rows.append([name, number(bench.limits.get((case, one))),
                     number(bench.limits.get((case, all_))) if all_ != one else ""])
    text = table(["the machine", "one thread", f"{all_} threads"], rows)

    size = sizes[-1]
    bandwidth = max(bench.limits[("copy", all_)], bench.limits[("triad", all_)])
    blend_rate = max(bench.limits[("add-tile", t)] for t in (one, all_))
    write_rate = max(bench.limits[("fill-tile", t)] for t in (one, all_))
    rows = []
    for case, name in {**FILLS, "triangles": "a million triangles"}.items():
        ours, alone = (bench.ms(OURS, case, "", size, t) for t in (best_threads, 1))
        if not ours:
            continue
        picture = pixels_of(size) * 4
        # Fill moves the picture once; triangles also their vertices, three of 24 bytes each.
        memory = (picture + (TRIANGLES * 72 if case == "triangles" else 0)) / bandwidth / 1e6
        # Sheets of triangles cover a quarter of the picture each.
        covered = pixels_of(size) * (31 / 4 if case == "triangles" else LAYERS)
        cache = covered / (blend_rate if case == "fill-alpha" else write_rate) / 1e3
        scaling = alone / ours if quiet and alone and best_threads > 1 else None
        if memory / ours > 0.5:
            binds = "memory bandwidth"
        elif cache / ours > 0.5:
            binds = "writes to the cache"
        elif scaling and scaling < 1.6:
            binds = "work that the threads do not share"
        else:
            binds = "setting triangles up" if case == "triangles" else "arithmetic per pixel"
        rows.append([name, number(ours), f"{100 * memory / ours:.1f} %", f"{100 * cache / ours:.1f} %",
                     f"{scaling:.2f}×" if scaling else "", binds])
    text += ("\nHow much of each case's time the machine would need for its memory traffic and for its writes alone, "
             f"at {size.replace('x', ' × ')}:\n\n" +
             table(["case", "ms", "memory", "writes", f"1 to {best_threads} threads", "what binds"], rows))
    return text


def other_section(others):
    rows = []
    for program, cases in others.items():
        for case in cases:
            unit = {"ns": 1e-3, "us": 1, "ms": 1e3, "s": 1e6}[case["time_unit"]]
            rate = ""
            if "bytes_per_second" in case:
                rate = f"{number(case['bytes_per_second'] / 1e6)} MB/s"
            elif "items_per_second" in case:
                rate = f"{number(case['items_per_second'] / 1e6)} M/s"
            elif "ratio" in case:  # of the two things that such a case compares
                rate = f"{case['ratio']:.2f} ×"
            name = re.sub(r"/(iterations:\d+|manual_time|real_time)", "", case["name"])
            rows.append([f"{program[len('bench_'):]}: {name}", number(case["real_time"] * unit), rate])
    return table(["benchmark", "µs", "rate"], rows)


def cpu_name():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def write_page(bench, peers, levels, sizes, differences, others, load):
    options = bench.options
    threads = {key[3] for key in bench.least if key[0] == "fill-opaque" and key[2] == sizes[-1]} - {0}
    best_threads = max(threads)
    commit = subprocess.run(["git", "rev-parse", "--short", "HEAD"], cwd=ROOT, capture_output=True, text=True).stdout
    spread = [max(runs) / min(runs) for by in bench.runs.values() for runs in by.values() if len(runs) > 1]
    cores = os.cpu_count() or 1
    quiet = load <= cores / 2
    page = ["# Performance\n",
            "Written by `scripts/performance.py`; run it to repeat this on another machine. Programs run by turns, "
            f"{options.runs} {'time' if options.runs == 1 else 'times'} each, and the fastest frame of all runs counts. "
            "A ratio is the peer's time over ours: above 1, ours is faster. Our renderer uses "
            f"{best_threads} threads, llvmpipe as many as the machine runs, Irrlicht one. The peers' sources are in "
            "`bench/peers/`.\n",
            f"Machine: {cpu_name()}, {cores} processors. Revision {commit.strip() or 'unknown'}, "
            f"{time.strftime('%Y-%m-%d')}. Load before the first run: {load:.1f}"
            + (f"; the same case took up to {max(spread):.2f} times its shortest run.\n" if spread else ".\n")]
    if options.quick or not quiet:
        page.append("**These figures come from " + ("a quick run" if options.quick else "a run") +
                    ("" if quiet else " on a busy machine") +
                    ": they show what is measured, not how fast it is.**\n")
    page += ["## Filling\n", fill_section(bench, peers, sizes, best_threads),
             "## Small triangles\n", triangle_section(bench, sizes, best_threads)]
    if levels:
        page += ["## Frames of levels\n", level_section(bench, levels, sizes),
                 "## Loading and memory\n", load_section(bench, levels, sizes)]
    limits = limit_section(bench, sizes, best_threads, quiet)
    if limits:
        page += ["## The machine's limits\n", limits]
    if differences:
        worst = max(differences, key=lambda d: d[2])
        page += ["## The same work\n",
                 f"The pictures of the fill and triangle cases were compared with the peers' before they were timed: mean "
                 f"differences of red and green are at most {worst[2]:.2f} of 255 ({FILLS.get(worst[0], worst[0])}, "
                 f"{NAMES[worst[1]]}). Ours are equal to the bit for one thread and for {best_threads}.\n"]
    if others:
        page += ["## Everything else\n",
                 "`scripts/bench.sh` runs these; each proves its answer before it is timed.\n", other_section(others)]
    (options.docs / "performance.md").write_text("\n".join(page).rstrip() + "\n")


def write_plots(bench, peers, levels, sizes, best_threads):
    folder = bench.options.docs / "pictures"
    folder.mkdir(exist_ok=True)
    size = sizes[-1]
    series = [OURS, *peers]

    def threads(who):
        return best_threads if who == OURS else 0

    def bars(case, rate=None):
        values = {}
        for who in series:
            ms = bench.ms(who, case, "", size, threads(who))
            values[NAMES[who]] = ms and (rate(ms) if rate else ms)
        return values

    def million_pixels(ms):
        return pixels_of(size) * LAYERS / ms / 1e3

    plots.write_bars(folder / "performance-fill.svg", f"Fill rate at {size.replace('x', ' × ')}", "Mpix/s, more is better",
                     [(name, bars(case, million_pixels)) for case, name in FILLS.items()])
    plots.write_bars(folder / "performance-triangles.svg", "A million small triangles", "ms, less is better",
                     [(size.replace("x", " × "), bars("triangles"))])
    for case, title, file in (("level-frame", "A frame of a level", "levels"), ("level-load", "Loading a level", "load")):
        groups = [(f"{level.name}, {s.replace('x', ' × ')}",
                   {NAMES[who]: bench.ms(who, case, level.name, s) for who in series})
                  for level in levels for s in (sizes if case == "level-frame" else sizes[-1:])]
        if groups:
            plots.write_bars(folder / f"performance-{file}.svg", title, "ms, less is better", groups)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true", help="one short run at the larger size")
    parser.add_argument("--runs", type=int, help="turns of all programs (default: 3)")
    parser.add_argument("--levels", type=pathlib.Path, help="base folder of more levels: maps/, textures/ ...")
    parser.add_argument("--maps", nargs="+", help="only these levels of it, by name")
    parser.add_argument("--poses", type=pathlib.Path, help="folder of their poses (default: the levels' maps/)")
    parser.add_argument("--fov", type=float, default=73.7398, help="vertical field of view in degrees")
    parser.add_argument("--build", type=pathlib.Path, help="a build folder that is ready (default: builds the preset)")
    parser.add_argument("--docs", type=pathlib.Path, default=ROOT / "docs", help="where the page goes")
    options = parser.parse_args()
    options.runs = options.runs or (1 if options.quick else 3)
    load = os.getloadavg()[0]
    if not options.build:
        build(options)
        options.build = ROOT / "build/bench"
    options.build = options.build.resolve()
    options.docs = options.docs.resolve()
    levels = find_levels(options)
    sizes = SIZES[-1:] if options.quick else SIZES
    with tempfile.TemporaryDirectory() as scratch:
        bench = Bench(options, scratch)
        peers, differences, others = measure(bench, levels, sizes)
        write_page(bench, peers, levels, sizes, differences, others, load)
        best_threads = max(key[3] for key in bench.least if key[0] == "fill-opaque")
        write_plots(bench, peers, levels, sizes, best_threads)
    print(options.docs / "performance.md")


if __name__ == "__main__":
    main()
