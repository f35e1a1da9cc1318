#!/usr/bin/env python3
"""Makes a directory that is the root of a Debian system with the given packages and what they depend on.

    clean_root.py ROOT PACKAGE...

The files come from this system, where the packages must be installed, so that nothing is downloaded. The new
root's dpkg knows these packages and no others: it refuses to install a package with a dependency that is missing.
Alternatives (such as /usr/bin/c++) and what the maintainer scripts of the packages make are not copied.
"""

import os
import pathlib
import re
import subprocess
import sys

DPKG = pathlib.Path("var/lib/dpkg")


def read_status():
    """Returns the status paragraph of each package that is installed here, by name."""
    paragraphs = {}
    for text in (pathlib.Path("/") / DPKG / "status").read_text(encoding="utf-8").split("\n\n"):
        if "\nStatus: install ok installed\n" in text:
            paragraphs[re.match(r"Package: (\S+)", text.lstrip())[1]] = text.strip() + "\n"
    return paragraphs


def field(paragraph, name):
    """Returns the value of a field that is one line long, empty if the paragraph has none."""
    match = re.search(rf"^{name}: (.*)$", paragraph, re.MULTILINE)
    return match[1] if match else ""


def names(relation):
    """Returns the names in a relation such as "a (>= 1) | b:any, c": a list of alternatives for each term."""
    return [[re.match(r"[^\s(:]+", name.strip())[0] for name in term.split("|")]
            for term in relation.split(",") if term.strip()]


def closure(wanted, paragraphs):
    """Returns the names of the essential packages, of `wanted`, and of all that they depend on."""
    providers = {}
    for name, paragraph in paragraphs.items():
        for (virtual,) in names(field(paragraph, "Provides")):
            providers.setdefault(virtual, name)

    found = set()
    open_names = wanted + [name for name in paragraphs if field(paragraphs[name], "Essential") == "yes"]
    while open_names:
        name = open_names.pop()
        if name in found:
            continue
        if name not in paragraphs:
            sys.exit(f"clean_root.py: {name} is not installed here; script/bootstrap installs it")
        found.add(name)
        for relation in ("Depends", "Pre-Depends"):
            for alternatives in names(field(paragraphs[name], relation)):
                installed = [providers.get(each, each) if each not in paragraphs else each for each in alternatives]
                open_names.append(next((each for each in installed if each in paragraphs), alternatives[0]))
    return sorted(found)


def files_of(packages):
    """Returns the paths of the packages' files and of what dpkg knows of them, without those that are not here."""
    info = pathlib.Path("/") / DPKG / "info"
    files = {str(info / "format")}
    for name in packages:
        for kind in ("list", "md5sums"):
            files.update(str(file) for file in (info / f"{name}.{kind}", *info.glob(f"{name}:*.{kind}")))
    listed = subprocess.run(["dpkg-query", "--listfiles", *packages], check=True, capture_output=True, text=True)
    files.update(line for line in listed.stdout.splitlines() if line.startswith("/") and line != "/.")
    # A system can leave out documents of its packages. Directories that only root may read are left out, too.
    return {file for file in files if os.path.lexists(file) and (os.access(file, os.R_OK) or not os.path.isdir(file))}


def copy(files, root):
    """Copies files to the same places below `root`."""
    # In ascending order, a directory stands before its files.
    names_to_copy = "\0".join(sorted(file[1:] for file in files))
    with subprocess.Popen(["tar", "-C", "/", "--create", "--no-recursion", "--null", "--files-from=-"],
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as packing:
        with subprocess.Popen(["tar", "-C", root, "--extract", "--no-same-owner"], stdin=packing.stdout) as unpacking:
            packing.stdin.write(names_to_copy.encode())
            packing.stdin.close()
    if packing.returncode or unpacking.returncode:
        sys.exit("clean_root.py: cannot copy the files; tar says why above")


def main(root, wanted):
    paragraphs = read_status()
    packages = closure(wanted, paragraphs)
    for directory in ("dev", "proc", "tmp", DPKG / "updates"):
        (root / directory).mkdir(parents=True)
    (root / DPKG / "status").write_text("\n".join(paragraphs[name] for name in packages), encoding="utf-8")

    files = files_of(packages)
    # The links that merge directories, such as /lib to /usr/lib, belong to no package.
    for link in pathlib.Path("/").iterdir():
        if link.is_symlink() and link.is_dir():
            (root / link.resolve().relative_to("/")).mkdir(parents=True, exist_ok=True)
            (root / link.name).symlink_to(link.readlink())
            files.discard(str(link))
    copy(files, root)


main(pathlib.Path(sys.argv[1]), sys.argv[2:])
