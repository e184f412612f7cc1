#!/usr/bin/env bash
# Installs the built programs into an empty prefix and uses them as someone who has never started them.
# Usage: installed.sh BUILD WORK
set -euo pipefail
build=$1 work=$2
source=$(cd "$(dirname "$0")/../.." && pwd)
rm -rf "$work"
mkdir -p "$work/user"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
unset KELB_HOME XDG_DATA_HOME
export HOME=$work/user LC_ALL=C.UTF-8
PATH=$work/prefix/bin:$PATH
expect() { [ "$1" = "$2" ] || { echo "expected: $2"; echo "found:    $1"; exit 1; }; }

cd "$work/user"
crawl=$work/prefix/share/kelbextractor/examples
fields=$(printf ', param%d varchar(255)' 1 2 3 4 5 6 7 8 9 10)
kelb db create knowledge.mdb
kelb db exec knowledge.mdb "create table wxKnowledge (url varchar(255), TVCode varchar(255), TVName varchar(255)$fields)" >/dev/null
cp -R "$crawl/products" .
kelb param-import --folder products --connection knowledge.mdb --save --quiet --no-summary >/dev/null 2>&1
expect "$(kelb db query knowledge.mdb "select count(*) as n from wxKnowledge")" '{"n": 3}'

home=$HOME/.local/share/kelbextractor
[ -d "$home/TestRec" ] && [ -e "$home/ADMarks.txt" ]
echo "; mine" >"$home/Kelb.ini"
kelb --version | grep -q '^kelb [0-9]'
expect "$(cat "$home/Kelb.ini")" "; mine"
expect "$(KELB_HOME=$work/nowhere kelb segment x 2>&1 | grep -c nowhere)" 1
if [ -e "$work/prefix/bin/KelbExtractor" ]; then
    QT_QPA_PLATFORM=offscreen KelbExtractor --version | grep -q '[0-9]'
fi

. "$work/prefix/share/bash-completion/completions/kelb"
complete_words() { COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) && _kelb && echo "${COMPREPLY[*]}"; }
expect "$(complete_words kelb forum-)" "forum-import forum-fill"
expect "$(complete_words kelb db exp)" "export"
expect "$(complete_words kelb param-import --fol)" "--folder"
expect "$(complete_words kelb db tables know)" "knowledge.mdb"
