"""Whether the operations guide knows the failures of the sources, and the sources know those of the guide.

    check_failure_lines.py GUIDE SOURCE_TREE
"""

import re
import sys
from pathlib import Path

guide, tree = Path(sys.argv[1]), Path(sys.argv[2])
text = guide.read_text()
TREES = ("src", "common", "smbusd", "emulator", "quillonctl", "platform")


def sources(*folders: str) -> str:
    """All code, with texts in pieces put together."""
    files = sorted(file for folder in folders for file in (tree / folder).rglob("*") if file.suffix in (".h", ".cpp"))
    return re.sub(r'"\s*\n\s*"', "", "\n".join(file.read_text() for file in files))


def normal(line: str) -> str:
    """A format, with one sign for what varies and no line end."""
    varied = re.sub(r"%[#0-9]*(?:hhu|zu|zd|[sduxXp])|\{[^{}]*\}", "…", line)
    return re.sub(r"…(?:\.…)+", "…", re.sub(r"0x…", "…", varied)).removesuffix("\\n").replace('\\"', '"')


def calls(code: str, start: str) -> list[str]:
    """What stands between the brackets of each call."""
    found = []
    for match in re.finditer(start, code):
        depth, end = 1, match.end()
        while depth:
            depth += {"(": 1, ")": -1}.get(code[end], 0)
            end += 1
        found.append(code[match.end() : end - 1].strip())
    return found


def formats(arguments: str) -> list[str]:
    return [line for line in map(normal, re.findall(r'"((?:[^"\\]|\\.)*)"', arguments)) if re.search("[A-Za-z]{2}", line)]


lines = {span.replace("\\|", "|") for span in re.findall(r"`([^`\n]+)`", text)}
tables = re.findall(r"^\| (?:Line|Reason|Assertion) \|.*\n\|[-|]+\n((?:\|.*\n)+)", text, re.M)
rows = [re.match(r"\| `([^`]+)` \|", row)[1].replace("\\|", "|") for table in tables for row in table.splitlines()]
wrong = []

# From the sources to the guide.
library = sources("src")
wanted = {expression for expression in calls(library, r"(?<!static_)\bassert\(") if expression}
for arguments in calls(library, r"\bql_trace\(\s*0,"):
    wanted |= set(formats(arguments)[: 2 if "?" in arguments else 1])
for arguments in calls(sources("smbusd"), r"\bLog::(?:error|warning|info)\("):
    wanted |= set(formats(arguments)[:1])
wanted |= set(formats((tree / "emulator/I2c.cpp").read_text())) - {"I2c.h", "ok"}
wanted |= set(re.findall(r'(?:getenv|envname|fromEnvironment)\( "([A-Z_]+)"', sources(*TREES)))
wrong += [f"{guide} lacks `{line}`" for line in sorted(wanted - lines)]

# From the guide to the sources.
code = sources(*TREES)
everything = "\n".join([*formats(code), *calls(code, r"\bassert\(")])
for row in rows:
    pieces = [piece.strip() for piece in row.split("…") if len(piece.strip()) > 3]
    wrong += [f"no source has `{piece}` of `{row}`" for piece in pieces if piece not in everything]

print(*wrong, f"{len(wanted)} lines of the sources, {len(rows)} of the guide", sep="\n")
sys.exit(1 if wrong or not wanted or not rows else 0)
