#!/usr/bin/env python3
"""Compares the texts in the sources with the catalogues in lang/.

    tools/check-texts.py            exit code 1 and one line per fault
    tools/check-texts.py --list     the texts of the sources, as "<app>:<id> <default>"

A text in the sources is an application, perhaps a window or a control, a number and a literal:
    {IDC_NAME, kLibraryTexts, 25902, L"&Name"}      Lng::text(kSharedTexts, 90001, L"OK")
    setItemText(kSharedTexts, IDOK, 90001, L"OK")
Each catalogue has each of them with the same <source>, no others, and a <target> with the same printf conversions and
a mnemonic exactly where the source has one.
"""
import re
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
LNG_HEADER = ROOT / "toolkit/orvatool/include/orvatool/Lng.h"
NOT_SOURCES = {"build", "tests", "bench", "docs", "lang", ".git"}

LITERAL = r'L"(?:[^"\\\n]|\\.)*"'
TEXT = r"\b(?:Lng::)?({apps})((?:\s*,\s*[^,(){{}};\"]+){{0,2}}?)\s*,\s*(\d+)\s*,\s*(" + LITERAL + r"(?:\s*" + LITERAL + r")*)"
COMMENT_OR_LITERAL = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:[^"\\\n]|\\.)*"', re.S)
CONVERSION = re.compile(r"%([-+ #0-9.*']*)(hh|h|ll|l|L|q|j|z|t|w|I64|I32|I)?(.)", re.S)
ESCAPES = {"n": "\n", "r": "\r", "t": "\t", '"': '"', "\\": "\\", "'": "'"}
XLIFF = "{urn:oasis:names:tc:xliff:document:1.2}"


def applications():
    """The names by which the sources call an application, with its number; from the header that defines them."""
    header = LNG_HEADER.read_text(encoding="utf-8")
    body = re.search(r"enum AppID[^{]*\{(.*?)\};", header, re.S).group(1)
    apps = {name: int(number) for name, number in re.findall(r"(\w+)\s*=\s*(\d+)", body)}
    aliases = re.findall(r"constexpr Lng::AppID (\w+) = Lng::(\w+);", header)
    return apps | {alias: apps[name] for alias, name in aliases}


def without_comments(source):
    return COMMENT_OR_LITERAL.sub(lambda m: m.group() if m.group()[0] == '"' else " ", source)


def value(literals):
    """The text that adjacent literals stand for."""
    parts = re.findall(r'"((?:[^"\\]|\\.)*)"', literals)
    unescape = lambda m: chr(int(m[1][1:], 16)) if m[1][0] in "xuU" else ESCAPES[m[1]]
    return "".join(re.sub(r"\\(x[0-9A-Fa-f]+|u[0-9A-Fa-f]{4}|U[0-9A-Fa-f]{8}|.)", unescape, part) for part in parts)


def source_texts(faults):
    apps = applications()
    pattern = re.compile(TEXT.format(apps="|".join(sorted(apps, key=len, reverse=True))))
    texts = {}
    for path in sorted(ROOT.rglob("*")):
        place = path.relative_to(ROOT)
        if path.suffix not in (".cpp", ".h") or place.parts[0] in NOT_SOURCES:
            continue
        for app, _, number, literals in pattern.findall(without_comments(path.read_text(encoding="utf-8"))):
            key, text = f"{apps[app]}:{number}", value(literals)
            if texts.setdefault(key, text) != text:
                faults.append(f'{place}: {key} is "{text}" here and "{texts[key]}" elsewhere')
    return texts


def conversions(text):
    found = []
    for flags, size, letter in CONVERSION.findall(text):
        if letter != "%":
            found.append((flags.count("*"), size, "d" if letter == "i" else letter))
    return found


def has_mnemonic(text):
    return "&" in text.replace("&&", "")


def catalogue(path, faults):
    """The units of a catalogue: id -> (source, target)."""
    units = {}
    for unit in ElementTree.parse(path).getroot().iter(XLIFF + "trans-unit"):
        key = unit.get("id")
        if key in units:
            faults.append(f"{path.name}: {key} is there twice")
        units[key] = (unit.findtext(XLIFF + "source", ""), unit.findtext(XLIFF + "target", ""))
    return units


def check(path, texts, faults):
    units = catalogue(path, faults)
    for key in sorted(texts.keys() - units.keys()):
        faults.append(f'{path.name}: {key} is missing: "{texts[key]}"')
    for key in sorted(units.keys() - texts.keys()):
        faults.append(f'{path.name}: {key} is in no source: "{units[key][0]}"')
    for key in sorted(units.keys() & texts.keys()):
        source, target = units[key]
        if source != texts[key]:
            faults.append(f'{path.name}: {key} has the source "{source}", the code "{texts[key]}"')
        if not target:
            faults.append(f"{path.name}: {key} is not translated")
        elif conversions(target) != conversions(source):
            faults.append(f'{path.name}: {key} has other conversions: "{target}"')
        elif has_mnemonic(target) != has_mnemonic(source):
            faults.append(f'{path.name}: {key} has a mnemonic on one side only: "{target}"')


def main(arguments):
    faults = []
    texts = source_texts(faults)
    if arguments == ["--list"]:
        for key in sorted(texts, key=lambda k: [int(part) for part in k.split(":")]):
            print(key, repr(texts[key])[1:-1])
        return 0
    catalogues = sorted((ROOT / "lang").glob("*.xlf"))
    for path in catalogues:
        check(path, texts, faults)
    print("\n".join(faults) if faults else f"{len(texts)} texts in {len(catalogues)} catalogues")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
