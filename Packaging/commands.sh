# shellcheck shell=bash
# What the commands in the project's root share. They source this file; $root is that folder.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Debian's names.
# shellcheck disable=SC2034
buildPackages=(g++ cmake ninja-build pkg-config qt6-base-dev libgl-dev libsdl2-dev libpulse-dev
    nlohmann-json3-dev uuid-dev fonts-dejavu-core)
# shellcheck disable=SC2034
testPackages=(libgtest-dev libbenchmark-dev clang libclang-rt-dev pulseaudio pulseaudio-utils
    xvfb openbox xdotool x11-utils imagemagick dbus libglib2.0-bin desktop-file-utils
    at-spi2-core python3-pyatspi gir1.2-atspi-2.0 appstream libxml2-utils lintian
    shared-mime-info dpkg-dev file man-db)

say() {
    printf '%s\n' "$*"
}

stop() {
    printf '%s\n' "$*" >&2
    exit 1
}

# installPackages PACKAGE…: installs those that are missing.
installPackages() {
    # There the packages are the user's business; the configuration names what it misses.
    [[ $(uname) == Darwin ]] && return

    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        stop "This system has no apt-get. Mossbit needs what Debian calls: $*"
    fi
    local installed package missing=()
    # Fails when it does not know one of them.
    installed=$(dpkg-query --show --showformat '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null) ||
        true
    for package in "$@"; do
        [[ $'\n'$installed$'\n' == *$'\n'"$package installed"$'\n'* ]] || missing+=("$package")
    done
    ((${#missing[@]} > 0)) || return 0

    local asRoot=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            stop "Root or sudo is needed to install these packages: ${missing[*]}"
        asRoot=(sudo)
        # Without a terminal nobody could answer.
        [[ -t 0 ]] || asRoot=(sudo --non-interactive)
    fi
    say "Installing ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { "${asRoot[@]}" apt-get -qq -o DPkg::Lock::Timeout=300 update &&
        "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -y \
            -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 \
            install --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 </dev/null; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        stop "Could not install these packages: ${missing[*]}"
    fi
    rm -f "$log"
}

# configure PRESET OPTION…: both commands give the same compiler flags, so that neither makes the
# other build everything again.
configure() {
    local preset=$1 strict=OFF
    shift
    # Only there is the set of warnings known; a newer compiler may have more.
    grep -qs '^VERSION_CODENAME=bookworm$' /etc/os-release && strict=ON
    # A preset is looked for in the current folder's sources.
    (cd "$root" && cmake --preset "$preset" --log-level=WARNING \
        "-DCMAKE_COMPILE_WARNING_AS_ERROR=$strict" "$@" >/dev/null)
}

# build FOLDER OPTION…
build() {
    local folder=$1 quiet=()
    shift
    [[ -t 1 ]] || quiet=(-- --quiet)
    cmake --build "$folder" "$@" "${quiet[@]}"
}
