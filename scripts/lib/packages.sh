# Sourced by the scripts: installs Debian packages that are missing, as root or with sudo.

kelb_build_packages=(g++ cmake ninja-build libcli11-dev nlohmann-json3-dev unixodbc-dev tdsodbc libfreexl-dev)
kelb_app_packages=(qt6-base-dev qt6-charts-dev qt6-webengine-dev fonts-wqy-microhei)
kelb_app_test_packages=(xvfb xauth xdotool imagemagick)
kelb_test_packages=(python3-xlwt libgtest-dev libgmock-dev libicu-dev mdbtools nodejs npm postgresql odbc-postgresql)
kelb_check_packages=(clang-format clang-tidy clang libclang-rt-14-dev)
kelb_package_packages=(dpkg-dev mmdebstrap)
kelb_bench_packages=(libbenchmark-dev libicu-dev mdbtools time postgresql odbc-postgresql)
kelb_peer_packages=(nodejs npm w3m python3-readability libgumbo-dev time)
kelb_windows_packages=(cmake ninja-build libcli11-dev nlohmann-json3-dev python3
    g++-mingw-w64-x86-64-posix wine64 googletest)

# kelb_install PACKAGE…: asks the network only when something is missing.
kelb_install() {
    local missing=() package
    for package in "$@"; do
        case $package in
            # A newer one from elsewhere serves as well.
            nodejs) command -v node >/dev/null && continue ;;
            npm) command -v npm >/dev/null && continue ;;
        esac
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local sudo=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "These packages are missing: ${missing[*]}" >&2
            echo "Install them as root (apt-get install --no-install-recommends …) and run this again." >&2
            return 1
        }
        sudo=(sudo)
    fi
    echo "== installing: ${missing[*]}"
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
