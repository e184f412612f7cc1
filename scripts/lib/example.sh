# Sourced by the scripts that work on the example crawls.

# kelb_example KELB FOLDER: fills the folder anew with an application folder, the crawled pages, the crawl databases and
# empty article databases, made by the built program KELB. Exports KELB_HOME. In the settings, D: stands for the folder.
kelb_example() {
    local kelb=$1 out=$2 name
    local crawl_table="create table bbsforum (id int identity(1,1) NOT NULL, url varchar(255), refurl varchar(255), \
reftxt varchar(255), content Memo, cid int, sT varchar(255), sC Memo)"
    local article_table="create table wxAll (id int identity(1,1) NOT NULL, url varchar(255), recTime datetime, \
sT varchar(255), sC Memo, sA Memo, cid int)"
    local printer_table="create table wxPrinter (id int identity(1,1) NOT NULL, url varchar(255), cid int, \
recTime datetime, sT varchar(255), sC Memo, sA Memo, refimgurl varchar(255))"
    local knowledge_table
    knowledge_table="create table wxKnowledge (id int identity(1,1) NOT NULL, url varchar(255), TVCode varchar(255), \
TVName varchar(255)$(printf ', param%d varchar(255)' 1 2 3 4 5 6 7 8 9 10))"

    if [ -e "$out" ] && [ -n "$(ls -A "$out" 2>/dev/null)" ] && ! [ -e "$out/home/Kelb.ini" ]; then
        echo "$out holds other files: name a folder that is empty, not there yet or made by an earlier run" >&2
        return 1
    fi
    rm -rf "$out"
    mkdir -p "$out/crawl"
    cp -r examples/home "$out/home"
    mkdir -p "$out/home/TestRec"
    cp -r examples/forum examples/knowledge "$out/crawl/"
    cp -r examples/articles examples/printers examples/products "$out/"
    printf '\r\n[Drives]\r\nD=%s\r\n\r\n[Paths]\r\nwxdb=D:\\wxdb.mdb\r\nfillDb=D:\\knowledge.mdb\r\nmultiDb=D:\\printers.mdb\r\n' "$out" \
        >>"$out/home/Kelb.ini"
    export KELB_HOME=$out/home

    for name in forum knowledge articles printers; do
        "$kelb" db create "$out/$name.mdb"
        "$kelb" db exec "$out/$name.mdb" "$crawl_table" >/dev/null
        "$kelb" db import "$out/$name.mdb" bbsforum <"examples/$name/pages.jsonl"
    done
    "$kelb" db create "$out/wxdb.mdb"
    "$kelb" db exec "$out/wxdb.mdb" "$article_table" >/dev/null
    "$kelb" db create "$out/wxprinter.mdb"
    "$kelb" db exec "$out/wxprinter.mdb" "$printer_table" >/dev/null
    "$kelb" db create "$out/wxknowledge.mdb"
    "$kelb" db exec "$out/wxknowledge.mdb" "$knowledge_table" >/dev/null
}
