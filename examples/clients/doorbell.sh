#!/bin/sh
# SPDX-FileCopyrightText: 2026 The Tavo developers
# SPDX-License-Identifier: Apache-2.0
#
# A door bell in shell: plays a sound through the host, prints how it ends, and shows a message.
#
# Usage: doorbell.sh SOUND        (needs the Debian package tavo)
#
# TAVO_BUS=system in the environment reaches the host of a device.
set -u

if [ $# -ne 1 ]; then
    echo 'Usage: doorbell.sh SOUND' >&2
    exit 64
fi

tavo sound --wait --priority high "$1"
status=$?
case $status in
    0 | 10 | 12) ;; # it finished, was cancelled or has failed
    *) exit $status ;; # tavo has printed the reason
esac
tavo show --timeout 10000 Door 'Somebody rang' >/dev/null
