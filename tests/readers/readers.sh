#!/usr/bin/env bash
# readers.sh mdbtools|mdb-reader KELB WORK: fills a database with rows of every type, updates (rows move), deletes, adds
# columns and an index, and compares what `kelb` reads with what the other reader reads.
set -euo pipefail
reader=$1 kelb=$2 work=$3
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work/db" && mkdir -p "$work/db"
db=$work/db/all.mdb

if [ "$reader" = mdb-reader ]; then
    export KELB_READER_HOME=$work
    if ! [ -d "$work/node_modules/mdb-reader" ]; then
        echo '{"private": true}' >"$work/package.json"
        npm install --silent --no-audit --no-fund --prefix "$work" mdb-reader@2.2.6 || {
            echo "mdb-reader could not be installed" >&2
            exit 77
        }
    fi
fi

same() {
    "$kelb" db check "$db"
    "$kelb" db export "$db" t --format jsonl >"$work/db/ours.jsonl"
    if [ "$reader" = mdbtools ]; then
        mdb-json -D %Y-%m-%dT%H:%M:%S -T %Y-%m-%dT%H:%M:%S "$db" t >"$work/db/theirs.jsonl"
        node "$here/compare.mjs" "$work/db/ours.jsonl" mdbtools "$work/db/theirs.jsonl"
    else
        node "$here/compare.mjs" "$work/db/ours.jsonl" mdb-reader "$db" t
    fi
}

"$kelb" db create "$db"
"$kelb" db exec "$db" "create table t (id int identity(1,1) not null, url varchar(255), t varchar(255), m memo, yes yesno,
    b byte, i short, l long, c currency, s single, d double, dt datetime, n decimal(18,2))"
"$kelb" db exec "$db" "create unique index urlidx on t(url)"
node "$here/rows.mjs" 1 400 | "$kelb" db import "$db" t
same
"$kelb" db exec "$db" "update t set t = '一段长得多的文字，行因此要搬家：一段长得多的文字，行因此要搬家' where b < 40"
"$kelb" db exec "$db" "delete from t where b between 50 and 80"
same
"$kelb" db exec "$db" "alter table t add blnPass yesno"
"$kelb" db exec "$db" "alter table t add extra memo"
"$kelb" db exec "$db" "create index byl on t(l, dt desc)"
"$kelb" db exec "$db" "update t set blnPass = true, extra = '后来的' where i > 0"
node "$here/rows.mjs" 1000 200 | "$kelb" db import "$db" t
same
for copy in compact recover; do
    "$kelb" db $copy "$db" "$work/db/$copy.mdb" --quiet
    "$kelb" db export "$work/db/$copy.mdb" t --format jsonl | sort | cmp - <(sort "$work/db/ours.jsonl")
    db=$work/db/$copy.mdb
    same
done
if [ "$reader" = mdbtools ]; then
    # Names, types and the CSV of independent code, not only values.
    mdb-schema "$db" | tr -d '\t ' | grep -q '\[url\]Text(510)\|\[url\]Text(255)'
    test "$(mdb-export -H "$db" t | tr -cd '\n' | wc -c)" -ge "$(wc -l <"$work/db/ours.jsonl")"
    test "$(mdb-tables -1 "$db")" = t
fi
