# shellcheck shell=bash
# What commands that want a new Debian share. They source this file first thing, with their own
# arguments. They then run as root in a namespace of their own, so that what they start and mount
# ends with them, however they end; $scratch is a folder that goes away with them, too. They need
# the package debootstrap, and this system's own package mirror.

if [[ -z ${inNamespace:-} ]]; then
    scratch=$(mktemp -d)
    trap 'rm -rf --one-file-system "$scratch"' EXIT
    inNamespace=yes scratch=$scratch unshare --mount --pid --fork --kill-child "$0" "$@"
    exit
fi

root=$scratch/root

say() {
    printf '%s\n' "$*"
}

# Where something fails, what is in the log says why.
quietly() {
    "$@" >"$scratch/log" 2>&1 </dev/null || {
        tail -n 30 "$scratch/log" >&2
        exit 1
    }
}

# Begins commands for $root, with an environment of their own.
inRoot=(chroot "$root" env -i LC_ALL=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root
    DEBIAN_FRONTEND=noninteractive)

# makeRoot RELEASE: a new system in $root, with the package sources that this one has, for that
# release.
makeRoot() {
    local release=$1 own mirrors
    own=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # shellcheck disable=SC2016
    mirrors=$(apt-get indextargets --format '$(REPO_URI) $(RELEASE)' \
        'Created-By: Packages' 'Component: main' 'Origin: Debian' | sort -u |
        awk -v own="$own" -v release="$release" '$2 ~ "^" own { sub(own, release, $2); print }')
    say "Making a clean $release"
    quietly debootstrap --variant=minbase "$release" "$root" \
        "$(awk -v release="$release" '$2 == release { print $1; exit }' <<<"$mirrors")"
    # As root, because others may not read $scratch.
    echo 'APT::Sandbox::User "root";' >"$root/etc/apt/apt.conf.d/sandbox"
    awk '{ print "deb", $1, $2, "main" }' <<<"$mirrors" >"$root/etc/apt/sources.list"
    mount -t proc proc "$root/proc"
    mount -t tmpfs tmpfs "$root/dev/shm"
}
