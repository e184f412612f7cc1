#!/usr/bin/env python3
"""Writes pages of forum threads in code page 936, with what a reader would find on each of them.

Usage: make_corpus.py FOLDER [PAGES [OTHER [SEED]]]
FOLDER/discuz gets PAGES pages (500) of Discuz! boards of three versions, FOLDER/tables OTHER pages (200) of another make. Beside
the pages: truth.jsonl (the sentences of every page by category, each of them once on its page), pages.jsonl (rows for the table
bbsforum) and requests.jsonl (requests for `kelb call`). The same seed gives the same bytes.
"""

import json
import random
import sys
from pathlib import Path

import boards
from score import squeezed, text_of_html
from thread import make_thread

FEWEST_BYTES, MOST_BYTES = 20_000, 150_000


def countable(page, truth):
    """Whether every sentence stands on the page exactly once, so that finding it in an output means something."""
    text = text_of_html(page)
    return all(text.count(squeezed(sentence)) == 1 for sentences in truth.values() for sentence in sentences)


def make_page(rng, number, board):
    while True:
        thread = make_thread(rng, number, rng.choices(range(4, 37), range(36, 3, -1))[0])
        page = board(rng, thread)
        data = page.encode("gbk")
        if FEWEST_BYTES <= len(data) <= MOST_BYTES and countable(page, thread.truth):
            return thread, data


def write_line(file, value):
    json.dump(value, file, ensure_ascii=False)
    file.write("\n")


def make_folder(rng, folder, kinds, count, first):
    folder.mkdir(parents=True)
    names = sorted(kinds)
    with (open(folder / "truth.jsonl", "w", encoding="utf-8") as truth,
          open(folder / "pages.jsonl", "w", encoding="utf-8") as rows,
          open(folder / "requests.jsonl", "w", encoding="utf-8") as requests):
        for number in range(first, first + count):
            kind = names[number % len(names)]
            thread, data = make_page(rng, number, kinds[kind])
            (folder / f"{number}.htm").write_bytes(data)
            url = f"http://bbs.example.net/thread-{number}-1-1.html"
            write_line(truth, {"number": number, "kind": kind, "title": thread.title, "truth": thread.truth})
            write_line(rows, {"url": url, "content": f"D:\\{folder.name}\\{number}.htm", "cid": 28})
            write_line(requests, {"id": url, "op": "Cls4Discuz.extDiscuzPageContent", "args": [data.decode("gbk"), "", True]})


def main():
    if not 2 <= len(sys.argv) <= 5:
        raise SystemExit(__doc__)
    folder = Path(sys.argv[1])
    pages, other, seed = (int(given) for given in (sys.argv[2:] + ["500", "200", "20100803"][len(sys.argv) - 2:]))
    rng = random.Random(seed)
    make_folder(rng, folder / "discuz", boards.DISCUZ, pages, 10000)
    make_folder(rng, folder / "tables", boards.OTHER, other, 20000)


if __name__ == "__main__":
    main()
