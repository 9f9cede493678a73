# shellcheck shell=bash
# A minimal Debian 12 in a folder, to try things in; sourced, not run. Needs tools/common.sh, and
# root. $keep (yes or no) says whether it stays, $mirror where its packages come from, or nothing.
release=bookworm

prepare_bare_system() {
    if ((EUID != 0)); then
        echo "${0##*/} makes and enters a root directory, so run it as root." >&2
        exit 1
    fi
    "${tools:?}/install-packages" bare
    if [[ -z $mirror ]]; then
        # shellcheck disable=SC2016
        mirror=$(apt-get indextargets --format '$(RELEASE) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' |
            sed -n "s/^$release main //p" | head -n 1)
    fi
    if [[ -z $mirror ]]; then
        echo "This machine's apt has no source of $release, so name one with --mirror." >&2
        exit 1
    fi
    work=$(mktemp -d -t zemo-bare.XXXXXX)
    system=$work/system
    trap leave EXIT
}

leave() {
    if [[ ${keep:?} == yes ]]; then
        echo "Kept: $system"
    else
        rm -rf --one-file-system -- "$work"
    fi
}

copy() { # PATH...: those that exist, links followed
    local path
    for path in "$@"; do
        if [[ -e $path ]]; then
            mkdir -p -- "$system$(dirname -- "$path")"
            cp -rLT -- "$path" "$system$path"
        fi
    done
}

make_system() {
    quietly "$work/debootstrap.log" debootstrap --variant=minbase "$release" "$system" "$mirror"
    if grep -qs "^VERSION_CODENAME=$release$" /etc/os-release; then
        rm -f -- "$system/etc/apt/sources.list"
        copy /etc/apt/sources.list /etc/apt/sources.list.d
    fi
    copy /etc/apt/{apt.conf,apt.conf.d,preferences,preferences.d,keyrings,trusted.gpg,trusted.gpg.d} \
        /usr/share/keyrings /usr/local/share/ca-certificates /etc/ssl/certs \
        /etc/hosts /etc/resolv.conf
    # No package may start a service: the check ends with no process left.
    printf '#!/bin/sh\nexit 101\n' >"$system/usr/sbin/policy-rc.d"
    chmod +x -- "$system/usr/sbin/policy-rc.d"
}

# Runs in namespaces of its own: its mounts and its processes end with it.
enter() { # ROOT COMMAND...
    local system=$1 node
    shift
    mount -t proc proc "$system/proc"
    mount -t tmpfs -o mode=755 dev "$system/dev"
    mkdir -- "$system/dev/shm" "$system/dev/pts"
    mount -t tmpfs -o mode=1777 shm "$system/dev/shm"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$system/dev/pts"
    ln -s pts/ptmx "$system/dev/ptmx"
    ln -s /proc/self/fd "$system/dev/fd"
    for node in null zero full random urandom tty; do
        touch -- "$system/dev/$node"
        mount --bind "/dev/$node" "$system/dev/$node"
    done
    exec chroot "$system" "$@"
}

inside() { # COMMAND...
    unshare --mount --pid --fork --kill-child bash -euo pipefail -c \
        "$(declare -f enter); enter \"\$@\"" enter "$system" \
        /usr/bin/env -i HOME=/root LANG=C.UTF-8 PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        ${http_proxy+http_proxy="$http_proxy"} ${https_proxy+https_proxy="$https_proxy"} \
        "$@" </dev/null
}
