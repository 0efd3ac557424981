"""Repeats the shell sessions of a guide and compares what they print.

    run_transcripts.py GUIDE SOURCE_TREE BIN...

All sessions of a guide run in one shell, at the top of the source tree, with the BIN folders in PATH. What the
guide calls /tmp/quillon, and makes itself, lies in a folder of the test. A line "..." stands for any lines, and
"…" within a line for any text.
"""

import os
import queue
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from markdown import blocks

SHOWN = "/tmp/quillon"
PATIENCE = 30


class Shell:
    def __init__(self, tree: str, path: list[str]):
        environment = dict(os.environ, PATH=os.pathsep.join([*path, os.environ["PATH"]]), LC_ALL="C.UTF-8")
        self.process = subprocess.Popen(
            ["bash", "--norc"], cwd=tree, env=environment, text=True, start_new_session=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.lines = queue.Queue()
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        for line in self.process.stdout:
            self.lines.put(line)

    def run(self, command: str, is_enough) -> str:
        """What the command prints; a program in the background may go on until that is enough."""
        end = "end of the command"
        # As with a person, who sees that a job has ended, its number is free for the next.
        self.process.stdin.write(f"{command}\njobs > /dev/null\necho {end}\n")
        self.process.stdin.flush()
        limit = time.monotonic() + PATIENCE
        printed = ""
        ended = False
        while not (ended and (is_enough(printed) or not command.endswith("&"))):
            try:
                line = self.lines.get(timeout=max(0, limit - time.monotonic()))
            except queue.Empty:
                break
            if line.endswith(end + "\n"):
                ended = True
                line = line[: -len(end) - 1]
            printed += line
        return printed

    def close(self):
        # The session is the shell's own, with all that it has started.
        os.killpg(self.process.pid, signal.SIGTERM)
        self.process.wait()


def pattern(expected: str) -> re.Pattern:
    lines = ["(.*\n)*?" if line == "...\n" else re.escape(line).replace("…", ".*")
             for line in expected.splitlines(keepends=True)]
    return re.compile("".join(lines))


def steps(text: str):
    """Commands, and what each prints."""
    for part in re.split(r"^\$ ", text, flags=re.M)[1:]:
        command, printed = re.match(r"((?:.*\n)(?:^> .*\n)*)((?:.*\n)*)", part, re.M).groups()
        yield command.replace("\n> ", "\n").strip(), printed


guide, tree, *path = sys.argv[1:]
folder = tempfile.mkdtemp(prefix="docs-")
work = f"{folder}/quillon"
shell = Shell(tree, path)
checked = 0
wrong = 0
for block in blocks(Path(guide), "transcript"):
    for command, expected in steps(block.text):
        checked += 1
        wanted = pattern(expected.replace(SHOWN, work))
        printed = shell.run(command.replace(SHOWN, work), wanted.fullmatch)
        if not wanted.fullmatch(printed):
            wrong += 1
            print(f"{guide}:{block.line}: $ {command}\n-- wanted\n{expected}-- printed\n{printed}")
shell.close()
shutil.rmtree(folder)
print(f"{checked} commands, {wrong} wrong")
sys.exit(1 if wrong or checked == 0 else 0)
