"""Shared helpers for the scripts that talk to the AArch64 assembler and
disassembler (GNU binutils for aarch64-linux-gnu)."""
import os
import re
import subprocess
import tempfile

AS = os.environ.get("AARCH64_AS", "aarch64-linux-gnu-as")
OBJDUMP = os.environ.get("AARCH64_OBJDUMP", "aarch64-linux-gnu-objdump")
MAPS_DEF = os.path.join(os.path.dirname(__file__), "..", "sve", "core", "decode_maps.def")


def map_masks():
    """name -> key mask of the 44 decode maps."""
    out = {}
    for line in open(MAPS_DEF):
        m = re.match(r"SVE_MAP\((\w+),", line)
        if not m:
            continue
        mask = 0
        for hi, lo in re.findall(r"R\((\d+),\s*(\d+)\)", line):
            for b in range(int(lo), int(hi) + 1):
                mask |= 1 << b
        out[m.group(1)] = mask
    return out


def disassemble(words):
    """Disassembles 32-bit words; returns one (mnemonic, operands) per word.
    Aliases are turned off so the architectural mnemonic is printed."""
    with tempfile.TemporaryDirectory() as d:
        src, obj = os.path.join(d, "w.s"), os.path.join(d, "w.o")
        with open(src, "w") as f:
            f.write("".join(".inst 0x%08x\n" % w for w in words))
        subprocess.run([AS, "-o", obj, src], check=True)
        text = subprocess.run([OBJDUMP, "-d", "-M", "no-aliases", obj], check=True,
                              capture_output=True, text=True).stdout
    result = []
    for line in text.splitlines():
        m = re.match(r"\s*[0-9a-f]+:\s+([0-9a-f]{8})\s+(.*)$", line)
        if not m:
            continue
        body = m.group(2).split("//")[0].strip()
        parts = body.split(None, 1)
        result.append((parts[0] if parts else "", parts[1] if len(parts) > 1 else ""))
    if len(result) != len(words):
        raise RuntimeError("disassembler returned %d lines for %d words" % (len(result), len(words)))
    return result


def assemble(lines, march="armv8.2-a+sve"):
    """Assembles instruction lines; returns their words in order."""
    with tempfile.TemporaryDirectory() as d:
        src, obj = os.path.join(d, "a.s"), os.path.join(d, "a.o")
        with open(src, "w") as f:
            f.write("".join(l + "\n" for l in lines))
        subprocess.run([AS, "-march=" + march, "-o", obj, src], check=True)
        text = subprocess.run([OBJDUMP, "-d", obj], check=True, capture_output=True, text=True).stdout
    words = [int(m.group(1), 16) for m in re.finditer(r"^\s*[0-9a-f]+:\s+([0-9a-f]{8})\s", text, re.M)]
    if len(words) != len(lines):
        raise RuntimeError("assembler gave %d words for %d lines" % (len(words), len(lines)))
    return words


UNDEF = "~undef"


def is_undefined(mnemonic, operands):
    return mnemonic == ".inst" or "undefined" in operands


def expectation_matches(expect, mnemonic, operands):
    """expect: 'mnem[|alias...] [token ...] [~undef]'. The mnemonic must be one
    of the alternatives and every token must occur in the operand text. A row
    marked ~undef contains field values the architecture leaves unallocated
    (we accept and give them a meaning); the disassembler may call those words
    undefined, and that is accepted for them."""
    parts = expect.split()
    if UNDEF in parts and is_undefined(mnemonic, operands):
        return True
    if mnemonic not in parts[0].split("|"):
        return False
    return all(tok in operands for tok in parts[1:] if tok != UNDEF)
