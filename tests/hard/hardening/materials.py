"""Whether the bill of materials is one, and names all that the executable links and that it loads when it runs."""

import hashlib
import json
import os
import pathlib
import re
import subprocess

from watched import WatchedPhone

PURL = re.compile(r"pkg:deb/debian/[a-z0-9.+-]+@[^?@ ]+\?arch=\w+")


def output(*command, **environment):
    return subprocess.run(command, capture_output=True, text=True, check=False, env={**os.environ, **environment}).stdout


def check_form(tally, bill, app):
    """What the format (CycloneDX 1.5) and the minimum elements of such bills ask for."""
    itself = bill["metadata"]["component"]
    digest = hashlib.sha256(pathlib.Path(app).read_bytes()).hexdigest()
    tally.note("bill: form", (bill["bomFormat"], bill["specVersion"]) == ("CycloneDX", "1.5"), str(bill)[:200])
    tally.note("bill: time", bill["metadata"]["timestamp"] == "2023-11-14T22:13:20Z", bill["metadata"]["timestamp"])
    tally.note("bill: the release itself", itself["name"] == "marovenda" and itself["hashes"][0]["content"] == digest
               and re.fullmatch(r"\d+\.\d+\.\d+", itself["version"]), str(itself))
    installed = {tuple(re.split(r"(?::\w+)?\t", line)) for line in output("dpkg-query", "--show").splitlines()}
    for part in bill["components"]:
        tally.note("bill: component", part["scope"] in ("required", "optional") and PURL.fullmatch(part["purl"])
                   and (part["name"], part["version"]) in installed, str(part)[:300])
    files = [file for part in bill["components"] for file in part.get("components", [])]
    references = [part["bom-ref"] for part in [itself, *bill["components"], *files]]
    named = {reference for entry in bill["dependencies"] for reference in [entry["ref"], *entry["dependsOn"]]}
    tally.note("bill: references", len(references) == len(set(references)) and named <= set(references), str(named))


def check_libraries(tally, bill, app, folder):
    """Those that it links, those of which only headers are used, and whatever of Qt a running app has in memory. What the
    machine's graphics driver brings is no part of a release."""
    linked = {file["name"] for part in bill["components"] if part["scope"] == "required"
              for file in part.get("components", [])}
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "--dynamic", app))
    tally.note("bill: libraries linked", needed and set(needed) <= linked, str(set(needed) - linked))
    names = {part["name"] for part in bill["components"]}
    for header in ("libboost", "libxxhash-dev"):
        tally.note("bill: library compiled in", any(name.startswith(header) for name in names), header)
    with WatchedPhone(folder / "records") as phone:
        phone.open(app)
        phone.find("Iniciar Sesión")
        maps = pathlib.Path(f"/proc/{phone.app.pid}/maps").read_text()
    loaded = sorted(set(re.findall(r"/\S+[qQ]t6\S+$", maps, re.MULTILINE)))
    tally.note("bill: libraries seen", len(loaded) > 15, f"{len(loaded)}: {loaded}")
    owners = {line.split(":")[0] for line in output("dpkg-query", "--search", *loaded).splitlines()}
    tally.note("bill: libraries in memory", owners and owners <= names, str(owners - names))


def check(tally, script, app, folder, long):
    text = output(script, app, SOURCE_DATE_EPOCH="1700000000")
    if long:
        tally.note("bill: the same each time", output(script, app, SOURCE_DATE_EPOCH="1700000000") == text)
    bill = json.loads(text)
    check_form(tally, bill, app)
    check_libraries(tally, bill, app, folder)
