#!/usr/bin/env python3
"""Moving many same-named files to the trash: twinsift's command line against a plain loop.

Makes N files in groups of 100 per name (dup/dNNN/aMMMM.dat, each with a kept copy under keep/),
then times `twinsift scan --keep oldest --action trash --yes` on the tree, and separately a plain
loop that writes each .trashinfo with O_EXCL and renames the file into files/, choosing a free name
from a counter per name. Prints both and the ratio (the removal's own time: the command's time less
a listing run without --yes, which scans and plans the same tree). Both are given as wall-clock time
and as processor time (user and system): on a machine shared with other work the processor time is
the steadier figure. Each of --runs runs makes trees of its own; the medians are reported."""
import argparse, os, resource, shutil, statistics, subprocess, sys, tempfile, time

def make_tree(root, count):
    names = 100
    for i in range(count):
        folder, name = divmod(i, names)
        body = (b"%08d" % i) * 25
        for side in ("keep", "dup"):
            d = os.path.join(root, side, "d%04d" % folder)
            os.makedirs(d, exist_ok=True)
            with open(os.path.join(d, "a%04d.dat" % name), "wb") as f:
                f.write(body)
    # A file of its own in every folder keeps the folders from being copies of each other, so the
    # files are the groups.
    for folder in range((count + names - 1) // names):
        with open(os.path.join(root, "dup", "d%04d" % folder, "own.txt"), "wb") as f:
            f.write(b"own %d" % folder)
    # the kept copies are the older ones
    past = time.time() - 3600
    for dirpath, _, files in os.walk(os.path.join(root, "keep")):
        for f in files:
            os.utime(os.path.join(dirpath, f), (past, past))

def cpu_self():
    usage = resource.getrusage(resource.RUSAGE_SELF)
    return usage.ru_utime + usage.ru_stime

def cpu_children():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime

def plain_loop(root, trash):
    files = os.path.join(trash, "files")
    info = os.path.join(trash, "info")
    os.makedirs(files, exist_ok=True)
    os.makedirs(info, exist_ok=True)
    counters = {}
    start = time.perf_counter()
    cpu = cpu_self()
    for dirpath, _, names in os.walk(os.path.join(root, "dup")):
        for name in names:
            if name == "own.txt":
                continue
            n = counters.get(name, 1)
            while True:
                candidate = name if n == 1 else name[:-4] + ".%d.dat" % n
                try:
                    fd = os.open(os.path.join(info, candidate + ".trashinfo"), os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600)
                except FileExistsError:
                    n += 1
                    continue
                path = os.path.join(dirpath, name)
                os.write(fd, b"[Trash Info]\nPath=" + path.encode() + b"\nDeletionDate=2026-01-01T00:00:00\n")
                os.close(fd)
                os.rename(path, os.path.join(files, candidate))
                counters[name] = n + 1
                break
    return time.perf_counter() - start, cpu_self() - cpu

def timed(command, env):
    start = time.perf_counter()
    cpu = cpu_children()
    subprocess.run(command, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return time.perf_counter() - start, cpu_children() - cpu

def measure(args, base):
    """One run on trees of their own: twinsift's removal and the plain loop, wall and processor time."""
    work = tempfile.mkdtemp(prefix="trash-names-", dir=base)
    try:
        env = dict(os.environ, XDG_DATA_HOME=os.path.join(work, "data"), XDG_CONFIG_HOME=os.path.join(work, "config"),
                   XDG_CACHE_HOME=os.path.join(work, "cache"))
        # Both trees are made before anything is timed, so that neither side runs just after the
        # other's files were deleted (ext4 skips the inodes of recent deletions when it makes a file,
        # which slows every create for a minute or more).
        tree = os.path.join(work, "tree")
        make_tree(tree, args.files)
        loop_tree = os.path.join(work, "loop-tree")
        make_tree(loop_tree, args.files)
        scan = [args.twinsift, "scan", "--min-size", "0", "--no-progress", "--no-cache", "--keep", "oldest",
                "--action", "trash", tree]
        timed(scan, env)  # warm-up
        listing, listing_cpu = timed(scan, env)
        whole, whole_cpu = timed(scan + ["--yes"], env)
        ours, ours_cpu = whole - listing, whole_cpu - listing_cpu
        trashed = len(os.listdir(os.path.join(work, "data", "Trash", "files")))
        loop, loop_cpu = plain_loop(loop_tree, os.path.join(work, "loop-trash"))
        print("twinsift: %d files trashed in %.2f s, %.2f s of processor (%.2f s with the scan and plan); "
              "plain loop: %.2f s, %.2f s of processor; ratio %.2f, of processor time %.2f"
              % (trashed, ours, ours_cpu, whole, loop, loop_cpu, ours / loop, ours_cpu / loop_cpu), flush=True)
        return ours, ours_cpu, loop, loop_cpu
    finally:
        shutil.rmtree(work, ignore_errors=True)

def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--files", type=int, default=50000)
    parser.add_argument("--twinsift", default="build/app/twinsift")
    parser.add_argument("--dir", default=None, help="where to make the trees (default: the temporary folder)")
    parser.add_argument("--runs", type=int, default=3, help="runs, each on new trees; medians are reported")
    args = parser.parse_args()
    runs = [measure(args, args.dir) for _ in range(args.runs)]
    median = lambda values: statistics.median(values)
    ours, ours_cpu, loop, loop_cpu = (median([run[i] for run in runs]) for i in range(4))
    print("twinsift: %d files in %.2f s, %.2f s of processor (medians of %d runs)"
          % (args.files, ours, ours_cpu, len(runs)))
    print("plain loop: %d files in %.2f s, %.2f s of processor" % (args.files, loop, loop_cpu))
    print("trash_names: ratio %.2f, of processor time %.2f (medians of each run's ratios; target <= 1.3)"
          % (median([run[0] / run[2] for run in runs]), median([run[1] / run[3] for run in runs])))

if __name__ == "__main__":
    sys.exit(main())
