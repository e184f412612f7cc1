#!/usr/bin/env python3
"""Runs every program over the corpus, measures it and prints what it kept as Markdown. Started by bench/peers/run.

Usage: compare.py CORPUS PEERS KELB HOME WORK [NAME…]     CORPUS: of make_corpus.py; PEERS: folder with node_modules and gumbo_text;
                                                          HOME: application folder; WORK: for results; NAME: these rows only
CPU seconds are user and system time of the whole process with all that it starts, the memory is that of the largest process;
of ROUNDS runs the least of either.
"""

import json
import os
import shutil
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path

import score

ROUNDS = 3
LONG_RUN = 30  # CPU seconds: one run is enough
HERE = Path(__file__).resolve().parent
COLUMNS = {"first": "first post", "reply": "replies", "thanks": "thanks", "banner": "board's adverts", "advert": "posted adverts",
           "edit": "edit notices", "noise": "noise", "frame": "frame", "pieces": "pages with pieces of tags"}


@dataclass
class Setup:
    corpus: Path  # with the folders discuz and tables
    peers: Path
    kelb: str
    home: Path
    work: Path


def measured(command, output):
    """CPU seconds and peak megabytes of one run; its standard output goes to a file."""
    # Started from the small time(1), because a process's peak begins with the size of the one that it was forked from; the
    # seconds are ours, because time(1) rounds them to hundredths.
    memory = output.with_suffix(".memory")
    with open(output, "wb") as out:
        process = subprocess.Popen(["/usr/bin/time", "-f", "%M", "-o", memory, *(str(word) for word in command)], stdout=out)
        _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"compare.py: {command[0]} ended with {process.returncode}; its output is in {output}")
    return usage.ru_utime + usage.ru_stime, int(memory.read_text()) / 1024


def emptied(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


class Peer:
    """A program that reads the pages of a folder and writes a text for each into another."""

    def __init__(self, *command):
        self.command = command

    def prepare(self, setup, pages):
        self.out = emptied(setup.work / "texts")

    def words(self, setup, pages):
        return [*self.command, pages, self.out]

    def result(self, setup, pages):
        return self.out


class Viewer(Peer):
    """w3m, one process a page. Lines are so long that the columns of a table do not run into each other."""

    def words(self, setup, pages):
        return ["sh", "-c", 'for page in "$0"/*.htm; do name=${page##*/}; '
                'w3m -dump -cols 1000 -I gbk -O UTF-8 -T text/html "$page" >"$1/${name%.htm}.txt"; done', pages, self.out]


class KelbJob:
    """A job from the crawl's Access database and the page files to a new Access database of articles."""

    def __init__(self, job):
        self.job = job

    def prepare(self, setup, pages):
        self.source, self.dest = setup.work / "crawl.mdb", setup.work / "articles.mdb"
        for database, table, columns in (
                (self.source, "bbsforum", "url varchar(255), content memo, cid int, sT varchar(255), sC memo"),
                (self.dest, "wxAll", "url varchar(255), recTime datetime, sT varchar(255), sC memo, sA memo, cid int")):
            database.unlink(missing_ok=True)
            kelb(setup, "db", "create", database)
            if database == self.source or self.job == "forum-import":
                kelb(setup, "db", "exec", database, f"create table {table} (id int identity(1,1) NOT NULL, {columns})")
        with open(pages / "pages.jsonl", "rb") as rows:
            kelb(setup, "db", "import", self.source, "bbsforum", stdin=rows)

    def words(self, setup, pages):
        where = ["--source", self.source, "--dest", self.dest, "--quiet"]
        if self.job == "forum-import":
            return [setup.kelb, "forum-import", *where, "--lan-folder", pages.parent]
        return [setup.kelb, "template-extract", *where, "--model", min(pages.glob("*.htm"))]

    def result(self, setup, pages):
        articles = setup.work / "articles.jsonl"
        with open(articles, "wb") as out:
            kelb(setup, "db", "export", self.dest, "wxAll", stdout=out)
        return articles


class KelbCall:
    """The forum extractor alone, as another program uses it: a page a line, already in UTF-8."""

    def prepare(self, setup, pages):
        self.answers = setup.work / "answers.jsonl"

    def words(self, setup, pages):
        return [setup.kelb, "call", "--file", pages / "requests.jsonl", "--out", self.answers]

    def result(self, setup, pages):
        return self.answers


def kelb(setup, *words, stdin=None, stdout=subprocess.DEVNULL):
    subprocess.run([setup.kelb, *(str(word) for word in words)], check=True, stdin=stdin, stdout=stdout)


def programs_of(setup):
    """The rows of each table: name and program."""
    node = ["node", HERE / "readability.mjs"]
    peers = [("Readability, jsdom", Peer(*node, "jsdom")), ("Readability, linkedom", Peer(*node, "linkedom")),
             ("python3-readability", Peer("/usr/bin/python3", HERE / "readability_lxml.py")), ("w3m -dump", Viewer()),
             ("a walk over gumbo's tree", Peer(setup.peers / "gumbo_text"))]
    return {"discuz": [*peers, ("kelb forum-import", KelbJob("forum-import")), ("kelb call", KelbCall())],
            "tables": [*peers, ("kelb forum-import", KelbJob("forum-import")),
                       ("kelb template-extract", KelbJob("template-extract"))]}


@dataclass
class Row:
    name: str
    program: object
    cpu: float = float("inf")  # the least of the runs
    memory: float = float("inf")
    kept: dict = field(default_factory=dict)

    def run(self, setup, pages):
        self.program.prepare(setup, pages)
        cpu, memory = measured(self.program.words(setup, pages), setup.work / "job.out")
        self.cpu, self.memory = min(cpu, self.cpu), min(memory, self.memory)
        print(f"{pages.name}: {self.name}: {cpu:.3f} s, {memory:.0f} MB", file=sys.stderr, flush=True)

    def find_kept(self, setup, pages):
        result = self.program.result(setup, pages)
        self.kept = score.score(score.read_truth(pages / "truth.jsonl"), score.read_output(result))
        print(f"{pages.name}: {self.name}: {json.dumps(self.kept)}", file=sys.stderr, flush=True)

    def cells(self, count):
        rate = float(f"{count / self.cpu:.2g}")  # the third digit is chance
        return [self.name, f"{rate:,.0f}", f"{self.memory:.0f} MB", *(f"{self.kept[key]:.0f}" for key in COLUMNS)]


def compare(setup, pages, rows):
    """Round by round, so that a busy minute of the machine does not hit one program only."""
    for number in range(ROUNDS):
        for row in rows:
            if number == 0 or row.cpu < LONG_RUN:
                row.run(setup, pages)
            if number == 0:
                row.find_kept(setup, pages)


def print_table(pages, rows):
    sizes = [page.stat().st_size for page in pages.glob("*.htm")]
    print(f"\n{pages.name}: {len(sizes)} pages of {min(sizes) // 1000} to {max(sizes) // 1000} KB, {sum(sizes) / 1e6:.1f} MB; "
          f"what was kept, in percent\n")
    print(f"| program | pages per CPU second | peak memory | {' | '.join(COLUMNS.values())} |")
    print("|---|" + "---|" * (2 + len(COLUMNS)))
    for row in rows:
        print(f"| {' | '.join(row.cells(len(sizes)))} |", flush=True)


def main():
    if len(sys.argv) < 6:
        raise SystemExit(__doc__)
    corpus, peers, program, home, work = (Path(given).resolve() for given in sys.argv[1:6])
    setup = Setup(corpus, peers, str(program), home, work)
    os.environ.update(KELB_HOME=str(home), KELB_PEERS=str(peers))
    for folder, programs in programs_of(setup).items():
        rows = [Row(name, program) for name, program in programs if not sys.argv[6:] or name in sys.argv[6:]]
        compare(setup, corpus / folder, rows)
        print_table(corpus / folder, rows)


if __name__ == "__main__":
    main()
