# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
#
# Functions of the scripts that try the packages in a new minimal Debian 12. Sourced after common.sh.
#
# shellcheck disable=SC2034 # the variables are used by the scripts

# in_own_namespaces <argument...>: starts the script again as root. Its mounts and processes end with it.
in_own_namespaces() {
    local as_root=()
    [[ -z ${TAVO_OWN_NAMESPACES-} ]] || return 0
    ((EUID == 0)) || as_root=(sudo)
    exec "${as_root[@]}" env TAVO_OWN_NAMESPACES=1 unshare --mount --mount-proc --pid --fork --kill-child "$0" "$@"
}

# make_root <archive> <package...>: makes the folder $root with these packages of Debian, until the script ends. The
# archive is kept and used the next time, unless its name is empty. $folder is for other files of the test.
make_root() {
    local archive=$1
    shift
    folder=$(mktemp -d)
    root=$folder/root
    trap remove_root EXIT
    mkdir -- "$root"
    if [[ -z $archive || ! -e $archive ]]; then
        step "A minimal Debian 12 with $*"
        local new=${archive:-$folder/root.tar} include
        include=$(IFS=, && echo "$*")
        mmdebstrap --quiet --variant=minbase --include="$include" --skip=cleanup/apt bookworm "$new" ||
            fail "mmdebstrap failed; is Debian's archive within reach?"
        archive=$new
    fi
    tar -x -C "$root" --exclude='./dev/*' -f "$archive"
    mount -t proc proc "$root/proc"
    mount --rbind /dev "$root/dev"
    cp -- /etc/resolv.conf "$root/etc/resolv.conf"
    # A program that the installation wants to start would outlive the test.
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
    chmod 755 "$root/usr/sbin/policy-rc.d"
}

remove_root() {
    umount --lazy -- "$root/proc" "$root/dev" || true
    rm -rf --one-file-system -- "$folder"
}

# copy_packages <folder>: puts the packages into the root. deb_file finds them there.
copy_packages() {
    compgen -G "$1/tavo_*.deb" >/dev/null || fail "there are no packages in $1"
    mkdir -- "$root/packages"
    cp -- "$1"/*.deb "$root/packages"
    rm -f -- "$root"/packages/*-dbgsym_*.deb
}

# deb_file <package>: its file, as seen from within the root
deb_file() {
    local files=("$root/packages/$1"_*.deb)
    echo "${files[0]#"$root"}"
}

root_environment=(env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/tmp LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive)

in_root() {
    "${root_environment[@]}" chroot "$root" "$@"
}

apt_get() {
    in_root apt-get -q -y --no-install-recommends "$@" >"$folder/apt.log" 2>&1 && return
    sed -E 's#[a-z+]+://[^ ]+#(mirror)#g' "$folder/apt.log" >&2
    fail "apt-get $1 failed"
}

failed=0
# check <what> <command>...
check() {
    local what=$1
    shift
    if "$@" >"$folder/check.log" 2>&1; then
        printf '  ok      %s\n' "$what"
    else
        printf '  FAILED  %s\n' "$what"
        sed 's/^/          /' "$folder/check.log"
        failed=1
    fi
}

# within <seconds> <command>...: tries the command until it succeeds
within() {
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        ((SECONDS < end)) || return 1
        sleep 0.1
    done
}
