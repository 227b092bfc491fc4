"""Whether the bill of materials is one, and names all that the executable links and that it loads when it runs."""

import hashlib
import json
import os
import pathlib
import re
import subprocess

from stage import story

ROOT = pathlib.Path(__file__).parents[2]
PURL = re.compile(r"pkg:deb/debian/[a-z0-9.+-]+@[^?@ ]+\?arch=\w+")


def output(*command, **environment):
    return subprocess.run(command, capture_output=True, text=True, check=False, env={**os.environ, **environment}).stdout


def check_form(bill, app):
    """What the format (CycloneDX 1.5) and the minimum elements of such bills ask for."""
    itself = bill["metadata"]["component"]
    digest = hashlib.sha256(pathlib.Path(app).read_bytes()).hexdigest()
    assert (bill["bomFormat"], bill["specVersion"]) == ("CycloneDX", "1.5"), str(bill)[:200]
    assert bill["metadata"]["timestamp"] == "2023-11-14T22:13:20Z", bill["metadata"]["timestamp"]
    assert (itself["name"], itself["hashes"][0]["content"]) == ("marovenda", digest), itself
    assert re.fullmatch(r"\d+\.\d+\.\d+", itself["version"]), itself
    installed = {tuple(re.split(r"(?::\w+)?\t", line)) for line in output("dpkg-query", "--show").splitlines()}
    for part in bill["components"]:
        assert part["scope"] in ("required", "optional") and PURL.fullmatch(part["purl"]), part
        assert (part["name"], part["version"]) in installed, part
    files = [file for part in bill["components"] for file in part.get("components", [])]
    references = [part["bom-ref"] for part in [itself, *bill["components"], *files]]
    named = {reference for entry in bill["dependencies"] for reference in [entry["ref"], *entry["dependsOn"]]}
    assert len(references) == len(set(references)) and named <= set(references), named


@story
def bill_of_materials(stage):
    """The libraries that the release links, those of which only headers are used, and whatever of Qt a running app has in
    memory. What the machine's graphics driver and desktop bring is no part of a release."""
    app = stage.release_app
    texts = [output(ROOT / "packaging" / "sbom", app, SOURCE_DATE_EPOCH="1700000000") for _ in range(2)]
    assert texts[0] == texts[1], "another bill each time"
    bill = json.loads(texts[0])
    check_form(bill, app)
    linked = {file["name"] for part in bill["components"] if part["scope"] == "required"
              for file in part.get("components", [])}
    needed = set(re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "--dynamic", app)))
    assert needed and needed <= linked, needed - linked
    names = {part["name"] for part in bill["components"]}
    for header in ("libboost", "libxxhash-dev"):
        assert any(name.startswith(header) for name in names), header
    with stage.alone(app) as phone:
        maps = pathlib.Path(f"/proc/{phone.app.pid}/maps").read_text()
    loaded = sorted({file for file in re.findall(r"/\S+[qQ]t6\S+$", maps, re.MULTILINE)
                     if not re.search("/plugins/(platformthemes|platforminputcontexts)/", file)})
    assert len(loaded) > 15, loaded
    owners = {line.split(":")[0] for line in output("dpkg-query", "--search", *loaded).splitlines()}
    assert owners and owners <= names, owners - names


@story
def bill_of_another_processor(stage):
    foreign = stage.folder / "marovenda"
    data = bytearray(pathlib.Path(stage.release_app).read_bytes())
    data[18] ^= 0xff
    foreign.write_bytes(data)
    done = subprocess.run([ROOT / "packaging" / "sbom", foreign], capture_output=True, text=True, check=False)
    assert (done.returncode, done.stdout) == (1, ""), done
    assert done.stderr == f"sbom: {foreign} is for another processor; run sbom on a machine that has it\n", done.stderr
