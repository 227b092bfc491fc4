"""Whether the bill of materials is one, and names all that the executable links and that it loads when it runs."""

import hashlib
import json
import os
import pathlib
import re
import subprocess

import elf
from watched import WatchedPhone

TIME = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ")
SERIAL = re.compile(r"urn:uuid:[0-9a-f]{8}-[0-9a-f]{4}-[1-5][0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}")
PURL = re.compile(r"pkg:deb/debian/[a-z0-9.+-]+@[^?@ ]+\?arch=\w+")


def sha256(file):
    return [{"alg": "SHA-256", "content": hashlib.sha256(pathlib.Path(file).read_bytes()).hexdigest()}]


def check_form(tally, bill, app):
    """What the format (CycloneDX 1.5) and the minimum elements of such bills ask for."""
    good = bill["bomFormat"] == "CycloneDX" and bill["specVersion"] == "1.5" and bill["version"] == 1
    tally.note("bill: form", good and SERIAL.fullmatch(bill["serialNumber"]), str(bill)[:200])
    tally.note("bill: time", TIME.fullmatch(bill["metadata"]["timestamp"]), bill["metadata"]["timestamp"])
    itself = bill["metadata"]["component"]
    tally.note("bill: the release itself", itself["type"] == "application" and itself["name"] == "marovenda"
               and itself["hashes"] == sha256(app) and re.fullmatch(r"\d+\.\d+\.\d+", itself["version"]), str(itself))
    installed = subprocess.run(["dpkg-query", "--show"], capture_output=True, text=True, check=True).stdout
    versions = {tuple(re.split(r"(?::\w+)?\t", line)) for line in installed.splitlines()}
    for part in bill["components"]:
        good = part["type"] == "library" and part["scope"] in ("required", "optional")
        tally.note("bill: component", good and PURL.fullmatch(part["purl"])
                   and (part["name"], part["version"]) in versions, str(part)[:300])
    references = [part["bom-ref"] for part in bill["components"]] + [itself["bom-ref"]]
    references += [file["bom-ref"] for part in bill["components"] for file in part.get("components", [])]
    tally.note("bill: references differ", len(references) == len(set(references)))
    for entry in bill["dependencies"]:
        missing = [r for r in [entry["ref"], *entry["dependsOn"]] if r not in references]
        tally.note("bill: dependencies", not missing and entry["dependsOn"], str(missing))


def check_links(tally, bill, app):
    files = {file["name"]: (part, file) for part in bill["components"] for file in part.get("components", [])}
    direct = set(bill["dependencies"][0]["dependsOn"])
    for library in elf.Elf(app).needed():
        part, file = files.get(library, ({}, {}))
        found = part.get("scope") == "required" and part["bom-ref"] in direct
        tally.note("bill: library linked", found and len(file["hashes"][0]["content"]) == 64, library)
    for header in ("libboost", "libxxhash-dev"):
        tally.note("bill: library compiled in", any(p["name"].startswith(header) for p in bill["components"]), header)


def check_run(tally, bill, app, folder):
    """Whatever of Qt a running app has in memory. What the machine's graphics driver brings is no part of a release."""
    with WatchedPhone(folder / "records") as phone:
        phone.open(app)
        phone.find("Iniciar Sesión")
        maps = pathlib.Path(f"/proc/{phone.app.pid}/maps").read_text()
    names = {part["name"] for part in bill["components"]}
    loaded = sorted(set(re.findall(r"/\S+[qQ]t6\S+$", maps, re.MULTILINE)))
    # Those of the decoders of images come only with a photo.
    tally.note("bill: libraries seen", len(loaded) > 15, f"{len(loaded)}: {loaded}")
    found = subprocess.run(["dpkg-query", "--search", *loaded], capture_output=True, text=True).stdout
    owners = {line.partition(": ")[2]: line.split(":")[0] for line in found.splitlines()}
    for path in loaded:
        tally.note("bill: library in memory", owners.get(path) in names, f"{path} of {owners.get(path)}")


def check(tally, script, app, folder, long):
    environment = {**os.environ, "SOURCE_DATE_EPOCH": "1700000000"}

    def write():
        return subprocess.run([script, app], capture_output=True, text=True, check=True, env=environment).stdout

    text = write()
    if long:
        tally.note("bill: the same each time", write() == text)
    bill = json.loads(text)
    check_form(tally, bill, app)
    check_links(tally, bill, app)
    check_run(tally, bill, app, folder)
