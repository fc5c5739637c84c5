"""Prints a bill of materials (SPDX 2.3, JSON): bill_of_materials.py VERSION COMMIT FILE...

FILE: the packages and archives that are shipped, in the current folder. What they contain and need is read from the
Debian packages among them and from the machine that built them.
"""
import datetime
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import urllib.parse

CONTAINED = pathlib.Path(__file__).with_name("contained_libraries")


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def identifier(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def entry(name, version, **more):
    nothing = {"downloadLocation": "NOASSERTION", "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION",
               "copyrightText": "NOASSERTION", "filesAnalyzed": False}
    return {"SPDXID": identifier(name), "name": name, "versionInfo": version, **nothing, **more}


def debian_entry(package):
    """An installed Debian package, with the version that the build used."""
    version, architecture = output_of("dpkg-query", "-W", "-f", "${Version} ${Architecture}", package).split()
    quote = lambda text: urllib.parse.quote(text, safe=":")  # a package URL encodes "+"
    locator = f"pkg:deb/debian/{quote(package)}@{quote(version)}?arch={architecture}"
    reference = {"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl", "referenceLocator": locator}
    return entry(package, version, supplier="Organization: Debian", externalRefs=[reference])


def shipped_entry(file, version):
    digest = hashlib.sha256(file.read_bytes()).hexdigest()
    return entry(file.name, version, packageFileName=file.name, checksums=[{"algorithm": "SHA256", "checksumValue": digest}])


def needed_packages(file):
    """The installed Debian packages among those that a .deb depends on or recommends."""
    for field in ("Depends", "Recommends"):
        for package in re.findall(r"(?:^|, )([a-z0-9.+-]+)", output_of("dpkg-deb", "-f", file, field)):
            if subprocess.run(["dpkg-query", "-W", package], capture_output=True).returncode == 0:
                yield package


def main():
    version, commit, *names = sys.argv[1:]
    files = [pathlib.Path(name) for name in sorted(names)]
    packages = {"tovusmoke": entry("tovusmoke", version, sourceInfo=f"commit {commit}")}
    relations = [("SPDXRef-DOCUMENT", "DESCRIBES", "tovusmoke")]
    for package in CONTAINED.read_text().split():
        packages[package] = debian_entry(package)
        relations.append(("tovusmoke", "CONTAINS", package))
    for file in files:
        packages[file.name] = shipped_entry(file, version)
        relations.append((file.name, "GENERATED_FROM", "tovusmoke"))
        for package in needed_packages(file) if file.suffix == ".deb" else ():
            packages.setdefault(package, debian_entry(package))
            relations.append((file.name, "DEPENDS_ON", package))
    digest = hashlib.sha256(json.dumps(packages, sort_keys=True).encode()).hexdigest()
    made = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    relate = lambda name: name if name.startswith("SPDXRef-") else identifier(name)
    json.dump({
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"tovusmoke-{version}", "documentNamespace": f"urn:sha256:{digest}",
        "creationInfo": {"created": made.strftime("%Y-%m-%dT%H:%M:%SZ"), "creators": ["Tool: bill_of_materials.py"]},
        "packages": list(packages.values()),
        "relationships": [{"spdxElementId": relate(a), "relationshipType": kind, "relatedSpdxElement": relate(b)}
                          for a, kind, b in relations],
    }, sys.stdout, indent=1)
    print()


main()
