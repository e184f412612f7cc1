"""follow.py KELB SOURCES GUIDE WORK: runs the commands of a guide, those behind "    $ ", one after the other in one shell, and
compares what they print with what the guide shows below them. "…" in the guide stands for any text, alone in a line for any
lines; times are not compared. A command below which nothing is shown must only end with 0."""

import pathlib
import re
import shutil
import subprocess
import sys

PROMPT, INDENT = "    $ ", "    "
LEAST_COMMANDS = 30  # a guide whose layout this script does not understand would have none


def commands_of(text):
    """Pairs of a command and the lines that are shown below it."""
    found, open_block = [], False
    for line in text.splitlines():
        if line.startswith(PROMPT):
            found.append((line[len(PROMPT):], []))
            open_block = True
        elif open_block and line.startswith(INDENT):
            shown, line = found[-1][1], line[len(INDENT):]
            if shown and shown[-1].startswith("{") and line.startswith(" "):
                shown[-1] += line  # a summary that is broken for the page
            else:
                shown.append(line)
        else:
            open_block = False
    return found


def timeless(line):
    line = re.sub(r"\d{8}-\d{6}", "TIME", line)
    return re.sub(r'"seconds": [\d.]+', '"seconds": N', line).rstrip()


def is_shown(printed, shown):
    pattern = ""
    for line in shown:
        if line == "…":
            pattern += r"(?:.*\n)*"
        else:
            pattern += ".*".join(re.escape(piece) for piece in timeless(line).split("…")) + r"\n"
    return re.fullmatch(pattern, "".join(timeless(line) + "\n" for line in printed)) is not None


def run(commands, work):
    """What each command printed, and its exit status."""
    mark = "=== end of a command:"
    script = "".join(f'{command}\nprintf "\\n{mark} %s\\n" $?\n' for command, _ in commands)
    done = subprocess.run(["bash", "-c", script], cwd=work, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=True,
                          env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"}, encoding="utf-8")
    outputs = re.split(rf"\n{mark} (\d+)\n", done.stdout)
    return list(zip(outputs[0:-1:2], map(int, outputs[1::2])))


kelb, sources, guide, work = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
shutil.rmtree(work, ignore_errors=True)
(work / "build/demo/bin").mkdir(parents=True)
(work / "build/demo/bin/kelb").symlink_to(kelb)
for folder in ("scripts", "examples"):
    (work / folder).symlink_to((sources / folder).resolve())

commands = commands_of((sources / guide).read_text(encoding="utf-8"))
results = run(commands, work)
faults = 0
for (command, shown), (output, status) in zip(commands, results, strict=True):
    printed = output.splitlines()
    if status != 0 or (shown and not is_shown(printed, shown)):
        faults += 1
        print(f"{guide}: $ {command}", f"exit status {status}; printed:", *printed, "shown:", *shown, sep="\n")
print(f"{guide}: {len(commands)} commands, {faults} faults")
sys.exit(faults != 0 or len(commands) < LEAST_COMMANDS)
