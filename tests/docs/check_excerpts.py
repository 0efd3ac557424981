"""Whether the code in the guides is that of the example files.

    check_excerpts.py DOCS
"""

import sys
import textwrap
from pathlib import Path

from markdown import blocks


def occurs(text: str, content: str) -> bool:
    """Whether the lines stand in the content one after the other, as far to the right as may be."""
    wanted = textwrap.dedent(text).splitlines()
    lines = content.splitlines()
    windows = ("\n".join(lines[i : i + len(wanted)]) for i in range(len(lines) - len(wanted) + 1))
    return any(textwrap.dedent(window).splitlines() == wanted for window in windows)


docs = Path(sys.argv[1])
checked = 0
wrong = []
for guide in sorted(docs.glob("*.md")):
    for block in blocks(guide, "excerpt"):
        checked += 1
        if not occurs(block.text, (docs / block.argument).read_text()):
            wrong.append(f"{guide}:{block.line}: {block.argument} has no such lines")
print(*wrong, f"{checked} excerpts", sep="\n")
sys.exit(1 if wrong or checked == 0 else 0)
