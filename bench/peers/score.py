#!/usr/bin/env python3
"""What a program kept of the corpus: looks for every sentence of the truth in the program's text of that page.

Usage: score.py TRUTH OUTPUT     TRUTH: truth.jsonl of make_corpus.py; OUTPUT: a folder of NUMBER.txt in UTF-8, or a file of
                                 JSON lines with HTML fragments: url and sC, as `kelb db export` writes articles, or id and
                                 result, as `kelb call` answers
       score.py --self-check
Prints one JSON object: per category the share of its sentences that were kept, in percent; as "pieces" the share of the pages
whose text has pieces of tags left, which a browser would show.
"""

import html
import json
import re
import sys
import unicodedata
from pathlib import Path

TAG = re.compile(r"<!--.*?-->|<(script|style)\b.*?</\1\s*>|<[a-zA-Z/!][^>]*>", re.S | re.I)

PIECE = re.compile(r"br/>|</?(td|tr|div|font|span|strong|a)\b")  # in a squeezed text


def squeezed(text):
    """Without white space and invisible characters, so that line breaks and indents of a program do not matter."""
    return "".join(c for c in text if not c.isspace() and unicodedata.category(c) not in ("Cc", "Cf"))


def text_of_html(page):
    return squeezed(html.unescape(TAG.sub("", page)))


def kept(sentences, text):
    return sum(squeezed(sentence) in text for sentence in sentences)


def read_truth(path):
    with open(path, encoding="utf-8") as lines:
        return [json.loads(line) for line in lines]


def read_output(path):
    """Page number → squeezed text. A page that the program gave nothing for is missing."""
    if path.is_dir():
        return {int(file.stem): squeezed(file.read_text(encoding="utf-8")) for file in path.glob("*.txt")}
    with open(path, encoding="utf-8") as lines:
        rows = [json.loads(line) for line in lines]
    return {int((row["url"] if "url" in row else row["id"]).split("-")[1]): text_of_html(row["sC"] if "sC" in row else row["result"])
            for row in rows}


def score(truth, output):
    found, all_of_them = {}, {}
    for page in truth:
        text = output.get(page["number"], "")
        for category, sentences in page["truth"].items():
            found[category] = found.get(category, 0) + kept(sentences, text)
            all_of_them[category] = all_of_them.get(category, 0) + len(sentences)
    shares = {category: round(100 * found[category] / total, 1) for category, total in all_of_them.items() if total}
    texts = [text for page in truth if (text := output.get(page["number"]))]
    pieces = round(100 * sum(PIECE.search(text) is not None for text in texts) / len(truth), 1)
    return {"pages": len(truth), "texts": len(texts), **shares, "pieces": pieces}


def self_check():
    """Two pages by hand: one whole but for its thanks and with a tag in a word, one that a program gave nothing for."""
    truth = [
        {"number": 1, "truth": {"first": ["通电 测得12V", "换R&D管"], "thanks": ["谢谢楼主"], "noise": ["a b\"c d"]}},
        {"number": 2, "truth": {"first": ["另一页", "还有"], "thanks": [], "noise": ["x y"]}},
    ]
    whole = text_of_html('通<b>电</b>测\r\n得12V<br>换R&amp;D管<script>谢谢楼主</script> a&nbsp;b"\u3000c d<!-- 谢谢楼主 -->< br />')
    expected = {"pages": 2, "texts": 1, "first": 50.0, "thanks": 0.0, "noise": 50.0, "pieces": 50.0}
    if score(truth, {1: whole}) != expected:
        raise SystemExit(f"score.py: the self-check failed: {score(truth, {1: whole})} in place of {expected}")
    if kept(["谢谢楼主"], squeezed("先谢 谢楼\n主了")) != 1 or kept(["谢谢楼主"], squeezed("谢谢")) != 0:
        raise SystemExit("score.py: the self-check failed: a sentence over two lines")


def main():
    if sys.argv[1:] == ["--self-check"]:
        self_check()
    elif len(sys.argv) == 3:
        print(json.dumps(score(read_truth(sys.argv[1]), read_output(Path(sys.argv[2])))))
    else:
        raise SystemExit(__doc__)


if __name__ == "__main__":
    main()
