"""Reads back from the executables of a release that they were hardened."""

import json
import re
import subprocess

PER_SOURCE = ("-fstack-protector-strong", "-fstack-clash-protection")
DEFINITIONS = ("-D_FORTIFY_SOURCE=3", "-D_GLIBCXX_ASSERTIONS")
# What has to be found, or must not, in what readelf tells of an executable. The definitions leave calls in a program that
# copies bytes and indexes containers.
FOUND = {
    "position-independent": r"FLAGS_1\) .*\bPIE\b",
    "full RELRO": r"^  GNU_RELRO (?s:.*)(\(BIND_NOW\)|FLAGS\) .*BIND_NOW|FLAGS_1\) .*\bNOW\b)",
    "stack not executable": r"^  GNU_STACK .* RW  0x",
    "calls that check sizes (_FORTIFY_SOURCE)": r" UND __\w+_chk\b",
    "checked containers (_GLIBCXX_ASSERTIONS)": r" UND _ZSt21__glibcxx_assert_fail",
    "stack protector": r" UND __stack_chk_fail\b",
}
MISSING = {
    "nothing writable and executable": r"^  LOAD .* RWE ",
    "code not relocated": r"TEXTREL",
    "no library path of its own": r"\((RPATH|RUNPATH)\)",
}


def check(tally, build):
    names = {file.name for file in (build / "bin").glob("marovenda*")} | {"marovenda", "marovenda-demo-service"}
    for name in sorted(names):
        told = subprocess.run(["readelf", "--wide", "--segments", "--dynamic", "--dyn-syms", build / "bin" / name],
                              check=True, capture_output=True, text=True).stdout
        for wanted, patterns in ((True, FOUND), (False, MISSING)):
            for what, pattern in patterns.items():
                tally.note(what, bool(re.search(pattern, told, re.MULTILINE)) == wanted, name)
        compiled = subprocess.run(["readelf", "--string-dump=.GCC.command.line", build / "bin" / name], check=True,
                                  capture_output=True, text=True).stdout
        ways = [line.split() for line in compiled.splitlines() if line.startswith("  [")]
        for switch in PER_SOURCE:
            tally.note(f"every source with {switch}", ways and all(switch in way for way in ways), f"{name}: {ways}")
    # The executables keep no record of the definitions.
    commands = json.loads((build / "compile_commands.json").read_text())
    tally.note("sources found", len(commands) > 50, f"{len(commands)}")
    for entry in commands:
        for definition in DEFINITIONS:
            tally.note(f"every source with {definition}", definition in entry["command"].split(), entry["file"])
