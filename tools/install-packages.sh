# Installs the Debian packages that are missing. Sourced: install_packages NAME...
install_packages() {
    local missing=()
    local name
    for name in "$@"; do
        dpkg-query -W -f='${db:Status-Abbrev}' "$name" 2>/dev/null | grep -q '^ii' || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -q
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends "${missing[@]}"
}

# What building takes, and what the built programs need to run.
BUILD_PACKAGES=(g++ cmake ninja-build ccache pkg-config qt6-base-dev qt6-base-dev-tools qt6-serialport-dev qt6-svg-dev
                libqt6sql6-sqlite qcoro-qt6-dev mdbtools-dev libseccomp-dev libsqlite3-dev libgtest-dev libgmock-dev
                fonts-dejavu-core)
# What the checks take beyond that.
CHECK_PACKAGES=(git clang clang-format clang-tidy-16 libclang-rt-14-dev python3 sqlite3 mdbtools libmodbus-dev
                python3-fonttools dpkg-dev file)
# What a machine without a display takes to show the program.
DISPLAY_PACKAGES=(sqlite3 xvfb openbox xdotool imagemagick x11-utils)
