# Sourced by the scripts that run programs for Windows.

# kelb_wine_start FOLDER: makes the folder a Windows of its own where Wine keeps it, and starts its server. Sets kelb_wine
# to the command that runs a program in it.
kelb_wine_start() {
    mkdir -p "$1"
    WINEPREFIX=$(cd "$1" && pwd)
    export WINEPREFIX WINEDEBUG=-all
    # Neither is used; without this Wine asks whether to fetch them.
    export WINEDLLOVERRIDES="mscoree,mshtml="
    unset DISPLAY
    kelb_wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
    kelb_wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver)
    "$kelb_wineserver" -p # stays, so that not every program starts one
    "$kelb_wine" wineboot --init >/dev/null 2>&1
}

kelb_wine_stop() {
    "$kelb_wineserver" -k || true
}
