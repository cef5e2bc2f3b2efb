#!/usr/bin/env python3
"""Times `twinsift scan` against `jdupes -r -q` on the shared benchmark corpora, both on the same files.

Usage: bench/bench.py [--scale 1.0] [--root /tmp/corpus] [--runs 3] [--twinsift build/app/twinsift]
                      [--workloads home samesize small] [--million] [--no-readme]

For each workload the corpus is made with ../shared/bench/mkcorpus.py (once; reused while its
manifest matches the scale). twinsift runs with `--min-size 0`, so that it looks at every file as
jdupes does. Measured, each as the median of --runs:

- warm: each command timed right after a warm-up run of it (the machine drops idle page cache
  within about 30 s, so ratios only mean something between figures of the same run);
- rescan: twinsift with its digest cache filled by the warm-up run, against jdupes as above;
- cold: the page cache dropped (/proc/sys/vm/drop_caches) before each run; skipped when not allowed;
- bytes read: `rchar` of /proc/PID/io on the first (uncached) scan;
- peak memory (/usr/bin/time %M), and per file above twinsift's footprint on an empty folder.

--million adds the 1,000,000-file corpus (mkcorpus.py --scale 5 small). The table is printed and,
unless --no-readme, written into bench/README.md between its result markers with the date.
"""
import argparse
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
MKCORPUS = os.path.normpath(os.path.join(HERE, "..", "..", "shared", "bench", "mkcorpus.py"))
README = os.path.join(HERE, "README.md")
BEGIN, END = "<!-- results begin -->", "<!-- results end -->"

TARGETS = {  # workload: (warm, cold, rescan) ratios to jdupes
    "home": (1.0, 1.0, 0.3),
    "samesize": (1.5, 1.0, 0.3),
    "small": (0.6, None, 0.5),
    "million": (0.5, None, None),
}


def ensure_corpus(root, workload, scale):
    manifest = os.path.join(root, f"{workload}.manifest.json")
    if os.path.exists(manifest):
        with open(manifest) as f:
            m = json.load(f)
        if m.get("scale") == scale and os.path.isdir(m.get("tree", "")):
            return m
    os.makedirs(root, exist_ok=True)
    subprocess.run([sys.executable, MKCORPUS, "--root", root, "--scale", str(scale), workload],
                   check=True, stdout=subprocess.DEVNULL)
    with open(manifest) as f:
        return json.load(f)


def run(command, env):
    """Runs a shell command; returns (seconds, peak resident KiB, bytes read by read calls)."""
    with tempfile.NamedTemporaryFile("r", suffix=".time") as out, \
            tempfile.NamedTemporaryFile("r", suffix=".io") as io:
        # A reaped child's I/O counts are added to its parent's, so the shell's rchar after the
        # command covers the command (plus the shell's own few bytes).
        script = f"{command} >/dev/null 2>&1; cat /proc/$$/io > {io.name}"
        start = time.monotonic()
        subprocess.run(["/usr/bin/time", "-o", out.name, "-f", "%M", "sh", "-c", script],
                       env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        seconds = time.monotonic() - start
        peak = int(out.read().strip().splitlines()[-1])
        fields = dict(line.split(": ") for line in io.read().splitlines() if ": " in line)
    return seconds, peak, int(fields.get("rchar", 0))


def drop_caches():
    try:
        os.sync()
        with open("/proc/sys/vm/drop_caches", "w") as f:
            f.write("3\n")
        return True
    except OSError:
        return False


def ratio_text(value, target):
    if target is None:
        return f"{value:.2f}"
    return f"**{value:.2f}**" if value <= target else f"{value:.2f} (target ≤ {target})"


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--scale", type=float, default=1.0)
    ap.add_argument("--root", default="/tmp/corpus")
    ap.add_argument("--runs", type=int, default=3)
    ap.add_argument("--twinsift", default=os.path.join(HERE, "..", "build", "app", "twinsift"))
    ap.add_argument("--workloads", nargs="+", default=["home", "samesize", "small"])
    ap.add_argument("--million", action="store_true", help="add the 1,000,000-file corpus")
    ap.add_argument("--no-readme", action="store_true", help="print the table only")
    a = ap.parse_args()

    twinsift = os.path.abspath(a.twinsift)
    if not shutil.which("jdupes"):
        sys.exit("missing jdupes (scripts/install-deps.sh bench)")
    work = tempfile.mkdtemp(prefix="twinsift-bench-")
    env = dict(os.environ, XDG_CONFIG_HOME=os.path.join(work, "config"), XDG_CACHE_HOME=os.path.join(work, "cache"))
    cold = drop_caches()

    empty = os.path.join(work, "empty")
    os.mkdir(empty)
    baseline = run(f"{twinsift} scan --no-progress --no-cache --format json --min-size 0 {empty}", env)[1]
    date = time.strftime("%Y-%m-%d")
    print(f"# {date} · {os.uname().nodename} · {os.cpu_count()} cores · scale {a.scale} · "
          f"cold runs {'on' if cold else 'skipped (drop_caches not allowed)'}")
    print(f"twinsift on an empty folder: {baseline / 1024:.1f} MiB peak")

    workloads = [(w, a.root, a.scale, w) for w in a.workloads]
    if a.million:
        workloads.append(("million", os.path.join(a.root, "million"), 5.0, "small"))
    rows = []
    for name, root, scale, kind in workloads:
        m = ensure_corpus(root, kind, scale)
        tree = m["tree"]
        files = m["counts"]["regular_file_paths"]
        q = subprocess.list2cmdline([tree])
        first = f"{twinsift} scan --no-progress --no-cache --format json --min-size 0 {q}"
        cached = f"{twinsift} scan --no-progress --format json --min-size 0 {q}"
        jdupes = f"jdupes -r -q {q}"
        shutil.rmtree(env["XDG_CACHE_HOME"], ignore_errors=True)
        figures = {key: [] for key in ("ts", "jd", "re", "jd2", "ts_cold", "jd_cold")}
        peak, rchar_ts, rchar_jd = 0, 0, 0
        for _ in range(a.runs):
            run(first, env)
            seconds, kib, rchar_ts = run(first, env)
            figures["ts"].append(seconds)
            peak = max(peak, kib)
            run(jdupes, env)
            seconds, _, rchar_jd = run(jdupes, env)
            figures["jd"].append(seconds)
            run(cached, env)  # fills the digest cache, then warms the page cache
            figures["re"].append(run(cached, env)[0])
            run(jdupes, env)
            figures["jd2"].append(run(jdupes, env)[0])
            if cold and name != "million":
                drop_caches()
                figures["ts_cold"].append(run(first, env)[0])
                drop_caches()
                figures["jd_cold"].append(run(jdupes, env)[0])
        med = {key: statistics.median(v) if v else None for key, v in figures.items()}
        per_file = max(0, peak - baseline) * 1024 / max(files, 1)
        row = {
            "name": name, "files": files, "gb": m["bytes"]["apparent_total"] / 1e9, "med": med,
            "warm": med["ts"] / med["jd"], "rescan": med["re"] / med["jd2"],
            "cold": med["ts_cold"] / med["jd_cold"] if med["ts_cold"] else None,
            "bytes": rchar_ts / max(rchar_jd, 1), "rchar": (rchar_ts, rchar_jd), "peak": peak, "per_file": per_file,
        }
        rows.append(row)
        print(f"\n## {name}: {files:,} files, {row['gb']:.2f} GB")
        for key, label in (("ts", "twinsift"), ("jd", "jdupes"), ("re", "twinsift rescan"), ("jd2", "jdupes again"),
                           ("ts_cold", "twinsift cold"), ("jd_cold", "jdupes cold")):
            if med[key] is not None:
                print(f"{label:<18} {med[key]:8.3f} s")
        print(f"bytes read: twinsift {rchar_ts:,}, jdupes {rchar_jd:,}; peak {peak / 1024:.1f} MiB, "
              f"{per_file:.0f} bytes per file")

    lines = [f"Run of {date}: {os.cpu_count()} cores, scale {a.scale}, medians of {a.runs} runs, twinsift with "
             f"`--min-size 0`; empty-folder footprint {baseline / 1024:.1f} MiB. "
             + ("Cold runs drop the page cache first." if cold else "Cold runs skipped: the page cache could not "
                "be dropped here."), "",
             "| corpus | files | twinsift | jdupes | rescan | cold twinsift / jdupes | peak | bytes per file |",
             "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: |"]
    for r in rows:
        med = r["med"]
        cold_text = f"{med['ts_cold']:.2f} s / {med['jd_cold']:.2f} s" if med["ts_cold"] else "–"
        lines.append(f"| {r['name']} | {r['files']:,} | {med['ts']:.3f} s | {med['jd']:.3f} s | {med['re']:.3f} s | "
                     f"{cold_text} | {r['peak'] / 1024:.1f} MiB | {r['per_file']:.0f} |")
    lines += ["", "| ratio to jdupes | " + " | ".join(r["name"] for r in rows) + " |",
              "| --- |" + " ---: |" * len(rows)]
    for key, label, index in (("warm", "warm", 0), ("cold", "cold page cache", 1), ("rescan", "rescan, cache warm", 2),
                              ("bytes", "bytes read, first scan", None)):
        cells = []
        for r in rows:
            target = TARGETS.get(r["name"], (None, None, None))[index] if index is not None else None
            if key == "bytes" and r["name"] == "samesize":
                target = 2.0
            cells.append("–" if r[key] is None else ratio_text(r[key], target))
        lines.append(f"| {label} | " + " | ".join(cells) + " |")
    table = "\n".join(lines)
    print("\n" + table)

    if not a.no_readme:
        with open(README) as f:
            text = f.read()
        block = f"{BEGIN}\n{table}\n{END}"
        if BEGIN in text:
            text = re.sub(re.escape(BEGIN) + ".*?" + re.escape(END), lambda _: block, text, flags=re.S)
        else:
            text = text.rstrip("\n") + "\n\n## Results\n\n" + block + "\n"
        with open(README, "w") as f:
            f.write(text)
    shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    main()
