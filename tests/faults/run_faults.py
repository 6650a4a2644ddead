#!/usr/bin/env python3
"""Applies the deliberate faults of faults_*.txt one at a time to a scratch copy
of the tree and records which tests catch each: the unit tests always, and the
end-to-end scripts a fault names. A tool for whoever cuts or rewrites tests:
run it before and after, then --before compares the two records.

  run_faults.py [--tree DIR] [--work DIR] [--jobs N] [--check] [--no-e2e]
                [--first] [--hang N] [--out FILE] [--before FILE] [ID|PREFIX|AREA ...]

--tree is the tree under test (default: the one holding this script). --check
only applies and builds each fault (a fault must build with -Werror). --first
stops at the first test that catches a fault, quickest first: faults of the
ordinal core make many tests hang, and the full list takes long. --hang N: a
test hangs past N times its usual time and 20 s more (default 4). The
end-to-end scripts need DISPLAY (an X server such as Xvfb).

A fault: "[ID] AREA | FILE | E2E SCRIPTS | WHY", then "- " lines (joined by
newlines: text that occurs exactly once in FILE) and "+ " lines (what replaces
it; none deletes it)."""
import argparse, glob, os, re, shutil, subprocess, sys, threading, time

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))


def parse_faults():
    faults = []
    for path in sorted(glob.glob(os.path.join(ROOT, "tests", "faults", "faults_*.txt"))):
        cur = None
        for n, line in enumerate(open(path, encoding="utf-8").read().split("\n"), 1):
            m = re.match(r"^\[([\w-]+)\]\s*(\S+)\s*\|\s*(\S+)\s*\|([^|]*)(?:\|(.*))?$", line)
            if m:
                cur = dict(id=m[1], area=m[2], file=m[3], e2e=m[4].split(), find=[], put=[])
                faults.append(cur)
            elif cur and line[:1] in ("-", "+") and (len(line) == 1 or line[1] == " "):
                cur["find" if line[0] == "-" else "put"].append(line[2:])
            elif line.strip() and not line.startswith("#"):
                sys.exit(f"{os.path.basename(path)}:{n}: cannot read this line: {line}")
    ids = [f["id"] for f in faults]
    dup = {i for i in ids if ids.count(i) > 1}
    if dup:
        sys.exit("faults named twice: " + " ".join(sorted(dup)))
    return faults


def run(cmd, cwd, timeout, env=None):
    """The status and output of cmd, or "timeout". A command that times out is
    ended with all it started: a script's hanging child keeps the output open."""
    p = subprocess.Popen(cmd, cwd=cwd, env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                         text=True, errors="replace", start_new_session=True)
    try:
        out, _ = p.communicate(timeout=timeout)
        return p.returncode, out
    except subprocess.TimeoutExpired:
        os.killpg(p.pid, 9)
        out, _ = p.communicate()
        return "timeout", out


def prepare(tree, work):
    """A copy of the tree (without builds) and its own build directory."""
    src, build = os.path.join(work, "src"), os.path.join(work, "build")
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=tree,
                           stdout=subprocess.PIPE, text=True, check=True).stdout.split("\n")
    for f in filter(None, files):
        a, b = os.path.join(tree, f), os.path.join(src, f)
        # only what differs is written: its new time makes the build take it up,
        # also where a run stopped in the middle of a fault
        if os.path.isfile(a) and not (os.path.isfile(b) and open(a, "rb").read() == open(b, "rb").read()):
            os.makedirs(os.path.dirname(b), exist_ok=True)
            shutil.copyfile(a, b)
    rc, out = run(["cmake", "-S", src, "-B", build, "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
                   "-DORDLINE_WERROR=ON"], work, 600)
    rc2, out2 = run(["cmake", "--build", build, "-j2"], work, 1800)
    if rc != 0 or rc2 != 0:
        sys.exit(f"the scratch tree in {work} does not build:\n{out}{out2[-3000:]}")
    return src, build


def ordtool_tables(src, build, timeout):
    return run(["sh", os.path.join(src, "tests", "e2e", "ordtool_tables.sh"),
                os.path.join(build, "ordtool")], build, timeout)


def usual_times(src, build):
    """The seconds each unit test (by name) and ordtool_tables take on the tree as it is."""
    exe = os.path.join(build, "tests", "unit", "unit_tests")
    rc, out = run([exe, "--gtest_color=no"], build, 900)
    times = {m[1]: int(m[2]) / 1000 for m in re.finditer(r"^\[ +OK \] (\S+) \((\d+) ms\)", out, re.M)}
    if rc != 0 or not times:
        sys.exit(f"the unit tests fail on the tree as it is:\n{out[-3000:]}")
    start = time.monotonic()
    rc, out = ordtool_tables(src, build, 600)
    if rc != 0:
        sys.exit(f"ordtool_tables fails on the tree as it is:\n{out[-3000:]}")
    return times, time.monotonic() - start


def unit_failures(build, times, first=False, hang=4):
    """Names of the unit tests that fail, each run on its own so that a crash
    or a hang (`hang` times its usual time and 20 s more) counts against it alone."""
    exe = os.path.join(build, "tests", "unit", "unit_tests")
    caught = []
    for name, t in (sorted(times.items(), key=lambda i: i[1]) if first else times.items()):
        if first and caught:
            break
        rc, out = run([exe, "--gtest_color=no", "--gtest_filter=" + name], build, hang * t + 20)
        if rc == "timeout":
            caught.append(name + "(hang)")
        elif rc != 0:
            caught.append(name + ("" if "[  FAILED  ]" in out else "(crash)"))
    return caught


E2E_LOCK = threading.Lock()  # one window at a time on the display


def e2e_failures(src, build, names):
    env = dict(os.environ, ORDLINE=os.path.join(build, "ordline"),
               ORDTOOL=os.path.join(build, "ordtool"),
               XCLOSE=os.path.join(build, "tests", "e2e", "xclose"),
               TEXT_PROBE=os.path.join(build, "tests", "e2e", "text_probe"),
               E2E_REFERENCE=os.path.join(src, "tests", "e2e", "reference"),
               E2E_OUT=os.path.join(build, "e2e"))
    caught = []
    with E2E_LOCK:
        for name in names:
            rc, _ = run(["bash", os.path.join(src, "tests", "e2e", name + ".sh")], build, 400, env)
            if rc not in (0, 77):
                caught.append("e2e." + name + ("(hang)" if rc == "timeout" else ""))
    return caught


def try_fault(f, src, build, times, tables_time, check, e2e, first=False, hang=4):
    path = os.path.join(src, f["file"])
    if not os.path.isfile(path):
        return "bad", "no such file"
    text = open(path, encoding="utf-8").read()
    find, put = "\n".join(f["find"]), "\n".join(f["put"])
    if not find or text.count(find) != 1:
        return "bad", f"the text to find occurs {text.count(find) if find else 0} times"
    try:
        open(path, "w", encoding="utf-8").write(text.replace(find, put))
        targets = ["all"] if (f["e2e"] and e2e) else ["unit_tests", "ordtool"]
        rc, out = run(["cmake", "--build", build, "-j1", "--target"] + targets, src, 900)
        if rc != 0:
            errs = [l for l in out.split("\n") if "error" in l][:2]
            return "bad", "does not build: " + " / ".join(errs)
        if check:
            return "builds", ""
        caught = unit_failures(build, times, first, hang)
        if first and caught:
            return "caught", " ".join(caught)
        rc, _ = ordtool_tables(src, build, hang * tables_time + 20)
        if rc != 0:
            caught.append("ordtool_tables" + ("(hang)" if rc == "timeout" else ""))
        if f["e2e"] and e2e:
            caught += e2e_failures(src, build, f["e2e"])
        return ("caught" if caught else "missed"), " ".join(caught)
    finally:
        open(path, "w", encoding="utf-8").write(text)
        os.utime(path)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--tree", default=ROOT)
    ap.add_argument("--work", default=os.path.join(ROOT, "build", "faults"))
    ap.add_argument("--jobs", type=int, default=1)
    ap.add_argument("--check", action="store_true")
    ap.add_argument("--no-e2e", action="store_true")
    ap.add_argument("--first", action="store_true")
    ap.add_argument("--hang", type=float, default=4)
    ap.add_argument("--out")
    ap.add_argument("--before")
    ap.add_argument("select", nargs="*")
    a = ap.parse_args()
    faults = parse_faults()
    if a.select:
        faults = [f for f in faults if any(f["id"] == s or f["id"].startswith(s + "-")
                                           or f["area"] == s for s in a.select)]
    if a.before:
        return compare(a.before, a.out)
    print(f"{len(faults)} faults", flush=True)
    done = set()
    if a.out and os.path.exists(a.out):  # a run cut short goes on where it stopped
        done = {l.split("\t")[0] for l in open(a.out) if "\t" in l}
    out = open(a.out, "a") if a.out else None
    todo, lock, results = [f for f in faults if f["id"] not in done], threading.Lock(), {}

    def worker(k):
        try:
            src, build = prepare(os.path.abspath(a.tree), os.path.join(a.work, f"s{k}"))
            times, tables_time = ({}, 0) if a.check else usual_times(src, build)
        except SystemExit as e:
            print(e, flush=True)
            return
        while True:
            with lock:
                if not todo:
                    return
                f = todo.pop(0)
            status, detail = try_fault(f, src, build, times, tables_time, a.check, not a.no_e2e,
                                       a.first, a.hang)
            line = f"{f['id']}\t{status}\t{detail}"
            with lock:
                results[f["id"]] = line
                print(line, flush=True)
                if out:
                    out.write(line + "\n")
                    out.flush()

    threads = [threading.Thread(target=worker, args=(k,)) for k in range(max(1, a.jobs))]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    counts = {}
    for line in results.values():
        counts[line.split("\t")[1]] = counts.get(line.split("\t")[1], 0) + 1
    print(" ".join(f"{k} {v}" for k, v in sorted(counts.items())))
    return 1 if counts.get("bad") else 0


def compare(before_path, after_path):
    """Every fault caught in the first record must be caught in the second."""
    def load(p):
        return {l.split("\t")[0]: l.rstrip("\n").split("\t") + [""] for l in open(p) if "\t" in l}
    before, after = load(before_path), load(after_path)
    lost = [i for i, b in before.items() if b[1] == "caught" and after.get(i, ["", ""])[1] != "caught"]
    for i in sorted(before):
        print(f"{i}\t{before[i][1]}\t{after.get(i, ['', 'absent'])[1]}")
    print(f"caught before {sum(b[1] == 'caught' for b in before.values())}, "
          f"after {sum(b[1] == 'caught' for b in after.values())}, lost {len(lost)}: {' '.join(lost)}")
    return 1 if lost else 0


if __name__ == "__main__":
    sys.exit(main())
