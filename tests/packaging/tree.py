"""What `cmake --install` lays out, and that what describes the product agrees with it.

usage: tree.py SOURCE_DIRECTORY RELEASE_TREE WORK_DIRECTORY
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as xml

SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
NAMES = {"app": "marovenda", "demo": "marovenda-demo-service", "check": "marovenda-check"}
# What of the app's package is not the executable and its manual.
APP_FILES = {"share/applications/marovenda.desktop", "share/icons/hicolor/scalable/apps/marovenda.svg",
             "share/metainfo/example.marovenda.marovenda.metainfo.xml", "share/doc/marovenda/NOTICES.md",
             *(f"share/icons/hicolor/{size}x{size}/apps/marovenda.png" for size in SIZES)}

CHECK_FILES = {"share/marovenda-check/openapi.json", "share/marovenda-check/protocol.md"}
FILES = {"app": APP_FILES, "demo": set(), "check": CHECK_FILES}

wrong = []


def expect(holds, what):
    if not holds:
        wrong.append(what)


def run(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def installed(build, work, *options):
    shutil.rmtree(work, ignore_errors=True)
    run("cmake", "--install", str(build), "--prefix", "/usr", *options, env={**os.environ, "DESTDIR": str(work)})
    root = work / "usr"
    return root, {str(f.relative_to(root)) for f in root.rglob("*") if not f.is_dir()}


def check_trees(build, work):
    for component, name in NAMES.items():
        options = ("--component", component)
        _, files = installed(build, work, *options)
        wanted = {f"bin/{name}", f"share/man/man1/{name}.1"} | FILES[component]
        expect(files == wanted, f"{name}: {sorted(files ^ wanted)}")
    root, files = installed(build, work)
    expect(files == {"bin/marovenda", "share/man/man1/marovenda.1"} | APP_FILES, f"without a component: {sorted(files)}")
    return root


def check_entry_and_page(root):
    """As desktops and software catalogues judge them. Where the page's pictures are is the company's affair: not asked for."""
    for command in (("desktop-file-validate", *root.glob("share/applications/*")),
                    ("appstreamcli", "validate", "--no-net", "--pedantic", *root.glob("share/metainfo/*"))):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        # Version 1.5 of the entries' specification has this key; the validator knows it from 0.27 on.
        said = done.stdout.splitlines()
        only_that = said and all('contains key "SingleMainWindow"' in line for line in said)
        expect(done.returncode == 0 or only_that, f"{command[0]}: {done.stdout}")
    entry = next(root.glob("share/applications/*")).read_text().splitlines()
    expect({"SingleMainWindow=true", "StartupNotify=true"} <= set(entry), "the entry does not say that there is one window")


def check_icons(root):
    for size in SIZES:
        picture = (root / f"share/icons/hicolor/{size}x{size}/apps/marovenda.png").read_bytes()
        found = int.from_bytes(picture[16:20], "big"), int.from_bytes(picture[20:24], "big")
        expect(found == (size, size), f"the icon of {size} pixels is {found}")


def check_manual(source, build):
    """Every option that an executable names is in its manual, and the reverse."""
    for name in NAMES.values():
        text = run(str(build / "bin" / name), "--help", env={**os.environ, "QT_QPA_PLATFORM": "offscreen"})
        # Qt adds options of its own to every application.
        options = set(re.findall(r"--[a-z][a-z-]+", text)) - {"--help-all"}
        page = (source / "packaging" / f"{name}.1").read_text().replace("\\-", "-").replace("\\ ", " ")
        section = page.split(".SH OPTIONS")[1].split("\n.SH ")[0]
        written = set(re.findall(r"^\.B.*?(--[a-z][a-z-]+)", section, re.MULTILINE))
        expect(options == written, f"{name}: its manual and its --help differ in {sorted(options ^ written)}")


def check_versions(source, build):
    version = re.search(r"^    VERSION (\S+)", (source / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
    metainfo = xml.parse(source / "packaging" / "marovenda.metainfo.xml.in")
    release = metainfo.find("releases/release")
    log = re.search(r"^## \[(\d\S*)\] - (\S+)", (source / "CHANGELOG.md").read_text(), re.MULTILINE)
    debian = re.match(r"marovenda \((\S+)\)", (source / "packaging" / "debian" / "changelog").read_text())[1]
    for where, found in (("the metainfo", release.get("version")), ("CHANGELOG.md", log[1]), ("debian/changelog", debian)):
        expect(found == version, f"{where} is at {found}, CMakeLists.txt at {version}")
    expect(release.get("date") == log[2], f"released on {release.get('date')} and on {log[2]}")
    for name in NAMES.values():
        said = run(str(build / "bin" / name), "--version", env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}).split()[-1]
        expect(said == version, f"{name} --version says {said}")


def check_pictures(source):
    """Every picture that the metainfo names is there, in the size that it says."""
    for image in xml.parse(source / "packaging" / "marovenda.metainfo.xml.in").iter("image"):
        file = source / "packaging" / "screenshots" / image.text.rsplit("/", 1)[1]
        data = file.read_bytes() if file.exists() else b""
        size = tuple(str(int.from_bytes(data[at:at + 4], "big")) for at in (16, 20))
        expect(size == (image.get("width"), image.get("height")), f"{file.name}: {size}")


def check_dependencies(source):
    """The QML modules that the layouts import are dependencies of the package, and what it is built with is installed by us."""
    control = (source / "packaging" / "debian" / "control").read_text()
    imports = set()
    for folder in ("app", "screens", "ui"):
        for file in (source / folder).rglob("*.qml"):
            imports |= set(re.findall(r"^import (Qt[A-Za-z.]+)", file.read_text(), re.MULTILINE))
    for module in sorted(imports):
        package = "qml6-module-" + module.lower().replace(".", "-")
        expect(f"\n {package},\n" in control, f"{package} is no dependency of the package")
    development = (source / "packaging" / "debian-packages.txt").read_text()
    needed = control.split("Build-Depends:\n")[1].split("\n\n")[0]
    for name in re.findall(r"[a-z0-9][a-z0-9.+-]+(?= |,|\n|$)", re.sub(r"\([^)]*\)|:any|:native", "", needed)):
        expect(name == "debhelper-compat" or re.search(rf"(^|\| ?){re.escape(name)}( |$)", development, re.MULTILINE),
               f"{name} is needed to build the package, but is not in debian-packages.txt")


def main():
    source, build, work = (pathlib.Path(argument).absolute() for argument in sys.argv[1:])
    if not (build / "bin/marovenda").exists():
        sys.exit(f"{build} is not built: ./test builds it")
    root = check_trees(build, work)
    check_entry_and_page(root)
    check_icons(root)
    check_manual(source, build)
    check_versions(source, build)
    check_pictures(source)
    check_dependencies(source)
    print("\n".join(wrong) or "all agree")
    sys.exit(bool(wrong))


if __name__ == "__main__":
    main()
