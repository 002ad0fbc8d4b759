# shellcheck shell=bash
# What the commands in the project's root share. They source this file; $root is that folder.
# macOS runs it with bash 3.2.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# shellcheck disable=SC2034
buildPackages=(g++ cmake ninja-build pkg-config qt6-base-dev libgl-dev libxcb1-dev libsdl2-dev
    libpulse-dev nlohmann-json3-dev fonts-dejavu-core)
# shellcheck disable=SC2034
testPackages=(libgtest-dev libbenchmark-dev clang libclang-rt-dev pulseaudio pulseaudio-utils
    xvfb openbox xdotool x11-utils imagemagick dbus libglib2.0-bin desktop-file-utils
    at-spi2-core python3-gi gir1.2-atspi-2.0 qt6-gtk-platformtheme appstream libxml2-utils lintian
    shared-mime-info dpkg-dev file man-db g++-aarch64-linux-gnu g++-s390x-linux-gnu qemu-user)

say() {
    printf '%s\n' "$*"
}

stop() {
    printf '%s\n' "$*" >&2
    exit 1
}

# How other systems install what the build needs.
otherPackages() {
    local system
    # shellcheck disable=SC1091
    system=$(. /etc/os-release 2>/dev/null && echo " ${ID:-} ${ID_LIKE:-} ")
    case $(uname)$system in
    Darwin*) say "brew install cmake ninja qt sdl2 nlohmann-json; for tests googletest google-benchmark" ;;
    *' fedora '*) say "sudo dnf install gcc-c++ cmake ninja-build pkgconf-pkg-config qt6-qtbase-devel" \
        "libxcb-devel SDL2-devel pulseaudio-libs-devel json-devel dejavu-sans-mono-fonts;" \
        "for tests gtest-devel google-benchmark-devel clang compiler-rt xorg-x11-server-Xvfb" \
        "openbox xdotool xprop xwininfo ImageMagick dbus-daemon glib2" \
        "qt6-qtbase-gui pulseaudio pulseaudio-utils at-spi2-core python3-gobject" ;;
    *' arch '*) say "sudo pacman -S --needed gcc cmake ninja pkgconf qt6-base libxcb sdl2-compat" \
        "libpulse nlohmann-json ttf-dejavu; for tests gtest benchmark clang compiler-rt" \
        "xorg-server-xvfb openbox xdotool xorg-xprop xorg-xwininfo imagemagick dbus" \
        "glib2 gtk3 pulseaudio at-spi2-core python-gobject" ;;
    *) say "what Debian calls ${buildPackages[*]}; for tests ${testPackages[*]}" ;;
    esac
}

hasApt() {
    command -v apt-get >/dev/null && command -v dpkg-query >/dev/null
}

# installPackages PACKAGE…: installs those that are missing, where there is apt-get. Elsewhere the
# packages are the user's business.
installPackages() {
    [[ -z ${SUDO_USER:-} || -O $root ]] ||
        stop "Run this as yourself, without sudo: it asks for sudo where it needs that"
    hasApt || return 0

    local installed package missing=()
    # Fails when it does not know one of them.
    installed=$(dpkg-query --show --showformat '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null) ||
        true
    for package in "$@"; do
        [[ $'\n'$installed$'\n' == *$'\n'"$package installed"$'\n'* ]] || missing+=("$package")
    done
    ((${#missing[@]} > 0)) || return 0

    local asRoot=(env)
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            stop "Root or sudo is needed to install these packages: ${missing[*]}"
        asRoot=(sudo)
        # Without a terminal nobody could answer.
        [[ -t 0 ]] || asRoot=(sudo --non-interactive)
    fi
    say "Installing these packages and what they need: ${missing[*]}"
    local log attempt
    log=$(mktemp)
    # The lists have a lock that apt-get does not wait for. Other failures are left to the
    # installation: it may need nothing of a source that is broken.
    for ((attempt = 0; attempt < 60; attempt++)); do
        "${asRoot[@]}" env LC_ALL=C apt-get -qq update >"$log" 2>&1 </dev/null && break
        grep -q 'Could not get lock' "$log" || break
        sleep 2
    done
    if ! "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -y \
        -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 \
        install --no-install-recommends "${missing[@]}" >>"$log" 2>&1 </dev/null; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        stop "Could not install these packages: ${missing[*]}"
    fi
    rm -f "$log"
}

# inRoot COMMAND…: a preset is looked for in the current folder's sources.
inRoot() {
    (cd "$root" && "$@")
}

# configure PRESET OPTION…: both commands give the same compiler flags, so that neither makes the
# other build everything again.
configure() {
    local preset=$1 strict=OFF
    shift
    # Only there is the set of warnings known; a newer compiler may have more.
    grep -qs '^VERSION_CODENAME=bookworm$' /etc/os-release && strict=ON
    inRoot cmake --preset "$preset" --log-level=WARNING \
        "-DCMAKE_COMPILE_WARNING_AS_ERROR=$strict" "$@" >/dev/null && return
    hasApt || say "Where something is missing, this installs it: $(otherPackages)"
    return 1
}

# build PRESET
build() {
    if [[ -t 1 ]]; then
        inRoot cmake --build --preset "$1"
    else
        inRoot cmake --build --preset "$1" -- --quiet
    fi
}
