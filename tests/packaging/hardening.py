"""Reads back from the executables of a release that they were hardened.

usage: hardening.py RELEASE_TREE
"""

import json
import pathlib
import re
import subprocess
import sys

PER_SOURCE = ("-fstack-protector-strong", "-fstack-clash-protection")
# The linker's own note of these is missing wherever the system's startup objects lack it, as Debian 12's do.
PER_PROCESSOR = {"X86-64": ("-fcf-protection=full",), "AArch64": ("-mbranch-protection=standard",)}
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


def main():
    build, wrong = pathlib.Path(sys.argv[1]), []
    if not (build / "bin/marovenda").exists():
        sys.exit(f"{build} is not built: ./test builds it")
    names = {file.name for file in (build / "bin").glob("marovenda*")} | {"marovenda", "marovenda-demo-service"}
    for name in sorted(names):
        told = subprocess.run(["readelf", "--wide", "--file-header", "--segments", "--dynamic", "--dyn-syms", build / "bin" / name],
                              check=True, capture_output=True, text=True).stdout
        for wanted, patterns in ((True, FOUND), (False, MISSING)):
            for what, pattern in patterns.items():
                if bool(re.search(pattern, told, re.MULTILINE)) != wanted:
                    wrong.append(f"{name}: {what}")
        compiled = subprocess.run(["readelf", "--string-dump=.GCC.command.line", build / "bin" / name], check=True,
                                  capture_output=True, text=True).stdout
        ways = [line.split() for line in compiled.splitlines() if line.startswith("  [")]
        processor = next((switches for machine, switches in PER_PROCESSOR.items()
                          if re.search(rf"Machine: .*{machine}", told)), ())
        for switch in (*PER_SOURCE, *processor):
            if not ways or not all(switch in way for way in ways):
                wrong.append(f"{name}: every source with {switch}: {ways}")
    # The executables keep no record of the definitions.
    commands = json.loads((build / "compile_commands.json").read_text())
    wrong += [f"{entry['file']}: {definition}" for entry in commands for definition in DEFINITIONS
              if definition not in entry["command"].split()]
    print("\n".join(wrong) or f"{len(names)} executables of {len(commands)} sources are hardened")
    sys.exit(bool(wrong) or len(commands) < 30)


if __name__ == "__main__":
    main()
