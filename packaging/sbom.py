#!/usr/bin/python3
"""sbom.py PLATFORM TREE FOLDER

Leaves in FOLDER a list of what the programs and libraries of TREE carry inside and need, as SPDX 2.3, made from borrowed/parts.txt and the
versions that the build used.
"""

from __future__ import annotations

import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
PROGRAMS = {"linux": ["lib/lib*.so*", "bin/*"], "windows": ["bin/*.dll", "bin/*.exe"]}
UNKNOWN = "NOASSERTION"

Part = dict[str, str]


def output(*command: str) -> str:
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, cwd=ROOT).stdout.strip()


def parts_for(platform: str) -> list[Part]:
    lines = (ROOT / "borrowed/parts.txt").read_text(encoding="utf-8").splitlines()
    rows = [[field.strip() for field in line.split("|")] for line in lines if line and not line.startswith("#")]
    parts = [dict(zip(("name", "package", "licence", "platforms", "carriers"), row)) for row in rows]
    return [part for part in parts if platform in part["platforms"].split()]


def version_of(package: str) -> str:
    """That of the fetched source where there is one, else Debian's."""
    fetched = re.findall(rf'PACKAGE {package} FILE [^_]+_([0-9.]+)\.orig', (ROOT / "borrowed/CMakeLists.txt").read_text(encoding="utf-8"))
    return fetched[0] if fetched else output("dpkg-query", "--show", "--showformat=${Version}", package)


def identifier(name: str) -> str:
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def package(name: str, version: str, licence: str, **more: object) -> dict[str, object]:
    facts = {"name": name, "SPDXID": identifier(name), "versionInfo": version, "supplier": UNKNOWN, "downloadLocation": UNKNOWN}
    legal = {"filesAnalyzed": False, "licenseConcluded": licence, "licenseDeclared": licence, "copyrightText": UNKNOWN}
    return {**facts, **legal, **more}


def part_package(part: Part) -> dict[str, object]:
    version = version_of(part["package"])
    place = {"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl", "referenceLocator": f"pkg:deb/debian/{part['package']}@{version}"}
    return package(part["name"], version, part["licence"], externalRefs=[place])


def file_package(file: pathlib.Path, version: str) -> dict[str, object]:
    purpose = "LIBRARY" if re.search(r"\.(so|dll)\b", file.name) else "APPLICATION"
    checksum = {"algorithm": "SHA256", "checksumValue": hashlib.sha256(file.read_bytes()).hexdigest()}
    return package(file.name, version, UNKNOWN, packageFileName=file.name, checksums=[checksum], primaryPackagePurpose=purpose)


def stem(file: pathlib.Path) -> str:
    """The name that borrowed/parts.txt has for it."""
    return re.sub(r"^lib|\.(so|dll|exe)\b.*$", "", file.name)


def needed_by(file: pathlib.Path) -> list[str]:
    return re.findall(r"^ +NEEDED +(\S+)", output("objdump", "-p", str(file)), re.MULTILINE)


def relation(one: str, kind: str, other: str) -> dict[str, str]:
    return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}


def relations_of(file: pathlib.Path, parts: list[Part], platform: str, own: set[str]) -> list[dict[str, str]]:
    me = identifier(file.name)
    carried = [relation(me, "CONTAINS", identifier(part["name"])) for part in parts if stem(file) in part["carriers"].split()]
    needed = needed_by(file) if platform == "linux" else []  # on Windows the system's own only
    return [relation(identifier("Fringix"), "CONTAINS", me), *carried] + [
        relation(me, "DYNAMIC_LINK", identifier(name)) for name in needed if name not in own
    ]


def extracted(parts: list[Part]) -> list[dict[str, str]]:
    own = [part for part in parts if part["licence"].startswith("LicenseRef-")]
    return [
        {"licenseId": part["licence"], "extractedText": pathlib.Path("/usr/share/doc", part["package"], "copyright").read_text(encoding="utf-8")}
        for part in own
    ]


def document(platform: str, tree: pathlib.Path) -> dict[str, object]:
    found = re.search(r"project\(Fringix VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))
    assert found
    version, name = found.group(1), f"fringix-{found.group(1)}-{platform}"
    parts = parts_for(platform)
    files = sorted({path for pattern in PROGRAMS[platform] for path in tree.glob(pattern) if not path.is_symlink()})
    own = {path.name for path in tree.glob("lib/*")}
    relations = [relation("SPDXRef-DOCUMENT", "DESCRIBES", identifier("Fringix"))]
    for file in files:
        relations += relations_of(file, parts, platform, own)
    listed = [package("Fringix", version, UNKNOWN, comment="The owner of Fringix has chosen no licence for it yet.")]
    listed += [file_package(file, version) for file in files] + [part_package(part) for part in parts]
    known = {entry["SPDXID"] for entry in listed}
    system = sorted({entry["relatedSpdxElement"] for entry in relations} - known)
    listed += [package(entry.removeprefix("SPDXRef-"), UNKNOWN, UNKNOWN, comment="of the system") for entry in system]
    moment = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"])))
    digest = hashlib.sha256(json.dumps([listed, relations]).encode()).hexdigest()
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": name,
        "documentNamespace": f"https://example.invalid/spdx/{name}-{digest}",
        "creationInfo": {"created": moment, "creators": ["Tool: fringix-sbom"]},
        "packages": listed,
        "relationships": relations,
        "hasExtractedLicensingInfos": extracted(parts),
    }


platform, tree, folder = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
made = document(platform, tree)
(folder / f"{made['name']}.spdx.json").write_text(json.dumps(made, indent=1) + "\n", encoding="utf-8")
