"""Comparison half of the conformance instrument: reading the records that
the runners write, finding every difference between the reference CPU's final
state and ours, and explaining differences only through the reviewed file of
departures (tests/conformance/departures.toml).

The record layout mirrors tests/conformance/conf_format.h.
"""
import fnmatch
import re
import struct

try:
    import tomllib
except ImportError:  # Python before 3.11
    try:
        import tomli as tomllib
    except ImportError:
        tomllib = None

# ---- Layout -----------------------------------------------------------------

PAGE = 4096
RESERVE_BASE = 0x40000000
RESERVE_SIZE = 0x20000
DATA_BASE = RESERVE_BASE + 0x8000
DATA_SIZE = 0x4000
GUARD_BASE = DATA_BASE + DATA_SIZE
RO_BASE = GUARD_BASE + PAGE
RO_SIZE = PAGE
LAYOUT = {"page": PAGE, "reserve_base": RESERVE_BASE, "reserve_size": RESERVE_SIZE,
          "data_base": DATA_BASE, "data_size": DATA_SIZE, "guard_base": GUARD_BASE,
          "ro_base": RO_BASE, "ro_size": RO_SIZE, "case_size": 2496, "result_size": 2496}

STATE_SIZE = 2464
HEADER = struct.Struct("<IIQQII")       # case: magic word seed mem_seed row flags
RHEADER = struct.Struct("<IIQIIII")     # result: magic signal seed rc info nmem row
CASE_SIZE = HEADER.size + STATE_SIZE
RESULT_SIZE = RHEADER.size + STATE_SIZE
CASE_MAGIC = 0x45534143
RESULT_MAGIC = 0x544C5352
RC_NO_HANDLER = 0xFFFFFFFF
NO_ROW = 0xFFFFFFFF
INFO_WROTE_INSTRUCTION = 1
INFO_NORMALISED_FFR = 2

SIGNALS = {4: "SIGILL", 5: "SIGTRAP", 6: "SIGABRT", 7: "SIGBUS", 8: "SIGFPE", 11: "SIGSEGV",
           14: "SIGALRM", 31: "SIGSYS"}
SIGNAL_NUMBERS = {v: k for k, v in SIGNALS.items()}


def signame(n):
    return SIGNALS.get(n, "signal %d" % n) if n else "none"


def readable(addr):
    """Whether a byte of the fixed data area can be read (DATA and RO)."""
    return DATA_BASE <= addr < DATA_BASE + DATA_SIZE or RO_BASE <= addr < RO_BASE + RO_SIZE


class State:
    """A complete architectural state. Predicates and FFR are 64-bit ints,
    bit k governing vector byte k; Z registers are 64-byte strings."""
    __slots__ = ("x", "sp", "nzcv", "fpcr", "fpsr", "z", "p", "ffr", "raw")

    def __init__(self, raw):
        self.raw = raw
        v = struct.unpack_from("<35Q", raw, 0)
        self.x = list(v[:31])
        self.sp, self.nzcv, self.fpcr, self.fpsr = v[31:35]
        self.z = [raw[280 + 64 * i:280 + 64 * (i + 1)] for i in range(32)]
        self.p = list(struct.unpack_from("<16Q", raw, 2328))
        self.ffr = struct.unpack_from("<Q", raw, 2456)[0]

    def xreg(self, n):
        """Register n where 31 is SP (a base register)."""
        return self.sp if n == 31 else self.x[n]


FLAG_PRED_JUNK = 1


class Case:
    __slots__ = ("word", "seed", "mem_seed", "row", "flags", "raw_state", "_st")

    def __init__(self, buf, off=0):
        magic, self.word, self.seed, self.mem_seed, self.row, self.flags = HEADER.unpack_from(buf, off)
        if magic != CASE_MAGIC:
            raise ValueError("not a case record at offset %d" % off)
        self.raw_state = bytes(buf[off + HEADER.size:off + CASE_SIZE])
        self._st = None

    @property
    def st(self):
        if self._st is None:
            self._st = State(self.raw_state)
        return self._st


class Result:
    __slots__ = ("signal", "seed", "rc", "info", "row", "raw_state", "mem", "_st")

    def __init__(self, signal, seed, rc, info, row, raw_state, mem):
        self.signal, self.seed, self.rc, self.info, self.row = signal, seed, rc, info, row
        self.raw_state, self.mem = raw_state, mem
        self._st = None

    @property
    def st(self):
        if self._st is None:
            self._st = State(self.raw_state)
        return self._st


def parse_cases(buf):
    if len(buf) % CASE_SIZE:
        raise ValueError("case stream is not a whole number of records")
    return [Case(buf, off) for off in range(0, len(buf), CASE_SIZE)]


def parse_results(buf):
    """Results in order; a truncated last record is dropped (its runner died
    while writing it)."""
    out = []
    off = 0
    while off + RESULT_SIZE <= len(buf):
        magic, sig, seed, rc, info, nmem, row = RHEADER.unpack_from(buf, off)
        if magic != RESULT_MAGIC:
            raise ValueError("not a result record at offset %d" % off)
        end = off + RESULT_SIZE + 4 * nmem
        if end > len(buf):
            break
        mem = {}
        for v in struct.unpack_from("<%dI" % nmem, buf, off + RESULT_SIZE):
            mem[v & 0xFFFFFF] = v >> 24
        out.append(Result(sig, seed, rc, info, row, bytes(buf[off + RHEADER.size:off + RESULT_SIZE]), mem))
        off = end
    return out


# ---- What a row's name says ------------------------------------------------

TYPE_RE = re.compile(r"^Vec([USFDHBP])(\d*)(?:_(\d+))?(.*)$")
MEM_RES = [
    ("contig", re.compile(r"^C(Load|Store)(NF|NT|FF)?([1248])(SIZ|LSSZ)$")),
    ("struct", re.compile(r"^E([234])(Load|Store)([1248])(SIZ|LSSZ)$")),
    ("dup", re.compile(r"^LoadDup([1248])(Q?)(SIZ|SSZ)$")),
    ("fill", re.compile(r"^(Fill|Spill)SI$")),
    ("prefetch", re.compile(r"^Prefetch([1248])(SI|LSS|VI|SV|XSV|YSV)$")),
    ("gather", re.compile(r"^(Load|LoadFF|Store)([1248])(VI|VS|SV|XVS|YVS|XSV|YSV)Z$")),
]


class RowInfo:
    """Element size and memory shape read from a handler's name."""

    def __init__(self, name):
        self.name = name
        self.elem = 0       # element bytes, 0 when the name gives none
        self.kind = None    # memory family, None for other rows
        self.msize = 0
        self.index_reg = False  # base + X[Rm] * msize
        self.nregs = 1      # registers of a structure load or store
        self.store = False
        self.quad = False   # LD1RQ: one 16-byte block, replicated
        self.addr = ""      # gather and scatter addressing: VI VS SV XVS YVS XSV YSV
        m = TYPE_RE.match(name)
        rest = ""
        if m:
            if m.group(2):
                self.elem = int(m.group(2)) // 8
            rest = m.group(4)
        for kind, rx in MEM_RES:
            mm = rx.match(rest)
            if not mm:
                continue
            self.kind = kind
            if kind == "contig":
                self.msize = int(mm.group(3))
                self.index_reg = mm.group(4) == "LSSZ"
                self.store = mm.group(1) == "Store"
            elif kind == "struct":
                self.nregs = int(mm.group(1))
                self.msize = int(mm.group(3))
                self.index_reg = mm.group(4) == "LSSZ"
                self.store = mm.group(2) == "Store"
            elif kind == "dup":
                self.msize = int(mm.group(1))
                self.quad = mm.group(2) == "Q"
                self.index_reg = mm.group(3) == "SSZ"
            elif kind in ("prefetch", "gather"):
                self.msize = int(mm.group(2) if kind == "gather" else mm.group(1))
                self.index_reg = kind == "prefetch" and mm.group(2) == "LSS"
                self.addr = mm.group(3) if kind == "gather" else mm.group(2)
                if kind == "gather":
                    self.store = mm.group(1) == "Store"
            break

    def esize(self):
        return self.elem if self.elem in (1, 2, 4, 8) else 1


_ROWINFO = {}


def rowinfo(name):
    if name not in _ROWINFO:
        _ROWINFO[name] = RowInfo(name)
    return _ROWINFO[name]


# ---- Differences -------------------------------------------------------------

class Diff:
    """One differing item. `lanes` is the set of differing positions inside
    it (bytes of a Z register, bits of a predicate or FFR, offsets of DATA),
    None for scalar items; allowances remove positions from it."""
    __slots__ = ("kind", "index", "lanes", "ref", "ours")

    def __init__(self, kind, index=None, lanes=None, ref=None, ours=None):
        self.kind, self.index, self.lanes, self.ref, self.ours = kind, index, lanes, ref, ours

    def empty(self):
        return self.lanes is not None and not self.lanes


def state_diffs(ref, ours):
    """Every difference between two results that both completed."""
    d = []
    a, b = ref.st, ours.st
    for i in range(31):
        if a.x[i] != b.x[i]:
            d.append(Diff("x", i, None, a.x[i], b.x[i]))
    for name in ("sp", "nzcv", "fpcr", "fpsr"):
        va, vb = getattr(a, name), getattr(b, name)
        if va != vb:
            d.append(Diff(name, None, None, va, vb))
    for i in range(32):
        if a.z[i] != b.z[i]:
            lanes = {k for k in range(64) if a.z[i][k] != b.z[i][k]}
            d.append(Diff("z", i, lanes, a.z[i], b.z[i]))
    for i in range(16):
        if a.p[i] != b.p[i]:
            x = a.p[i] ^ b.p[i]
            d.append(Diff("p", i, {k for k in range(64) if x >> k & 1}, a.p[i], b.p[i]))
    if a.ffr != b.ffr:
        x = a.ffr ^ b.ffr
        d.append(Diff("ffr", None, {k for k in range(64) if x >> k & 1}, a.ffr, b.ffr))
    if ref.mem != ours.mem:
        offs = {o for o in set(ref.mem) | set(ours.mem) if ref.mem.get(o) != ours.mem.get(o)}
        d.append(Diff("mem", None, offs, dict(ref.mem), dict(ours.mem)))
    return d


# ---- Departures ----------------------------------------------------------------

FIELD_RE = re.compile(r"^bits?\s+(\d+)(?::(\d+))?\s*(==|!=)\s*(0x[0-9a-fA-F]+|\d+)$")

# The allowances a departure may grant. Each is exact about what it lets
# differ; anything not granted stays a failure.
ALLOWANCES = {
    "same_signal": "both sides stopped on the same signal; nothing after it is compared",
    "ref_signal": "the reference stopped on the named signal; whatever ours did, nothing is compared",
    "ours_signal": "ours stopped on the named signal where the reference completed; nothing is compared",
    "ref_sigill_ours_rc2": "the reference rejected the word (SIGILL) and our handler returned 2",
    "ref_died_ours_signal": "the reference runner died on the case and ours stopped on the named signal",
    "dest_lanes_where_ref_ffr_clear": "destination Z elements whose FFR bit the reference left 0",
    "ffr_in_ours_zero_tail": "FFR bits in the tail of elements ours cleared to the end",
    "dest_lanes_input_in_ours_zero_tail": "destination Z elements in ours' cleared FFR tail that keep their input value",
    "ffr_where_ours_loaded_memory": "FFR bits the reference cleared without a fault, where ours kept them and its "
                                    "element holds what memory holds",
    "dest_predicate": "the destination predicate (bits 3..0) in any bit",
    "dest_predicate_nonfirst_bits_zero": "bits of the destination predicate that are not the first bit of an element "
                                         "(at the element size of the name), where ours has 0",
    "nzcv": "the condition flags",
    "reference_from_model": "the reference's result is replaced by the architecture's pseudocode applied to the "
                            "case's memory image, and the comparison goes on against that",
}


class Departure:
    def __init__(self, d):
        self.id = d["id"]
        self.handlers = d["handlers"]
        self.when = d.get("when", [])
        self.allow = d["allow"]
        self.reason = d["reason"]
        self.kind = d.get("kind", "ours")
        for a in self.allow:
            base = a.split(":")[0]
            if base not in ALLOWANCES:
                raise ValueError("departure %s: unknown allowance %r" % (self.id, a))
        for w in self.when:
            if not FIELD_RE.match(w) and w not in CONDITIONS:
                raise ValueError("departure %s: unknown condition %r" % (self.id, w))

    def covers(self, name):
        return any(fnmatch.fnmatchcase(name, pat) for pat in self.handlers)


def load_departures(path):
    if tomllib is None:
        raise RuntimeError("reading %s needs Python 3.11 (tomllib) or the tomli package" % path)
    with open(path, "rb") as f:
        data = tomllib.load(f)
    deps = [Departure(d) for d in data.get("departure", [])]
    ids = [d.id for d in deps]
    if len(ids) != len(set(ids)):
        raise ValueError("departure ids must be unique")
    return deps


# ---- Conditions of departures: facts of the case, never of our result ----------

def field(word, hi, lo):
    return (word >> lo) & ((1 << (hi - lo + 1)) - 1)


def logical_imm_reserved(word, name):
    """N:immr:imms at 17..5 is reserved when the element length is undefined
    or the run of ones fills the element (the architecture's DecodeBitMasks
    with immediate forms)."""
    n, imms = field(word, 17, 17), field(word, 10, 5)
    combined = (n << 6) | (~imms & 0x3F)
    if combined == 0:
        return True
    length = combined.bit_length() - 1
    if length < 1:
        return True
    levels = (1 << length) - 1
    return (imms & levels) == levels


def contiguous_base(case, name):
    """Base address of a contiguous scalar-plus-scalar form: X[Rn] (31 = SP)
    plus X[Rm] scaled by the memory size (31 = no index)."""
    info = rowinfo(name)
    st = case.st
    rn, rm = field(case.word, 9, 5), field(case.word, 20, 16)
    base = st.xreg(rn)
    if rm != 31:
        base += st.x[rm] * max(info.msize, 1)
    return base & 0xFFFFFFFFFFFFFFFF


def next_page_unreadable(case, ref, ours, name):
    base = contiguous_base(case, name)
    nxt = (base & ~(PAGE - 1)) + PAGE
    return not readable(nxt)


def sext(v, bits):
    return v - (1 << bits) if v >> (bits - 1) & 1 else v


def contiguous_accesses(case, name):
    """(address, bytes) of every active element of a contiguous load or
    store, or of every active structure (all its members together) of a
    structure load or store, in order; [] for other forms."""
    info = rowinfo(name)
    st, w = case.st, case.word
    if info.kind == "dup" and info.quad:
        m = info.msize
        base = st.xreg(field(w, 9, 5))
        if info.index_reg:
            rm = field(w, 20, 16)
            base += 0 if rm == 31 else st.x[rm] * m
        else:
            base += sext(field(w, 19, 16), 4) * 16
        pg = st.p[field(w, 12, 10)]
        return [((base + e * m) & MASK64, m) for e in range(16 // m) if pg >> (e * m) & 1]
    if info.kind not in ("contig", "struct"):
        return []
    m = info.msize
    c = m if info.kind == "struct" else info.esize()
    n, regs = 64 // c, info.nregs
    base = st.xreg(field(w, 9, 5))
    if info.index_reg:
        rm = field(w, 20, 16)
        base += 0 if rm == 31 else st.x[rm] * m
    else:
        base += sext(field(w, 19, 16), 4) * (regs * 64 if info.kind == "struct" else n * m)
    pg = st.p[field(w, 12, 10)]
    out = []
    for i in range(n):
        if pg >> (i * c) & 1:
            out.append(((base + i * regs * m) & 0xFFFFFFFFFFFFFFFF, regs * m))
    return out


def _straddles(addr, size):
    return readable(addr) != readable(addr + size - 1)


def active_element_straddles_unreadable(case, ref, ours, name):
    return any(_straddles(a, m) for a, m in contiguous_accesses(case, name))


def first_active_element_straddles_unreadable(case, ref, ours, name):
    acc = contiguous_accesses(case, name)
    return bool(acc) and _straddles(*acc[0])


def first_active_element_unreadable(case, ref, ours, name):
    """The first active element of a single-register load cannot be read in
    full (by the case's memory layout)."""
    lanes = load_lanes(case, name)
    if lanes is None:
        return False
    c = rowinfo(name).esize()
    pg = case.st.p[field(case.word, 12, 10)]
    for i, lane in enumerate(lanes):
        if pg >> (i * c) & 1:
            return lane is None
    return False


def governing_element0_inactive(case, ref, ours, name):
    return not case.st.p[field(case.word, 12, 10)] & 1


CONDITIONS = {
    "predicate_bytes_junk": lambda case, ref, ours, name: bool(case.flags & FLAG_PRED_JUNK),
    "governing_element0_inactive": governing_element0_inactive,
    "first_active_element_unreadable": first_active_element_unreadable,
    "logical_imm_reserved": lambda case, ref, ours, name: logical_imm_reserved(case.word, name),
    "next_page_unreadable": next_page_unreadable,
    "active_element_straddles_unreadable": active_element_straddles_unreadable,
    "first_active_element_straddles_unreadable": first_active_element_straddles_unreadable,
}


def condition_holds(cond, case, ref, ours, name):
    m = FIELD_RE.match(cond)
    if m:
        hi = int(m.group(1))
        lo = int(m.group(2)) if m.group(2) is not None else hi
        v = field(case.word, hi, lo)
        want = int(m.group(4), 0)
        return v == want if m.group(3) == "==" else v != want
    return CONDITIONS[cond](case, ref, ours, name)


# ---- The comparison ------------------------------------------------------------

class Verdict:
    """status: 'match' (identical), 'explained' (differences, all covered by
    departures), 'mismatch'. `diffs` are the unexplained differences,
    `used` the departures that explained something."""

    def __init__(self, status, diffs=(), used=(), note=""):
        self.status, self.diffs, self.used, self.note = status, list(diffs), list(used), note

    @property
    def ok(self):
        return self.status != "mismatch"


def _elem_first_bits_clear(ffr, esize):
    """Elements (by index) whose FFR bit, at the first byte of the element, is 0."""
    return {e for e in range(64 // esize) if not (ffr >> (e * esize)) & 1}


def _ours_zero_tail(ffr, esize):
    """Lowest element index from which every FFR bit is 0 in `ffr`."""
    n = 64 // esize
    t = n
    while t > 0 and (ffr >> ((t - 1) * esize)) == 0:
        t -= 1
    return t


def apply_allowance(allow, diffs, case, ref, ours, name):
    """Removes from `diffs` what one allowance covers. Returns True when it
    covered anything."""
    base, _, arg = allow.partition(":")
    info = rowinfo(name)
    es = info.esize()
    used = False
    if base in ("dest_predicate", "dest_predicate_nonfirst_bits_zero"):
        pd = field(case.word, 3, 0)
        if base == "dest_predicate":
            ok = lambda k: True
        else:
            ok = lambda k: k % es != 0 and not (ours.st.p[pd] >> k) & 1
        for d in diffs:
            if d.kind == "p" and d.index == pd:
                keep = {k for k in d.lanes if not ok(k)}
                used |= keep != d.lanes
                d.lanes = keep
        return used
    if base == "nzcv":
        before = len(diffs)
        diffs[:] = [d for d in diffs if d.kind != "nzcv"]
        return len(diffs) != before
    if base == "ffr_in_ours_zero_tail":
        t = _ours_zero_tail(ours.st.ffr, es) * es
        for d in diffs:
            if d.kind == "ffr":
                keep = {k for k in d.lanes if k < t}
                used |= keep != d.lanes
                d.lanes = keep
        return used
    if base == "ffr_where_ours_loaded_memory":
        model = load_lanes(case, name)
        if model is None:
            return False
        zt = field(case.word, 4, 0)
        zo = ours.st.z[zt]

        def ok(k):
            e = k // es
            return (not (ref.st.ffr >> k) & 1 and (ours.st.ffr >> k) & 1 and (case.st.ffr >> k) & 1
                    and model[e] is not None and zo[e * es:(e + 1) * es] == model[e])
        for d in diffs:
            if d.kind == "ffr":
                keep = {k for k in d.lanes if not ok(k)}
                used |= keep != d.lanes
                d.lanes = keep
        return used
    if base in ("dest_lanes_where_ref_ffr_clear", "dest_lanes_input_in_ours_zero_tail"):
        zt = field(case.word, 4, 0)
        if base == "dest_lanes_where_ref_ffr_clear":
            elems = _elem_first_bits_clear(ref.st.ffr, es)
            ok = lambda k: k // es in elems
        else:
            t = _ours_zero_tail(ours.st.ffr, es)
            zin = case.st.z[zt]
            zo = ours.st.z[zt]

            def ok(k):
                e = k // es
                return e >= t and zo[e * es:(e + 1) * es] == zin[e * es:(e + 1) * es]
        for d in diffs:
            if d.kind == "z" and d.index == zt:
                keep = {k for k in d.lanes if not ok(k)}
                used |= keep != d.lanes
                d.lanes = keep
        return used
    raise ValueError("allowance %s is not a state allowance" % allow)


STATE_ALLOWANCES = ("dest_predicate", "dest_predicate_nonfirst_bits_zero", "nzcv", "dest_lanes_where_ref_ffr_clear",
                    "ffr_in_ours_zero_tail", "dest_lanes_input_in_ours_zero_tail", "ffr_where_ours_loaded_memory")


def _outcome(res):
    if res is None:
        return "died"
    if res.rc:
        return "rc %d" % res.rc
    return signame(res.signal) if res.signal else "completed"


def compare(case, ref, ours, name, departures):
    """The verdict on one case. `name` is the row the case was drawn from;
    `ref` is None when the reference runner died on the case. Departures are
    tried in file order and the first that covers the case is named."""
    deps = [d for d in departures if d.covers(name)]
    if ours is None:
        return Verdict("mismatch", [Diff("runner", None, None, _outcome(ref), "died")])
    # What our side did before any state: the row it reached and its result.
    if ours.rc == RC_NO_HANDLER:
        return Verdict("mismatch", [Diff("rc", None, None, "executed", "no handler for the word")])
    if ours.row != NO_ROW and ours.row != case.row:
        return Verdict("mismatch", [Diff("row", None, None, case.row, ours.row)])

    def applicable(d):
        return all(condition_holds(w, case, ref, ours, name) for w in d.when)

    # Where the reference CPU is known to be wrong, the architecture's
    # pseudocode on the case's memory takes its place.
    modelled = None
    for d in deps:
        if "reference_from_model" in d.allow and ref is not None and applicable(d):
            model = load_model(case, name)
            if model is not None:
                ref, modelled = model, d.id
                deps = [x for x in deps if x is not d]
                break
    v = _compare_outcomes(case, ref, ours, name, deps, applicable)
    if modelled:
        v.used.insert(0, modelled)
        if v.status == "match":
            v.status = "explained"
    return v


def _compare_outcomes(case, ref, ours, name, deps, applicable):
    if ref is None or ref.signal or ours.signal or ours.rc:
        for d in deps:
            for a in d.allow:
                base, _, arg = a.partition(":")
                if base == "same_signal":
                    hit = ref is not None and ref.signal and ref.signal == ours.signal and not ours.rc
                elif base == "ref_signal":
                    hit = ref is not None and ref.signal == SIGNAL_NUMBERS.get(arg)
                elif base == "ours_signal":
                    hit = ref is not None and not ref.signal and ours.signal == SIGNAL_NUMBERS.get(arg)
                elif base == "ref_sigill_ours_rc2":
                    hit = ref is not None and ref.signal == 4 and not ours.signal and ours.rc == 2
                elif base == "ref_died_ours_signal":
                    hit = ref is None and ours.signal == SIGNAL_NUMBERS.get(arg)
                else:
                    hit = False
                if hit and applicable(d):
                    return Verdict("explained", used=[d.id],
                                   note="reference %s, ours %s" % (_outcome(ref), _outcome(ours)))
        return Verdict("mismatch", [Diff("outcome", None, None, _outcome(ref), _outcome(ours))])

    diffs = state_diffs(ref, ours)
    if not diffs:
        return Verdict("match")
    used = []
    for d in deps:
        state_allows = [a for a in d.allow if a.split(":")[0] in STATE_ALLOWANCES]
        if not state_allows or not applicable(d):
            continue
        hit = False
        for a in state_allows:
            hit |= apply_allowance(a, diffs, case, ref, ours, name)
        if hit:
            used.append(d.id)
        diffs = [x for x in diffs if not x.empty()]
    if diffs:
        return Verdict("mismatch", diffs, used)
    return Verdict("explained", used=used)


# ---- Readable differences ------------------------------------------------------

SUFFIX = {1: "b", 2: "h", 4: "s", 8: "d"}


def _hex_elem(raw, e, size):
    return "0x%0*x" % (2 * size, int.from_bytes(raw[e * size:(e + 1) * size], "little"))


def describe(diff, name, limit=8):
    """Lines for one difference: register names, element lanes at the row's
    element size, bits of predicates, addresses of memory."""
    es = rowinfo(name).esize()
    if diff.kind == "x":
        return ["x%d: ref 0x%016x ours 0x%016x" % (diff.index, diff.ref, diff.ours)]
    if diff.kind in ("sp", "nzcv", "fpcr", "fpsr"):
        return ["%s: ref 0x%x ours 0x%x" % (diff.kind, diff.ref, diff.ours)]
    if diff.kind == "z":
        elems = sorted({k // es for k in diff.lanes})
        out = ["z%d.%s[%d]: ref %s ours %s" % (diff.index, SUFFIX[es], e, _hex_elem(diff.ref, e, es),
                                                _hex_elem(diff.ours, e, es)) for e in elems[:limit]]
        if len(elems) > limit:
            out.append("z%d: %d more differing elements" % (diff.index, len(elems) - limit))
        return out
    if diff.kind in ("p", "ffr"):
        reg = "p%d" % diff.index if diff.kind == "p" else "ffr"
        bits = sorted(diff.lanes)
        shown = ", ".join(str(b) for b in bits[:16]) + (" ..." if len(bits) > 16 else "")
        return ["%s: ref 0x%016x ours 0x%016x (bits %s; elements .%s %s)" % (
            reg, diff.ref, diff.ours, shown, SUFFIX[es],
            ", ".join(str(e) for e in sorted({b // es for b in bits})[:16]))]
    if diff.kind == "mem":
        offs = sorted(diff.lanes)
        out = []
        runs = []
        for o in offs:
            if runs and o == runs[-1][1] + 1:
                runs[-1][1] = o
            else:
                runs.append([o, o])
        for lo, hi in runs[:limit]:
            def show(m):
                return " ".join("%02x" % m[o] if o in m else "--" for o in range(lo, hi + 1))
            out.append("mem 0x%x..0x%x: ref [%s] ours [%s] (-- = unchanged)" % (
                DATA_BASE + lo, DATA_BASE + hi, show(diff.ref), show(diff.ours)))
        if len(runs) > limit:
            out.append("mem: %d more differing runs" % (len(runs) - limit))
        return out
    return ["%s: ref %s ours %s" % (diff.kind, diff.ref, diff.ours)]


def summary_line(verdict, name):
    if verdict.status != "mismatch":
        return verdict.status
    first = verdict.diffs[0]
    lines = describe(first, name, limit=1)
    more = len(verdict.diffs) - 1
    return lines[0] + (" (+%d more)" % more if more else "")


# ---- The memory the runners map ------------------------------------------------

MASK64 = 0xFFFFFFFFFFFFFFFF
RO_SEED = 0x5EED0F0F0F0F0F0F
_FILL_SPECIAL = {0: 0, 1: MASK64, 2: 0x8080808080808080, 3: 0x7F7F7F7F7F7F7F7F, 4: 0x80007FFF8000FFFF,
                 5: 0x7FFFFFFF80000000, 6: 0x7FF0000000000001}


def fill_memory(size, seed):
    """The bytes conf_fill_memory (conf_format.h) writes: the runners' DATA
    image for a memory seed, and their read-only page."""
    out = bytearray(size)
    s = seed
    for i in range(0, size, 8):
        s = (s + 0x9E3779B97F4A7C15) & MASK64
        z = s
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & MASK64
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & MASK64
        r = z ^ (z >> 31)
        sel = r >> 60
        if sel in _FILL_SPECIAL:
            v = _FILL_SPECIAL[sel]
        elif sel == 7:
            v = r & 0x0101010101010101
        else:
            v = r
        out[i:i + 8] = v.to_bytes(8, "little")
    return bytes(out)


_IMAGES = {}


def memory_bytes(mem_seed, addr, size):
    """The bytes at addr before the instruction, or None when any of them
    cannot be read."""
    if ("ro",) not in _IMAGES:
        _IMAGES[("ro",)] = fill_memory(RO_SIZE, RO_SEED)
    if mem_seed not in _IMAGES:
        _IMAGES[mem_seed] = fill_memory(DATA_SIZE, mem_seed)
    out = bytearray()
    for a in range(addr, addr + size):
        if DATA_BASE <= a < DATA_BASE + DATA_SIZE:
            out.append(_IMAGES[mem_seed][a - DATA_BASE])
        elif RO_BASE <= a < RO_BASE + RO_SIZE:
            out.append(_IMAGES[("ro",)][a - RO_BASE])
        else:
            return None
    return bytes(out)


# ---- The architecture's contiguous loads, on the case's memory -----------------

def gather_addresses(case, name):
    """Address of every element of a gather or scatter, by the
    architecture's addressing forms; None for other forms."""
    info = rowinfo(name)
    if info.kind != "gather":
        return None
    st, w = case.st, case.word
    m, c = info.msize, info.esize()
    n = 64 // c
    form = info.addr
    if form == "VI":
        v = st.z[field(w, 9, 5)]
        imm = field(w, 20, 16)
        return [(int.from_bytes(v[i * c:(i + 1) * c], "little") + imm * m) & MASK64 for i in range(n)]
    base = st.xreg(field(w, 9, 5))
    v = st.z[field(w, 20, 16)]
    out = []
    for i in range(n):
        off = int.from_bytes(v[i * c:(i + 1) * c], "little")
        if form in ("XVS", "XSV"):
            off = sext(off & 0xFFFFFFFF, 32)
        elif form in ("YVS", "YSV") or c == 4:
            off &= 0xFFFFFFFF
        if form in ("SV", "XSV", "YSV"):
            off *= m
        out.append((base + off) & MASK64)
    return out


def load_lanes(case, name):
    """What each destination element of a single-register load (LD1, LDNT1,
    LDFF1, LDNF1, contiguous or gather) reads, by the architecture: the
    extended memory value for an active element, None for an active element
    that cannot be read, zeros for an inactive one. None for other forms."""
    info = rowinfo(name)
    st, w = case.st, case.word
    m, c = info.msize, info.esize()
    n = 64 // c
    if info.kind == "contig" and not info.store:
        base = st.xreg(field(w, 9, 5))
        if info.index_reg:
            rm = field(w, 20, 16)
            base += 0 if rm == 31 else st.x[rm] * m
        else:
            base += sext(field(w, 19, 16), 4) * n * m
        addrs = [(base + i * m) & MASK64 for i in range(n)]
    elif info.kind == "gather" and not info.store:
        addrs = gather_addresses(case, name)
    else:
        return None
    signed = name.startswith("VecS")
    pg = st.p[field(w, 12, 10)]
    lanes = []
    for i in range(n):
        if not pg >> (i * c) & 1:
            lanes.append(bytes(c))
            continue
        raw = memory_bytes(case.mem_seed, addrs[i], m)
        if raw is None:
            lanes.append(None)
            continue
        v = int.from_bytes(raw, "little")
        if signed and v >> (8 * m - 1):
            v -= 1 << (8 * m)
        lanes.append((v & ((1 << (8 * c)) - 1)).to_bytes(c, "little"))
    return lanes


def load_model(case, name):
    """The architecture's result of a single-register load on the case
    (contiguous or gather, plain, first-fault or non-fault): a Result
    in the form the runners write. First-fault: the first active element
    that cannot be read faults (SIGSEGV); a later one clears FFR from itself
    to the end. Non-fault: any such element clears FFR from itself to the
    end. Plain: any such element faults. Lanes from a cleared FFR element on
    are unpredictable and given as zero."""
    lanes = load_lanes(case, name)
    if lanes is None:
        return None
    info = rowinfo(name)
    c = info.esize()
    ff = "LoadFF" in name
    nf = "CLoadNF" in name
    st = case.st
    pg = st.p[field(case.word, 12, 10)]
    ffr = st.ffr
    out = bytearray(64)
    first_active = True
    faulted = False
    for i, lane in enumerate(lanes):
        active = pg >> (i * c) & 1
        if active and lane is None and not faulted:
            if (ff and first_active) or not (ff or nf):
                return Result(SIGNAL_NUMBERS["SIGSEGV"], case.seed, 0, 0, case.row, case.raw_state, {})
            faulted = True
        if active:
            first_active = False
        if faulted:
            ffr &= ~(((1 << c) - 1) << (i * c))
        else:
            out[i * c:(i + 1) * c] = lane
    raw = bytearray(case.raw_state)
    zt = field(case.word, 4, 0)
    raw[280 + 64 * zt:280 + 64 * (zt + 1)] = out
    raw[2456:2464] = struct.pack("<Q", ffr)
    return Result(0, case.seed, 0, 0, case.row, bytes(raw), {})


def model_disagrees(case, ref, name):
    """Checks the pseudocode model against the reference on a case where the
    reference is not known to be wrong: where both FFRs are true the lanes
    must agree, and the model may not clear an FFR element the reference
    kept. Returns a description of the first disagreement, or None. (The
    reference may clear FFR earlier than the model: it is allowed to give up
    on any element after the first active one.)"""
    if ref is None or ref.signal:
        return None
    model = load_model(case, name)
    if model is None:
        return None
    if model.signal:
        return "model faults, the reference completed"
    es = rowinfo(name).esize()
    zt = field(case.word, 4, 0)
    for e in range(64 // es):
        bit = e * es
        r, m = (ref.st.ffr >> bit) & 1, (model.st.ffr >> bit) & 1
        if r and not m:
            return "model clears FFR element %d, the reference keeps it" % e
        if r and m and ref.st.z[zt][e * es:(e + 1) * es] != model.st.z[zt][e * es:(e + 1) * es]:
            return "element %d: reference %s, model %s" % (e, _hex_elem(ref.st.z[zt], e, es),
                                                          _hex_elem(model.st.z[zt], e, es))
    return None
