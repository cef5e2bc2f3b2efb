#!/usr/bin/env python3
"""Times `twinsift scan` against md5sum, jdupes and rmlint on the shared benchmark corpora.

Usage: bench/bench.py [--scale 1.0] [--root /tmp/corpus] [--runs 3] [--twinsift build/app/twinsift]
                      [--workloads home samesize small]

For each workload the corpus is made with ../shared/bench/mkcorpus.py (once; reused while its
manifest matches the scale), every command is run once to warm the page cache, then the commands
are timed in turn --runs times; medians are printed with peak memory and the ratios the targets
are stated in. The machine drops idle page cache within about 30 s, so each command is timed right
after a warm-up and ratios come from the same run.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
MKCORPUS = os.path.normpath(os.path.join(HERE, "..", "..", "shared", "bench", "mkcorpus.py"))


def ensure_corpus(root, workload, scale):
    manifest = os.path.join(root, f"{workload}.manifest.json")
    if os.path.exists(manifest):
        with open(manifest) as f:
            m = json.load(f)
        if m.get("scale") == scale and os.path.isdir(m.get("tree", "")):
            return m
    subprocess.run([sys.executable, MKCORPUS, "--root", root, "--scale", str(scale), workload],
                   check=True, stdout=subprocess.DEVNULL)
    with open(manifest) as f:
        return json.load(f)


def timed(command, env=None):
    """Runs a shell command; returns (seconds, peak resident KiB)."""
    with tempfile.NamedTemporaryFile("r", suffix=".time") as out:
        start = time.monotonic()
        subprocess.run(["/usr/bin/time", "-o", out.name, "-f", "%M", "sh", "-c", command],
                       env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        seconds = time.monotonic() - start
        peak = int(out.read().strip().splitlines()[-1])
    return seconds, peak


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--scale", type=float, default=1.0)
    ap.add_argument("--root", default="/tmp/corpus")
    ap.add_argument("--runs", type=int, default=3)
    ap.add_argument("--twinsift", default=os.path.join(HERE, "..", "build", "app", "twinsift"))
    ap.add_argument("--workloads", nargs="+", default=["home", "samesize", "small"])
    a = ap.parse_args()

    twinsift = os.path.abspath(a.twinsift)
    store = tempfile.mkdtemp(prefix="twinsift-bench-config-")
    env = dict(os.environ, XDG_CONFIG_HOME=store)
    missing = [t for t in ("jdupes", "rmlint", "md5sum") if not shutil.which(t)]
    if missing:
        sys.exit(f"missing peer tools: {' '.join(missing)} (scripts/install-deps.sh bench)")

    print(f"# {time.strftime('%Y-%m-%d')} · {os.uname().nodename} · {os.cpu_count()} cores · scale {a.scale}")
    # The program's fixed footprint (libraries, the MIME database) is measured on an empty folder and
    # taken off the peak, so that the per-file figure shows what the scan itself keeps per file.
    empty = tempfile.mkdtemp(prefix="twinsift-bench-empty-")
    baseline = timed(f"{twinsift} scan --no-progress --format json --min-size 0 {empty}", env)[1]
    os.rmdir(empty)
    print(f"twinsift on an empty folder: {baseline / 1024:.1f} MiB peak")
    rows = []
    for workload in a.workloads:
        m = ensure_corpus(a.root, workload, a.scale)
        tree = m["tree"]
        files = m["counts"]["regular_file_paths"]
        q = subprocess.list2cmdline([tree])
        commands = {
            "twinsift": f"{twinsift} scan --no-progress --format json {q}",
            "twinsift --min-size 0": f"{twinsift} scan --no-progress --format json --min-size 0 {q}",
            "md5sum (all files)": f"find {q} -type f -print0 | xargs -0 md5sum",
            "jdupes -r -q": f"jdupes -r -q {q}",
            "rmlint": f"cd {tempfile.gettempdir()} && rmlint -o json:/dev/null {q}",
        }
        times = {name: [] for name in commands}
        peaks = {name: [] for name in commands}
        for _ in range(a.runs):
            for name, command in commands.items():
                timed(command, env)  # warm-up right before the timed run
                seconds, peak = timed(command, env)
                times[name].append(seconds)
                peaks[name].append(peak)
        median = {name: statistics.median(v) for name, v in times.items()}
        print(f"\n## {workload}: {files:,} files, {m['bytes']['apparent_total'] / 1e9:.2f} GB")
        print(f"{'command':<24} {'median s':>9} {'peak MiB':>9}")
        for name in commands:
            print(f"{name:<24} {median[name]:>9.3f} {max(peaks[name]) / 1024:>9.1f}")
        ratio_md5 = median["twinsift"] / median["md5sum (all files)"]
        ratio_md5_all = median["twinsift --min-size 0"] / median["md5sum (all files)"]
        ratio_jdupes = median["twinsift"] / median["jdupes -r -q"]
        ratio_jdupes_all = median["twinsift --min-size 0"] / median["jdupes -r -q"]
        per_file = max(0, max(peaks["twinsift --min-size 0"]) - baseline) * 1024 / max(files, 1)
        print(f"twinsift / md5sum: {ratio_md5:.2f} (defaults), {ratio_md5_all:.2f} (--min-size 0)")
        print(f"twinsift / jdupes: {ratio_jdupes:.2f} (defaults), {ratio_jdupes_all:.2f} (--min-size 0)")
        print(f"twinsift peak memory per file (above the empty-folder footprint): {per_file:.0f} bytes")
        rows.append((workload, ratio_md5, ratio_jdupes, per_file))

    print("\n## targets")
    for workload, r_md5, r_jd, per_file in rows:
        if workload in ("home", "samesize"):
            print(f"{workload}: {r_md5:.2f} x md5sum (target <= 0.65) {'ok' if r_md5 <= 0.65 else 'MISSED'}")
        if workload == "small":
            print(f"{workload}: {r_jd:.2f} x jdupes (target <= 2) {'ok' if r_jd <= 2 else 'MISSED'}")
        print(f"{workload}: {per_file:.0f} bytes per file (target < 1024) {'ok' if per_file < 1024 else 'MISSED'}")
    shutil.rmtree(store, ignore_errors=True)


if __name__ == "__main__":
    main()
