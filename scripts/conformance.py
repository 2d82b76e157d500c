#!/usr/bin/env python3
"""Conformance sweep: every implemented row of the decode table, run on
random cases by our core and by a CPU with SVE (qemu -cpu max at 512 bits),
the final states compared in full, differences explained only by
tests/conformance/departures.toml.

  scripts/conformance.py --cases 200                  full sweep, native runner
  scripts/conformance.py --cases 200 --cross          also the AArch64 runner under qemu
  scripts/conformance.py --rows 'VecU32Add*' --cases 1000 --seed 7
  scripts/conformance.py --replay VecU32AddVVX:0x1234  one case, differences in full

Writes report.md and report.html to --out (default <build>/conformance) and
exits 1 on any unexplained difference or runner death.
"""
import argparse
import collections
import fnmatch
import html
import json
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import conformance_compare as cc  # noqa: E402

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
REF_QEMU = ["qemu-aarch64", "-cpu", "max,sve512=on,sve-default-vector-length=64"]
CROSS_QEMU = ["qemu-aarch64", "-cpu", "cortex-a72", "-L", "/usr/aarch64-linux-gnu"]
CHUNK = 12000  # cases per runner launch
SIDE_NAMES = {"ref": "reference (qemu max, 512-bit)", "ours": "ours (native)",
              "cross": "ours (aarch64, qemu cortex-a72)", "generator": "generator", "comparator": "comparator"}


def fail(msg):
    print("conformance: " + msg, file=sys.stderr)
    sys.exit(2)


class Tools:
    def __init__(self, build, cross_build, want_cross):
        if shutil.which("qemu-aarch64") is None:
            fail("qemu-aarch64 is not installed: it runs the reference runner (and the AArch64 runner)")
        d = os.path.join(build, "tests", "conformance")
        self.gen = os.path.join(d, "conf_gen")
        self.ours = os.path.join(d, "ours_runner")
        self.ref = os.path.join(d, "ref_runner")
        for p in (self.gen, self.ours, self.ref):
            if not os.path.exists(p):
                fail("%s is missing: build the targets conf_gen, conf_ours_runner and conf_ref_runner in %s"
                     % (p, build))
        self.cross = None
        if want_cross:
            self.cross = os.path.join(cross_build, "tests", "conformance", "ours_runner")
            if not os.path.exists(self.cross):
                fail("the AArch64 runner %s is missing: build the target conf_ours_runner in the cross build %s"
                     % (self.cross, cross_build))
        layout = json.loads(subprocess.run([self.gen, "--layout"], check=True, capture_output=True,
                                           text=True).stdout)
        if layout != cc.LAYOUT:
            fail("data-area layout of conf_gen %s differs from conformance_compare.py %s" % (layout, cc.LAYOUT))

    def rows(self):
        out = subprocess.run([self.ours, "--rows"], check=True, capture_output=True, text=True).stdout
        rows = []
        for line in out.splitlines():
            name, mask, bits, impl = line.split()
            rows.append((name, int(mask, 16), int(bits, 16), impl == "1"))
        return rows


# ---- Running the runners ---------------------------------------------------

class RunOutcome:
    def __init__(self):
        self.results = []   # one per case: a cc.Result, or None when the case killed the runner
        self.deaths = {}    # case index -> description
        self.seconds = 0.0
        self.cpu = 0.0


def run_runner(cmd, cases, workdir, label):
    """Runs `cmd` over the case records; a case that kills the runner gets
    None and the runner is started again after it."""
    out = RunOutcome()
    start = time.time()
    pos = 0
    n = len(cases) // cc.CASE_SIZE
    while pos < n:
        inp = os.path.join(workdir, label + ".in")
        with open(inp, "wb") as f:
            f.write(cases[pos * cc.CASE_SIZE:])
        with open(inp, "rb") as fin, tempfile.TemporaryFile(dir=workdir) as fout, \
                tempfile.TemporaryFile(dir=workdir) as ferr:
            proc = subprocess.Popen(cmd, stdin=fin, stdout=fout, stderr=ferr)
            # wait4 for the CPU time: wall time means little on a shared machine.
            _, status, usage = os.wait4(proc.pid, 0)
            proc.returncode = os.waitstatus_to_exitcode(status)
            out.cpu += usage.ru_utime + usage.ru_stime
            fout.seek(0)
            res = cc.parse_results(fout.read())
            ferr.seek(0)
            err = ferr.read().decode(errors="replace").strip().splitlines()
        out.results.extend(res)
        pos += len(res)
        if pos < n:
            why = "exit status %d" % proc.returncode if proc.returncode >= 0 else \
                "killed by %s" % cc.signame(-proc.returncode)
            tail = err[-1] if err else ""
            out.deaths[pos] = "%s runner died (%s)%s" % (label, why, ": " + tail if tail else "")
            out.results.append(None)
            pos += 1
        elif proc.returncode != 0:
            out.deaths.setdefault(n, "%s runner ended with status %d" % (label, proc.returncode))
    out.seconds = time.time() - start
    return out


def run_parallel(jobs):
    """jobs: list of (key, cmd, cases, workdir, label). Runs them at once."""
    outcomes = {}
    threads = []
    for key, cmd, cases, workdir, label in jobs:
        def work(key=key, cmd=cmd, cases=cases, workdir=workdir, label=label):
            outcomes[key] = run_runner(cmd, cases, workdir, label)
        t = threading.Thread(target=work)
        t.start()
        threads.append(t)
    for t in threads:
        t.join()
    return outcomes


# ---- The instrument's check of itself ------------------------------------------

def self_check(tools, workdir):
    """The reference runner must hand back exactly the state it was given
    around an instruction that changes nothing (PRFB), and compute a result
    known without it (ADD .S): a harness that lost or moved a register would
    make every comparison meaningless. Returns a list of problems."""
    probes = ["VecU8Prefetch1SI:%d" % k for k in range(1, 9)] + ["VecU32AddVVX:%d" % k for k in range(1, 9)]
    args = []
    for sp in probes:
        args += ["--case", sp]
    cases = subprocess.run([tools.gen] + args, check=True, stdout=subprocess.PIPE).stdout
    out = run_runner(REF_QEMU + [tools.ref], cases, workdir, "reference")
    problems = []
    for sp, case, res in zip(probes, cc.parse_cases(cases), out.results):
        if res is None or res.signal:
            problems.append("%s: reference stopped (%s)" % (sp, cc._outcome(res)))
            continue
        expect = bytearray(case.raw_state)
        if sp.startswith("VecU32AddVVX"):
            w = case.word
            zd, zn, zm = w & 31, (w >> 5) & 31, (w >> 16) & 31
            a, b = case.st.z[zn], case.st.z[zm]
            lanes = b"".join(((int.from_bytes(a[i:i + 4], "little") + int.from_bytes(b[i:i + 4], "little"))
                              & 0xFFFFFFFF).to_bytes(4, "little") for i in range(0, 64, 4))
            expect[280 + 64 * zd:280 + 64 * (zd + 1)] = lanes
        if bytes(expect) != res.raw_state or res.mem:
            bad = [d.kind + ("%s" % d.index if d.index is not None else "")
                   for d in cc.state_diffs(cc.Result(0, 0, 0, 0, 0, bytes(expect), {}), res)]
            problems.append("%s: reference state differs from the expected in %s" % (sp, ", ".join(bad)))
    return problems


# ---- Bookkeeping -------------------------------------------------------------

class RowStats:
    def __init__(self, name):
        self.name = name
        self.cases = 0
        self.match = 0
        self.explained = 0
        self.failed = 0
        self.first_fail = None      # (seed, side, summary)
        self.routes = collections.Counter()
        self.ref_signals = collections.Counter()
        self.departures = collections.Counter()
        self.cross_cases = 0
        self.cross_failed = 0

    def route(self):
        if not self.routes:
            return "?"
        return "/".join(r for r, _ in self.routes.most_common())


def route_of(res):
    if res is None or res.signal or res.rc:
        return None
    if res.info & cc.INFO_WROTE_INSTRUCTION:
        return "kernel"
    if res.info & cc.INFO_NORMALISED_FFR:
        return "reference"
    return "nothing"


# The operand shapes that end handler names, longest tried first, so that
# the operation keeps letters that look like shape letters (FMS in FMSVVVM,
# FRIntM in FRIntMVM).
SHAPES = sorted("""VVVIX VVVM VVVX VVIX VVVI VVM VVX VVZ VVI VIM VIX VIZ VWZ VWM VWX V0Z XVV YVV VM VZ VX VV VI
    PPZ PZ PM PP PS PV P SV SI SS II IS IM IZ SM LSSZ SSZ SIZ VSZ SVZ XVSZ YVSZ XSVZ YSVZ LSS XSV YSV
    I S V Z X M""".split(), key=len, reverse=True)


def family(name):
    """Handler-name stem: the operation without type, shape or digits, e.g.
    VecU32AddVVX -> Add, VecS64Load2XSVZ -> Load, VecS8CmpFlgEQVIZ -> CmpEQ."""
    m = cc.TYPE_RE.match(name)
    rest = m.group(4) if m else name
    for shape in SHAPES:
        if rest.endswith(shape) and len(rest) > len(shape):
            rest = rest[:-len(shape)]
            break
    return re.sub(r"\d", "", rest.replace("Flg", "")) or rest


# ---- Sweep -------------------------------------------------------------------

def sweep(args, tools):
    rows = tools.rows()
    pats = [p for p in (args.rows or "*").split(",") if p]
    chosen = [r for r in rows if any(fnmatch.fnmatchcase(r[0], p) for p in pats)]
    if not chosen:
        fail("no row matches %s" % args.rows)
    impl = [r[0] for r in chosen if r[3]]
    missing = [r[0] for r in chosen if not r[3]]
    departures = cc.load_departures(args.departures)
    stats = {n: RowStats(n) for n in impl}
    # With --all-rows the rows without a handler run on the reference alone:
    # how often it rejects or faults on a row's words tells whether the row's
    # fixed bits and the generator's operands make sense before anyone
    # implements it.
    ref_only = {n: RowStats(n) for n in missing} if args.all_rows else {}
    swept = impl + (missing if args.all_rows else [])
    seed = args.seed
    os.makedirs(args.out, exist_ok=True)
    work = tempfile.mkdtemp(prefix="conf-", dir=args.out)
    problems = self_check(tools, work)
    if problems:
        fail("the reference runner fails its own check:\n  " + "\n  ".join(problems))
    speed = collections.defaultdict(lambda: [0, 0.0])
    deaths = []
    cross_n = min(args.cross_cases, args.cases) if tools.cross else 0
    # Loads, for which the comparator has the architecture's pseudocode on the
    # case's memory (departures may compare against it in the reference's
    # place): the model is checked against the reference wherever the
    # reference stands.
    model_rows = {n for n in impl if cc.rowinfo(n).kind in ("contig", "gather") and not cc.rowinfo(n).store}
    model_problems = []
    model_checked = [0]
    t0 = time.time()

    per_chunk = max(1, CHUNK // max(1, args.cases))
    for ci in range(0, len(swept), per_chunk):
        names = swept[ci:ci + per_chunk]
        rows_file = os.path.join(work, "rows.txt")
        with open(rows_file, "w") as f:
            f.write("\n".join(names) + "\n")
        u0 = os.times()
        cases = subprocess.run([tools.gen, "--seed", str(seed), "--count", str(args.cases), "--rows-file",
                                rows_file], check=True, stdout=subprocess.PIPE).stdout
        u1 = os.times()
        speed["generator"][0] += len(cases) // cc.CASE_SIZE
        speed["generator"][1] += (u1.children_user - u0.children_user) + (u1.children_system - u0.children_system)
        jobs = [("ref", REF_QEMU + [tools.ref], cases, work, "reference"),
                ("ours", [tools.ours], cases, work, "ours")]
        cross_cases = b""
        if cross_n:
            parts = []
            for k in range(len(names)):
                if names[k] not in stats:
                    continue
                lo = k * args.cases * cc.CASE_SIZE
                parts.append(cases[lo:lo + cross_n * cc.CASE_SIZE])
            cross_cases = b"".join(parts)
            jobs.append(("cross", CROSS_QEMU + [tools.cross], cross_cases, work, "ours-aarch64"))
        outs = run_parallel(jobs)
        for key in outs:
            speed[key][0] += len(outs[key].results)
            speed[key][1] += outs[key].cpu
        c0 = time.process_time()
        case_list = cc.parse_cases(cases)
        cross_map = {}
        if cross_n:
            cl = cc.parse_cases(cross_cases)
            for c, r in zip(cl, outs["cross"].results):
                cross_map[c.seed] = (r, outs["cross"].deaths.get(len(cross_map)))
        for i, case in enumerate(case_list):
            name = names[i // args.cases]
            ref, ours = outs["ref"].results[i], outs["ours"].results[i]
            if name not in stats:
                st = ref_only[name]
                st.cases += 1
                st.ref_signals["died" if ref is None else cc.signame(ref.signal) if ref.signal else "none"] += 1
                continue
            st = stats[name]
            st.cases += 1
            sides = [("native", ours, outs["ours"].deaths.get(i))]
            if case.seed in cross_map:
                r, death = cross_map[case.seed]
                sides.append(("aarch64", r, death))
                st.cross_cases += 1
            if ref is not None:
                if ref.signal:
                    st.ref_signals[cc.signame(ref.signal)] += 1
            rt = route_of(ours)
            if rt:
                st.routes[rt] += 1
            if name in model_rows and ref is not None and not model_set_aside(case, ref, name, departures):
                model_checked[0] += 1
                why = cc.model_disagrees(case, ref, name)
                if why:
                    model_problems.append("%s %s: %s" % (name, hex(case.seed), why))
            case_ok = True
            for side, res, death in sides:
                v = cc.compare(case, ref, res, name, departures)
                ok, status, used = v.ok, v.status, v.used
                summary = cc.summary_line(v, name)
                if ref is None or res is None:
                    why = outs["ref"].deaths.get(i) if ref is None else death
                    deaths.append((name, case.seed, side, why or "runner died", v.status))
                    if not ok:
                        summary = why or summary
                for u in used:
                    st.departures[u] += 1
                if not ok:
                    case_ok = False
                    if side == "aarch64":
                        st.cross_failed += 1
                    if st.first_fail is None:
                        st.first_fail = (case.seed, side, summary)
                elif side == "native":
                    if status == "match":
                        st.match += 1
                    else:
                        st.explained += 1
            if not case_ok:
                st.failed += 1
        speed["comparator"][0] += len(case_list) + len(cross_map)
        speed["comparator"][1] += time.process_time() - c0
        if not args.quiet:
            done = min(ci + per_chunk, len(swept))
            print("  %d/%d rows, %.0f s" % (done, len(swept), time.time() - t0), file=sys.stderr)
    elapsed = time.time() - t0
    write_reports(args, stats, missing, departures, speed, deaths, elapsed, tools, ref_only)
    if model_checked[0]:
        print("  pseudocode model of loads checked against the reference on %d cases, %d disagreements"
              % (model_checked[0], len(model_problems)))
    for p in model_problems[:20]:
        print("MODEL %s" % p)
    if model_problems:
        print("conformance: the pseudocode model disagrees with the reference in %d cases where the reference "
              "is not known to be wrong; fix the model before trusting reference_from_model" % len(model_problems))
    failing = [s for s in stats.values() if s.failed]
    print("conformance: %d rows implemented, %d missing; %d cases each (%d on aarch64); seed %d; %.1f s"
          % (len(impl), len(missing), args.cases, cross_n, seed, elapsed))
    for k, (n, sec) in sorted(speed.items()):
        if sec > 0:
            print("  %-10s %8d cases %8.0f cases per CPU second" % (SIDE_NAMES.get(k, k), n, n / sec))
    for s in failing:
        fs = s.first_fail
        print("FAIL %s: %d of %d cases; first %s on %s: %s" % (s.name, s.failed, s.cases, hex(fs[0]), fs[1], fs[2]))
        print("  replay: %s" % replay_command(args, s.name, fs[0], fs[1] == "aarch64"))
    print("report: %s" % os.path.join(args.out, "report.html"))
    if not args.keep:
        for f in os.listdir(work):
            os.unlink(os.path.join(work, f))
        os.rmdir(work)
    return 1 if failing or model_problems else 0


def model_set_aside(case, ref, name, departures):
    """Whether some departure already says the reference is wrong on this
    case (so the model is not to be checked against it)."""
    for d in departures:
        if not d.covers(name) or d.kind != "reference":
            continue
        if all(cc.condition_holds(w, case, ref, None, name) for w in d.when):
            return True
    return False


def replay_command(args, name, seed, cross):
    cmd = "scripts/conformance.py --replay %s:%s" % (name, hex(seed))
    if os.path.abspath(args.build) != os.path.abspath(default_build()):
        cmd += " --build %s" % os.path.relpath(args.build, ROOT)
    if cross:
        cmd += " --cross --cross-build %s" % os.path.relpath(args.cross_build, ROOT)
    return cmd


# ---- Reports ----------------------------------------------------------------------

def write_reports(args, stats, missing, departures, speed, deaths, elapsed, tools, ref_only):
    fams = collections.OrderedDict()
    for name in sorted(list(stats) + missing, key=family):
        f = fams.setdefault(family(name), {"rows": 0, "impl": 0, "cases": 0, "failed_rows": 0, "failed": 0})
        f["rows"] += 1
        if name in stats:
            s = stats[name]
            f["impl"] += 1
            f["cases"] += s.cases
            f["failed"] += s.failed
            f["failed_rows"] += 1 if s.failed else 0
    title = "SVE conformance: seed %d, %d cases per row" % (args.seed, args.cases)
    md = ["# " + title, "",
          "Rows implemented: %d, missing: %d. Rows failing: %d. Time %.1f s." % (
              len(stats), len(missing), sum(1 for s in stats.values() if s.failed), elapsed), ""]
    md += ["## Families", "", "| family | rows | implemented | cases | failing rows | failing cases |",
           "|---|---|---|---|---|---|"]
    for f, v in fams.items():
        md.append("| %s | %d | %d | %d | %d | %d |" % (f, v["rows"], v["impl"], v["cases"], v["failed_rows"],
                                                      v["failed"]))
    md += ["", "## Rows", "",
           "| handler | route | cases | identical | explained | failed | aarch64 | reference signals | first failure |",
           "|---|---|---|---|---|---|---|---|---|"]
    for name in sorted(stats):
        s = stats[name]
        sig = ", ".join("%s %d" % kv for kv in sorted(s.ref_signals.items()))
        ff = ""
        if s.first_fail:
            ff = "`%s` (%s): %s" % (hex(s.first_fail[0]), s.first_fail[1], s.first_fail[2])
        cross = "%d/%d" % (s.cross_cases - s.cross_failed, s.cross_cases) if s.cross_cases else ""
        md.append("| %s | %s | %d | %d | %d | %d | %s | %s | %s |" % (
            name, s.route(), s.cases, s.match, s.explained, s.failed, cross, sig, ff.replace("|", "\\|")))
    for name in missing:
        r = ref_only.get(name)
        sig = ", ".join("%s %d" % kv for kv in sorted(r.ref_signals.items())) if r else ""
        md.append("| %s | missing | %s | | | | | %s | |" % (name, r.cases if r else "", sig))
    md += ["", "## Departures used", ""]
    used = collections.Counter()
    for s in stats.values():
        used.update(s.departures)
    for d in departures:
        md.append("- `%s`: %d cases" % (d.id, used.get(d.id, 0)))
    if deaths:
        md += ["", "## Runner deaths", ""]
        for name, seed, side, why, status in deaths[:200]:
            md.append("- %s `%s` (%s): %s; %s" % (name, hex(seed), side, why, status))
    md += ["", "## Speed (cases per CPU second)", ""]
    for k, (n, sec) in sorted(speed.items()):
        if sec > 0:
            md.append("- %s: %d cases, %.0f cases/s" % (SIDE_NAMES.get(k, k), n, n / sec))
    with open(os.path.join(args.out, "report.md"), "w") as f:
        f.write("\n".join(md) + "\n")

    e = html.escape
    h = ["<!doctype html><meta charset=utf-8><title>%s</title>" % e(title),
         "<style>body{font:13px sans-serif}table{border-collapse:collapse}td,th{border:1px solid #ccc;"
         "padding:2px 6px}tr.fail td{background:#fdd}tr.missing td{color:#999}tr.ok td.st{background:#dfd}"
         "code{font-size:12px}</style>",
         "<h1>%s</h1><p>Rows implemented: %d, missing: %d, failing: %d. Time %.1f s.</p>" % (
             e(title), len(stats), len(missing), sum(1 for s in stats.values() if s.failed), elapsed),
         "<h2>Families</h2><table><tr><th>family<th>rows<th>implemented<th>cases<th>failing rows<th>failing cases"]
    for f, v in fams.items():
        cls = "fail" if v["failed"] else ("missing" if not v["impl"] else "ok")
        h.append("<tr class=%s><td>%s<td>%d<td>%d<td>%d<td>%d<td class=st>%d" % (
            cls, e(f), v["rows"], v["impl"], v["cases"], v["failed_rows"], v["failed"]))
    h.append("</table><h2>Rows</h2><table><tr><th>handler<th>route<th>cases<th>identical<th>explained"
             "<th>failed<th>aarch64<th>reference signals<th>first failure<th>replay")
    for name in sorted(stats):
        s = stats[name]
        sig = ", ".join("%s %d" % kv for kv in sorted(s.ref_signals.items()))
        ff = rp = ""
        if s.first_fail:
            ff = "<code>%s</code> (%s): %s" % (hex(s.first_fail[0]), s.first_fail[1], e(s.first_fail[2]))
            rp = "<code>%s</code>" % e(replay_command(args, name, s.first_fail[0], s.first_fail[1] == "aarch64"))
        cross = "%d/%d" % (s.cross_cases - s.cross_failed, s.cross_cases) if s.cross_cases else ""
        h.append("<tr class=%s><td>%s<td>%s<td>%d<td>%d<td>%d<td class=st>%d<td>%s<td>%s<td>%s<td>%s" % (
            "fail" if s.failed else "ok", e(name), e(s.route()), s.cases, s.match, s.explained, s.failed,
            cross, e(sig), ff, rp))
    for name in missing:
        r = ref_only.get(name)
        sig = ", ".join("%s %d" % kv for kv in sorted(r.ref_signals.items())) if r else ""
        h.append("<tr class=missing><td>%s<td>missing<td>%s<td><td><td><td><td>%s<td><td>" % (
            e(name), r.cases if r else "", e(sig)))
    h.append("</table><h2>Departures used</h2><ul>")
    for d in departures:
        h.append("<li><code>%s</code>: %d cases. %s" % (e(d.id), used.get(d.id, 0), e(d.reason.split("\n")[0])))
    h.append("</ul>")
    if deaths:
        h.append("<h2>Runner deaths</h2><ul>")
        for name, seed, side, why, status in deaths[:200]:
            h.append("<li>%s <code>%s</code> (%s): %s; %s" % (e(name), hex(seed), side, e(why), status))
        h.append("</ul>")
    with open(os.path.join(args.out, "report.html"), "w") as f:
        f.write("\n".join(h) + "\n")


# ---- Replay -------------------------------------------------------------------------

def disassemble(word):
    try:
        import sve_asm
        mn, ops = sve_asm.disassemble([word])[0]
        return "%s %s" % (mn, ops)
    except Exception as ex:  # the disassembler is a convenience here
        return "(no disassembly: %s)" % ex


def replay(args, tools):
    departures = cc.load_departures(args.departures)
    status = 0
    work = tempfile.mkdtemp(prefix="conf-replay-")
    for item in args.replay:
        name, _, seed = item.rpartition(":")
        cases = subprocess.run([tools.gen, "--case", "%s:%s" % (name, seed)], check=True,
                               stdout=subprocess.PIPE).stdout
        case = cc.parse_cases(cases)[0]
        jobs = [("ref", REF_QEMU + [tools.ref], cases, work, "reference"),
                ("ours", [tools.ours], cases, work, "ours")]
        if tools.cross:
            jobs.append(("cross", CROSS_QEMU + [tools.cross], cases, work, "ours-aarch64"))
        outs = run_parallel(jobs)
        print("%s case %s: word 0x%08x  %s" % (name, seed, case.word, disassemble(case.word)))
        st = case.st
        print("  input: nzcv 0x%x fpcr 0x%x fpsr 0x%x ffr 0x%016x sp 0x%x mem_seed %d" % (
            st.nzcv, st.fpcr, st.fpsr, st.ffr, st.sp, case.mem_seed))
        for f, lo in (("bits 4..0", 0), ("bits 9..5", 5), ("bits 20..16", 16)):
            r = (case.word >> lo) & 31
            print("  %s = %2d: x%d 0x%016x  z%d %s" % (f, r, r, st.xreg(r), r, st.z[r].hex()))
        for lo in (0, 8):
            print("  " + "  ".join("p%-2d %016x" % (i, st.p[i]) for i in range(lo, lo + 8)[:4]))
            print("  " + "  ".join("p%-2d %016x" % (i, st.p[i]) for i in range(lo, lo + 8)[4:]))
        ref = outs["ref"].results[0]
        for key, label in (("ours", "native"), ("cross", "aarch64")):
            if key not in outs:
                continue
            res = outs[key].results[0]
            for who, o in (("reference", outs["ref"]), (label, outs[key])):
                if o.deaths.get(0):
                    print("  %s" % o.deaths[0])
            v = cc.compare(case, ref, res, name, departures)
            print("  %s: %s%s  (reference %s; ours %s, route %s)" % (
                label, v.status, " via " + ", ".join(v.used) if v.used else "", cc._outcome(ref),
                cc._outcome(res), route_of(res)))
            if v.note:
                print("    " + v.note)
            if not v.ok:
                status = 1
                if ref is None or res is None or ref.signal or res.signal or res.rc:
                    for d in v.diffs:
                        print("    " + " ".join(cc.describe(d, name)))
                else:
                    for d in cc.state_diffs(ref, res):
                        for line in cc.describe(d, name, limit=64):
                            print("    " + line)
                    if v.used:
                        print("    unexplained after departures:")
                        for d in v.diffs:
                            for line in cc.describe(d, name, limit=64):
                                print("      " + line)
    for f in os.listdir(work):
        os.unlink(os.path.join(work, f))
    os.rmdir(work)
    return status


def default_build():
    return os.path.join(ROOT, "build", "conf-native")


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--build", default=default_build(), help="native build directory")
    ap.add_argument("--cases", type=int, default=100, help="cases per row")
    ap.add_argument("--rows", help="comma-separated handler-name patterns (shell style)")
    ap.add_argument("--seed", type=lambda s: int(s, 0), help="sweep seed (default: random, printed)")
    ap.add_argument("--cross", action="store_true", help="also run the AArch64 build of our runner under qemu")
    ap.add_argument("--cross-build", default=os.path.join(ROOT, "build", "conf-aarch64"))
    ap.add_argument("--cross-cases", type=int, default=1 << 30, help="cases per row for the AArch64 runner")
    ap.add_argument("--departures", default=os.path.join(ROOT, "tests", "conformance", "departures.toml"))
    ap.add_argument("--out", help="report directory (default <build>/conformance)")
    ap.add_argument("--replay", action="append", metavar="ROW:SEED", help="run one case and show its differences")
    ap.add_argument("--all-rows", action="store_true",
                    help="also run the rows without a handler, on the reference alone (reported, never failed)")
    ap.add_argument("--keep", action="store_true", help="keep the case and result files")
    ap.add_argument("--quiet", action="store_true")
    args = ap.parse_args()
    if args.seed is None:
        args.seed = random.SystemRandom().randrange(1, 1 << 31)
    if args.out is None:
        args.out = os.path.join(args.build, "conformance")
    tools = Tools(args.build, args.cross_build, args.cross)
    if args.replay:
        return replay(args, tools)
    return sweep(args, tools)


if __name__ == "__main__":
    sys.exit(main())
