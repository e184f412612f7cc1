#!/usr/bin/env python3
"""readability_lxml.py PAGES OUT: the main part of every page of a folder by python3-readability, as text."""

import logging
import sys
from pathlib import Path

import lxml.html
from readability import Document

logging.disable(logging.WARNING)  # it tells every step
pages, out = (Path(given) for given in sys.argv[1:3])
for page in pages.glob("*.htm"):
    summary = Document(page.read_bytes().decode("gbk", errors="replace")).summary()
    (out / page.with_suffix(".txt").name).write_text(lxml.html.fromstring(summary).text_content(), encoding="utf-8")
