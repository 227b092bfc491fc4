"""Follows docs/deploying.md in a copy of the repository, from its first command to the packages.

usage: deploying.py SOURCE_DIRECTORY WORK_DIRECTORY

The commands run as they are written, with the examples of the table as the company's values. What would take minutes or needs
root has a stand-in: apt-get and sudo install nothing, `cmake --build` only lists the commands, ./test and marovenda-check are
noted, and instead of dpkg-buildpackage something checks and writes what build-packages expects.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

from walk_through import copy

STAND_INS = {
    "sudo": 'exec "$@"',
    "apt-get": "exit 0",
    "apt-cache": 'echo "Package: $2"',
    "dh": "exit 0",
    "dpkg-query": '[ "$*" = "-W build-essential" ] || exec /usr/bin/dpkg-query "$@"',
    "cmake": 'if [ "$1" = --build ]; then exec {cmake} "$@" -- -t commands; fi; exec {cmake} "$@"',
    "dpkg-buildpackage": r"""cp -r debian deployments/company.cmake "$RECORDS/"
printf '%s\n' 'dpkg-buildpackage: info: source package marovenda' ' debian/rules binary' 'dh binary --buildsystem=cmake+ninja' \
    '   dh_update_autotools_config -O--buildsystem=cmake+ninja' '   debian/rules override_dh_auto_configure' \
    "make[1]: Entering directory '/tmp/marovenda'" '-- The CXX compiler identification is GNU 12.2.0' \
    '   dh_auto_build -O--buildsystem=cmake+ninja' '[1/2] /usr/bin/c++ -o marovenda main.cpp' \
    '   debian/rules override_dh_auto_install' '   dh_installdocs -O--buildsystem=cmake+ninja' \
    '   dh_strip -O--buildsystem=cmake+ninja' '   dh_builddeb -O--buildsystem=cmake+ninja' ' dpkg-genbuildinfo'
for name in marovenda marovenda-check marovenda-demo-service; do : >../"${{name}}_1_$(dpkg --print-architecture).deb"; done""",
}
NOTED = 'echo "${0##*/} $*" >>"$RECORDS/noted"'

wrong = []


def expect(holds, what):
    if not holds:
        wrong.append(what)


def commands(page):
    """The indented lines of the sections up to the packages."""
    return re.findall(r"^    (\S.*)$", page.split("\n## 7.")[0], re.MULTILINE)


def examples(page):
    return dict(re.findall(r"^\| `(MAROVENDA_\w+)` \|.*\| `(.+)` \|$", page, re.MULTILINE))


def script(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(f"#!/bin/sh\n{text}\n")
    path.chmod(0o755)


class Walk:
    def __init__(self, source, work):
        self.tree, self.records = work / "marovenda", work / "records"
        shutil.rmtree(work, ignore_errors=True)
        copy(source, self.tree)
        self.records.mkdir()
        for name, text in STAND_INS.items():
            script(work / "bin" / name, text.format(cmake=shutil.which("cmake")))
        self.environment = {key: value for key, value in os.environ.items() if not key.startswith("GIT_")}
        self.environment |= {"PATH": f"{work / 'bin'}:{os.environ['PATH']}", "RECORDS": str(self.records), "LC_ALL": "C.UTF-8",
                             "TMPDIR": str(work), "GIT_CONFIG_GLOBAL": "/dev/null",
                             **{f"GIT_{who}_{what}": "a@a.example" for who in ("AUTHOR", "COMMITTER") for what in ("NAME", "EMAIL")}}
        expect(os.access(self.tree / "test", os.X_OK), "./test cannot be run")
        script(self.tree / "test", NOTED)
        script(self.tree / "build/release/bin/marovenda-check", NOTED)
        for command in ("git init -q", "git add -A", "git commit -qm copy"):
            self.run(command)

    def run(self, command):
        done = subprocess.run(["bash", "-c", command], cwd=self.tree, env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if done.returncode:
            sys.exit(f"{command} has failed: {done.stdout}")
        return done.stdout

    def enter(self, values):
        """What the reader does after copying the demo deployment."""
        file = self.tree / "deployments/mine.cmake"
        for name, value in values.items():
            line = f'set({name} "{value}")'
            text, count = re.subn(rf"^set\({name} .*\)$", lambda _, line=line: line, file.read_text(), flags=re.MULTILINE)
            file.write_text(text if count else f"{text}{line}\n")


def check_packages(walk, values, said):
    maintainer = f"{values['MAROVENDA_MAINTAINER']} <{values['MAROVENDA_SUPPORT_EMAIL']}>"
    debian = walk.records / "debian"
    for name, line in (("control", f"Maintainer: {maintainer}"), ("control", f"Homepage: {values['MAROVENDA_HOMEPAGE']}"),
                       ("copyright", f"Upstream-Contact: {maintainer}")):
        expect(f"\n{line}\n" in (debian / name).read_text(), f"debian/{name} has no line {line}")
    field = walk.run(f"dpkg-parsechangelog -l {debian}/changelog -S Maintainer").strip()
    expect(field == maintainer, f"debian/changelog is by {field}")
    left = [f.name for f in debian.rglob("*") if f.is_file() and "marovenda.example" in f.read_text()]
    expect(not left, f"the demo's addresses are in {left}")
    expect((walk.records / "company.cmake").read_text() == (walk.tree / "deployments/mine.cmake").read_text(),
           "the packages are of another deployment")

    architecture = walk.run("dpkg --print-architecture").strip()
    packages = walk.tree / "build/packages"
    log = packages / f"build-{architecture}.log"
    steps = said.split("\nBuilding ")[1].split("\n", 1)[1]
    names = ("marovenda-check", "marovenda-demo-service", "marovenda")
    expect(steps == "  configuring\n  compiling\n  installing\n  separating the debug symbols\n  writing the packages\n"
           f"The output of the compiler and of all other tools is in {log}.\n\n"
           + "".join(f"{packages}/{name}_1_{architecture}.deb\n" for name in names),
           f"build-packages has printed: {steps}")
    expect("/usr/bin/c++" in log.read_text(), "the log has no compiler's commands")


def check_release(walk):
    """A release starts with what keeps it from being one. Where many notes belong to no version, the first one counts."""
    log = walk.tree / "CHANGELOG.md"
    log.write_text(log.read_text().replace("## [Unreleased]\n", "## [Unreleased]\n\n" + "- A note.\n" * 20000, 1))
    said = walk.run("! GNUPGHOME=$RECORDS packaging/release 0.99.0 --key nobody@marovenda.example")
    for what in ("CMakeLists.txt is at", "packaging/debian/changelog is at", "packaging/marovenda.metainfo.xml.in is at",
                 "CHANGELOG.md is at", "CHANGELOG.md has notes that belong to no version", "has uncommitted changes",
                 "gpg cannot sign with the key nobody@marovenda.example"):
        expect(what in said, f"packaging/release does not say: {what}")


def main():
    source, work = (pathlib.Path(argument).absolute() for argument in sys.argv[1:])
    page = (source / "docs/deploying.md").read_text()
    values, steps = examples(page), commands(page)
    walk = Walk(source, work)
    expect(steps[0].startswith("packaging/install-packages"), f"the first command is {steps[0]}")
    expect(len(values) == 12 and len(steps) == 8, f"{len(values)} values and {len(steps)} commands were found")
    said = {}
    for step in steps:
        said[step] = walk.run(step)
        if step.startswith("cp "):
            walk.enter(values)
    shown = "".join(f"--   {name + ':':31}{value}\n".replace("\\", "") for name, value in values.items())
    for step in steps[2:4]:
        expect(shown in said[step], f"{step} does not print the values: {said[step]}")
    expect("-o bin/marovenda-check" in said[steps[4]], f"{steps[4]} does not build {steps[5]}")
    noted = (walk.records / "noted").read_text()
    expect(noted == "marovenda-check prueba@company.example\ntest \n", f"was run: {noted}")
    contact = f"<update_contact>{values['MAROVENDA_SUPPORT_EMAIL']}</update_contact>"
    metainfo = walk.tree / "build/release/packaging/example.company.marovenda.metainfo.xml"
    expect(metainfo.exists() and contact in metainfo.read_text(), f"no metainfo says {contact}")
    check_packages(walk, values, said[steps[-1]])
    check_release(walk)
    print("\n".join(wrong) or f"{len(steps)} commands lead to the packages")
    sys.exit(bool(wrong))


if __name__ == "__main__":
    main()
