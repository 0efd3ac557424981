"""The code blocks of a guide, and what the comment before each says of it.

    <!-- excerpt: examples/host/host.c -->     the block stands in that file, below docs/
    <!-- transcript -->                        the block is a shell session, which a test repeats
"""

import re
from dataclasses import dataclass
from pathlib import Path

BLOCK = re.compile(r"^<!-- (?P<tag>[a-z]+)(?:: (?P<argument>\S+))? -->\n```[a-z]*\n(?P<text>.*?)^```$", re.M | re.S)


@dataclass
class Block:
    tag: str
    argument: str
    line: int
    text: str


def blocks(guide: Path, tag: str) -> list[Block]:
    content = guide.read_text()
    found = [
        Block(match["tag"], match["argument"], content[: match.start()].count("\n") + 3, match["text"])
        for match in BLOCK.finditer(content)
    ]
    # A comment that does not stand directly before a block would leave the block untested.
    tags = re.findall(r"^<!-- (?:excerpt|transcript)\b", content, re.M)
    if len(tags) != len([block for block in found if block.tag in ("excerpt", "transcript")]):
        raise SystemExit(f"{guide}: a comment stands before no code block")
    return [block for block in found if block.tag == tag]
