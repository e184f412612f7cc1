"""Writes the workbooks of the sheet tests into a folder: make_workbooks.py FOLDER"""
import datetime
import struct
import sys

import xlwt

folder = sys.argv[1] + "/"
DATE = xlwt.easyxf(num_format_str="YYYY-MM-DD")
DATE_TIME = xlwt.easyxf(num_format_str="YYYY-MM-DD HH:MM:SS")
TIME = xlwt.easyxf(num_format_str="HH:MM:SS")


def record(kind, content):
    return struct.pack("<HH", kind, len(content)) + content


class Raw:
    """Stands for a cell and writes records of the test's own."""

    def __init__(self, data):
        self.data = data

    def get_biff_data(self):
        return self.data


def formula(row, column, result, following=b""):
    """A formula of one token (the number 1) with the result that Excel keeps for it."""
    tokens = struct.pack("<HBH", 3, 0x1E, 1)
    return Raw(record(0x0006, struct.pack("<HHH", row, column, 15) + result + struct.pack("<HL", 0, 0) + tokens) + following)


def text_result(text):
    return record(0x0207, struct.pack("<HB", len(text), 1) + text.encode("utf-16-le"))


def no_number(kind, value=0):
    return struct.pack("<BBBBBBH", kind, 0, value, 0, 0, 0, 0xFFFF)


def save(name, sheets):
    """sheets: name -> rows of values; None is no cell, a pair is (value, style)."""
    book = xlwt.Workbook(encoding="utf-8")
    for title, rows in sheets.items():
        sheet = book.add_sheet(title)
        for r, row in enumerate(rows):
            for c, value in enumerate(row):
                if isinstance(value, Raw):
                    sheet.row(r).insert_cell(c, value)
                elif isinstance(value, tuple):
                    sheet.write(r, c, *value)
                elif value is not None:
                    sheet.write(r, c, value)
    book.save(folder + name)


save("cells.xls", {
    "SHEET1": [
        ["名称", "数量", None, "数量", "f3", "日期", "时间", "钟", "有货", " "],
        ["长虹电视机", 42, 3.25, 1e10, "x", (datetime.date(2015, 12, 2), DATE),
         (datetime.datetime(2015, 12, 2, 8, 30, 59), DATE_TIME), (datetime.time(12, 34, 56), TIME), True, "语" * 200],
        [],
        ["𠀀 \"a,b\"", -7, 0.1, None, 5, (datetime.date(1900, 1, 1), DATE), None, None, False, "é"],
        ["two\nlines", 0, 2, 1.5, 2.5, (datetime.date(1900, 2, 28), DATE), None, None, None, None],
        [None, None, None, None, None, (datetime.date(2100, 3, 1), DATE)],
        [None, None, None, None, None, (datetime.date(9999, 12, 31), DATE)],
    ],
    "second": [["other"], ["x"]],
})
save("formulas.xls", {"Sheet1": [
    ["what", "result"],
    ["number", formula(1, 1, struct.pack("<d", 2.5))],
    ["text", formula(2, 1, no_number(0), text_result("结果"))],
    ["shared", formula(3, 1, no_number(0), record(0x04BC, bytes(40)) + text_result("s" * 300))],
    ["yes", formula(4, 1, no_number(1, 1))],
    ["error", formula(5, 1, no_number(2, 42))],
    ["empty text", formula(6, 1, no_number(3))],
    # A chart inside the sheet: records of its own, with a number that is no cell.
    ["after a chart", Raw(record(0x0809, struct.pack("<HH", 0x0600, 0x0020) + bytes(12)) +
                          record(0x0203, struct.pack("<HHHd", 7, 1, 0, 99.0)) + record(0x000A, b""))],
    ["last", 1],
]})
save("errors.xls", {"Sheet1": [["a", "b"], ["x", Raw(record(0x0205, struct.pack("<HHHBB", 1, 1, 15, 42, 1)))]]})
save("many.xls", {"Sheet1": [["nr", "text", "quarter"]] + [[i, "行%d" % i, i / 4] for i in range(1, 5001)]})
save("lower.xls", {"Sheet1": [[], [], [None, "name"], [None, "a"], [], [None, "b"]]})
save("empty.xls", {"Sheet1": []})
save("head.xls", {"Sheet1": [["only", "names"]]})
save("other.xls", {"资料": [["a"], [1]], "Tabelle1": [["b"], [2]]})
save("password.xls", {"Sheet1": [["a"], [Raw(record(0x002F, bytes(4)))]]})
# Texts that begin at every place of a record and go on over up to eight of them, and short ones between them.
save("long.xls", {"Sheet1": [["a", "b"]] + [[("语%d" % i) * (i * 401 % 8000), "x" * i + "y" * (i * 97 % 32000)] for i in range(1, 60)]})


def pad(data, size):
    return data + bytes(-len(data) % size)


def entry(name, kind, start, size, child=0xFFFFFFFF):
    title = (name + "\0").encode("utf-16-le") if name else b""
    return (pad(title, 64) if title else bytes(64)) + struct.pack(
        "<HBBLLL", len(title), kind, 1, 0xFFFFFFFF, 0xFFFFFFFF, child) + bytes(36) + struct.pack("<LQ", start, size)


def short_container(name, stream):
    """A compound file whose only stream lies in short sectors, in reverse order; the directory's second sector names it."""
    count = len(pad(stream, 64)) // 64
    pieces = b"".join(pad(stream, 64)[i * 64:i * 64 + 64] for i in reversed(range(count)))
    root = pad(pieces, 512)
    root_sectors = len(root) // 512
    short_table = b"".join(struct.pack("<L", 0xFFFFFFFE if i == 0 else i - 1) for i in range(count))
    # Sectors: 0 table, 1 and 2 directory, 3 table of short sectors, then these.
    table = [0xFFFFFFFD, 2, 0xFFFFFFFE, 0xFFFFFFFE] + [5 + i for i in range(root_sectors - 1)] + [0xFFFFFFFE]
    directory = [entry("Root Entry", 5, 4, len(pieces), 4)] + [entry("", 0, 0, 0)] * 3 + \
                [entry(name, 2, count - 1, len(stream))] + [entry("", 0, 0, 0)] * 3
    header = bytes.fromhex("d0cf11e0a1b11ae1") + bytes(16) + struct.pack(
        "<HHHHH6xLLLLLLLLL", 0x3E, 3, 0xFFFE, 9, 6, 0, 1, 1, 0, 4096, 3, 1, 0xFFFFFFFE, 0) + struct.pack("<L", 0)
    header += b"\xff" * (512 - len(header))
    filled = table + [0xFFFFFFFF] * (128 - len(table))
    return header + struct.pack("<128L", *filled) + b"".join(directory) + pad(short_table + b"\xff" * 4, 512) + root


def biff8(dimensions, cells, globals_=b""):
    """The least workbook that Excel 97 would call one."""
    begin = lambda kind: record(0x0809, struct.pack("<HH", 0x0600, kind) + bytes(12))
    sheet_record = lambda at: record(0x0085, struct.pack("<LBBBB", at, 0, 0, 6, 0) + b"sheet1")
    start = len(begin(5)) + len(sheet_record(0)) + len(globals_) + 4
    return begin(5) + sheet_record(start) + globals_ + record(0x000A, b"") + begin(0x10) + record(0x0200, dimensions) + \
        b"".join(cells) + record(0x000A, b"")


def label(row, column, text):
    return record(0x0204, struct.pack("<HHHHB", row, column, 0, len(text), 0) + text.encode("latin-1"))


def write(name, data):
    with open(folder + name, "wb") as file:
        file.write(data)


# Its dimensions claim four thousand million rows.
WRONG = struct.pack("<LLHHH", 0, 0xFFFFFFFF, 0, 0xFFFF, 0)
CELLS = [label(0, 0, "name"), label(1, 0, "short")]
write("short.xls", short_container("Workbook", biff8(WRONG, CELLS)))
write("word.doc", short_container("WordDocument", b"text"))
write("encrypted.xls", short_container("EncryptedPackage", b"secret"))
write("wide.xls", short_container("Workbook", biff8(WRONG, CELLS + [label(0, 256, "IW")])))
write("cut_text.xls", short_container("Workbook", biff8(WRONG, [record(0x0204, struct.pack("<HHHHB", 0, 0, 0, 9, 0))])))
write("no_dimensions.xls", short_container("Workbook", biff8(WRONG, CELLS).replace(record(0x0200, WRONG), b"")))


def text(characters, runs=0):
    return struct.pack("<HB", len(characters), 8 if runs else 0) + (struct.pack("<H", runs) if runs else b"") + \
        characters.encode("latin-1") + bytes(4 * runs)


# A table of texts where the formatting of the second one goes over the end of a record.
def formatted(name, title, runs_behind):
    second = text(title, 5)
    table = record(0x00FC, struct.pack("<LL", 3, 3) + text("name") + second[:-4 * runs_behind]) + \
        record(0x003C, second[-4 * runs_behind:] + text("behind"))
    cells = [record(0x00FD, struct.pack("<HHHL", row, 0, 0, row)) for row in range(3)]
    write(name, short_container("Workbook", biff8(WRONG, cells, table)))


formatted("formatted.xls", "formatted", 3)
formatted("all_formatting.xls", "formatted", 5)
write("texts_claimed.xls", short_container("Workbook", biff8(WRONG, CELLS, record(0x00FC, struct.pack("<LL", 1, 1 << 30)))))
write("texts_cut_off.xls", short_container("Workbook", biff8(WRONG, CELLS, record(0x00FC, struct.pack("<LL", 1, 1) + text("cut")[:-1]))))
