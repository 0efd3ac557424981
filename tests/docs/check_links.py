"""Whether the links of the documentation lead to a file, and to a heading in it.

    check_links.py SOURCE_TREE
"""

import re
import sys
from pathlib import Path

tree = Path(sys.argv[1])


def anchors(page: Path) -> set[str]:
    headings = re.findall(r"^#+ (.*)$", re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.M | re.S), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


wrong = []
checked = 0
for page in [tree / "README.md", *sorted((tree / "docs").glob("*.md"))]:
    for target in re.findall(r"\]\(([^)\s]+)\)", page.read_text()):
        if re.match(r"[a-z]+:", target):
            continue
        checked += 1
        path, _, anchor = target.partition("#")
        file = page.parent / path if path else page
        if not file.exists() or (anchor and anchor not in anchors(file)):
            wrong.append(f"{page}: {target} leads nowhere")
print(*wrong, f"{checked} links", sep="\n")
sys.exit(1 if wrong or checked == 0 else 0)
