"""Reads back from the executables of a release that they were hardened."""

import json
import re

import elf

PER_SOURCE = ("-fstack-protector-strong", "-fstack-clash-protection")
DEFINITIONS = ("-D_FORTIFY_SOURCE=3", "-D_GLIBCXX_ASSERTIONS")
# What the definitions leave in a program that copies bytes and indexes containers.
TRACES = {"calls that check sizes (_FORTIFY_SOURCE)": r"__\w+_chk",
          "checked containers (_GLIBCXX_ASSERTIONS)": r"_ZSt21__glibcxx_assert_fail.*",
          "stack protector": r"__stack_chk_fail"}


def check_layout(tally, name, binary):
    flags = sum(binary.dynamic(elf.DT_FLAGS))
    flags_1 = sum(binary.dynamic(elf.DT_FLAGS_1))
    tally.note("position-independent", binary.type == elf.ET_DYN and flags_1 & elf.DF_1_PIE, name)
    now = flags & elf.DF_BIND_NOW or flags_1 & elf.DF_1_NOW or binary.dynamic(elf.DT_BIND_NOW)
    tally.note("full RELRO", bool(binary.flags_of(elf.PT_GNU_RELRO)) and now, name)
    stack = binary.flags_of(elf.PT_GNU_STACK)
    tally.note("stack not executable", len(stack) == 1 and not stack[0] & elf.PF_X, name)
    both = [f for f in binary.flags_of(elf.PT_LOAD) if f & elf.PF_W and f & elf.PF_X]
    tally.note("nothing writable and executable", not both, name)
    relocated = flags & elf.DF_TEXTREL or binary.dynamic(elf.DT_TEXTREL)
    tally.note("code not relocated", not relocated, name)
    paths = binary.dynamic_text(elf.DT_RPATH) + binary.dynamic_text(elf.DT_RUNPATH)
    tally.note("no library path of its own", not paths, f"{name}: {paths}")


def check_code(tally, name, binary):
    ways = binary.switches()
    for switch in PER_SOURCE:
        tally.note(f"every source with {switch}", ways and all(switch in way for way in ways), f"{name}: {ways}")
    for what, pattern in TRACES.items():
        tally.note(what, any(re.fullmatch(pattern, i) for i in binary.imports()), name)


def check_definitions(tally, build):
    """The definitions of each source; the executables keep no record of those."""
    commands = json.loads((build / "compile_commands.json").read_text())
    tally.note("sources found", len(commands) > 100, f"{len(commands)}")
    for entry in commands:
        words = entry["command"].split()
        for definition in DEFINITIONS:
            tally.note(f"every source with {definition}", definition in words, entry["file"])


def check(tally, build):
    names = {file.name for file in (build / "bin").glob("marovenda*")} | {"marovenda", "marovenda-demo-service"}
    for name in sorted(names):
        binary = elf.Elf(build / "bin" / name)
        check_layout(tally, name, binary)
        check_code(tally, name, binary)
    check_definitions(tally, build)
