"""What each folder of the product includes and imports, against what its targets link.

usage: arrows.py SOURCE_DIRECTORY TARGETS QT_INCLUDE_DIRECTORY

TARGETS is written by CMake: on each line a target, its folder and what it links, separated by semicolons. A folder may
include the headers, and import the QML modules, of the targets that it links itself; what comes through another target
does not count, except for the Qt modules that stand on each other. The map in docs/architecture.md has the same arrows.
"""

import pathlib
import re
import sys

# What brings which headers of libraries.
LIBRARIES = {r"boost/": "Boost::headers", r"simdjson\.h": "simdjson::simdjson", r"sqlite3\.h": "SQLite::SQLite3",
             r"png\.h": "PNG::PNG", r"unicode/": "ICU::", r"httplib\.h": "PkgConfig::HTTPLIB", r"sodium\.h": "PkgConfig::SODIUM"}
# What a module of Qt always brings with it.
BELOW = {"Gui": {"Core"}, "Network": {"Core"}, "Qml": {"Core", "QmlIntegration"}, "Svg": {"Core", "Gui"}, "DBus": {"Core"},
         "Quick": {"Core", "Gui", "Qml", "QmlIntegration"}, "Core": set()}
wrong = []


def linked_by_folder(targets):
    linked = {}
    for line in targets.read_text().splitlines():
        _, folder, *libraries = line.split(";")
        linked.setdefault(folder, set()).update(libraries)
    return linked


def folders_of_targets(targets):
    return {line.split(";")[0]: line.split(";")[1] for line in targets.read_text().splitlines()}


def qt_modules(linked):
    direct = {name[5:] for name in linked if name.startswith("Qt6::")}
    return direct.union(*(BELOW.get(name, set()) for name in direct))


def check_includes(source, folder, linked, owners, qt_root):
    """`owners` says of each header of ours which folders have one of that name."""
    for file in sorted(f for f in (source / folder).iterdir() if f.suffix in (".cpp", ".h")):
        for kind, header in re.findall(r'^\s*#\s*include\s+([<"])([^>"]+)', file.read_text(), re.MULTILINE):
            place = f"{folder}/{file.name} includes {header}"
            if kind == '"':
                if header in owners and not owners[header] & ({folder} | linked["ours"]):
                    wrong.append(f"{place}, which belongs to {', '.join(sorted(owners[header]))}")
                continue
            needed = [library for pattern, library in LIBRARIES.items() if re.match(pattern, header)]
            if needed and not any(name.startswith(needed[0]) for name in linked["all"]):
                wrong.append(f"{place}, which belongs to {needed[0]}")
            modules = {d.name[2:] for d in qt_root.glob("Qt*") if (d / header.split("/")[-1]).exists()} if header[0] == "Q" else set()
            if modules and not modules & qt_modules(linked["all"]):
                wrong.append(f"{place}, which belongs to Qt's {', '.join(sorted(modules))}")


def check_imports(source, folder, linked, modules):
    """`modules` says of each QML module of ours which folder it is in."""
    for file in sorted((source / folder).glob("*.qml")):
        for module in re.findall(r"^import (Marovenda\.\w+)", file.read_text(), re.MULTILINE):
            if modules.get(module) not in {folder} | linked["ours"]:
                wrong.append(f"{folder}/{file.name} imports {module}, which belongs to {modules.get(module)}")


def main():
    source, targets, qt_root = map(pathlib.Path, sys.argv[1:])
    folders = folders_of_targets(targets)
    linked = {folder: {"all": libraries, "ours": {folders[name] for name in libraries & set(folders)} - {folder}}
              for folder, libraries in linked_by_folder(targets).items()}
    owners = {}
    for folder in linked:
        for header in (source / folder).glob("*.h"):
            owners.setdefault(header.name, set()).add(folder)
    modules = {}
    for folder in linked:
        for uri in re.findall(r"^ +URI (\S+)", (source / folder / "CMakeLists.txt").read_text(), re.MULTILINE):
            modules[uri] = folder
    for folder, links in linked.items():
        check_includes(source, folder, links, owners, qt_root)
        check_imports(source, folder, links, modules)

    written = (source / "docs" / "architecture.md").read_text()
    drawn = {folder: set(to.split(", ")) for folder, to in re.findall(r"^    (\S+) +→ (.+)$", written, re.MULTILINE)}
    built = {folder: links["ours"] for folder, links in linked.items() if links["ours"]}
    for folder in sorted(drawn | built):
        if drawn.get(folder) != built.get(folder):
            wrong.append(f"docs/architecture.md draws {folder} → {', '.join(sorted(drawn.get(folder, ['nothing'])))}; "
                         f"the build has {', '.join(sorted(built.get(folder, ['nothing'])))}")
    print("\n".join(wrong) or f"{sum(len(to) for to in built.values())} arrows, {len(owners)} headers, {len(modules)} QML modules")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
