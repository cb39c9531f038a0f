#!/bin/sh
# Checks the sound test programs as ctest runs them.
#   check_test_hygiene.sh PULSE_TEST... -- GUI_TEST...
# 1. With no pulseaudio to be found, each PULSE_TEST exits with 77, the code
#    ctest reports as "Skipped".
# 2. Each GUI_TEST, run in a private /tmp, leaves no file there. Where the
#    system gives no private mount namespace, this part is not checked.
set -u
status=0

empty_bin=$(mktemp -d)
trap 'rm -rf "$empty_bin"' EXIT
while [ $# -gt 0 ] && [ "$1" != "--" ]; do
    PATH="$empty_bin" "$1" >/dev/null 2>&1
    code=$?
    if [ "$code" -ne 77 ]; then
        echo "FAIL: $(basename "$1") without PulseAudio exited with $code, not 77 (skipped)"
        status=1
    else
        echo "ok: $(basename "$1") without PulseAudio is skipped"
    fi
    shift
done
[ $# -gt 0 ] && shift

# Runs a program with a fresh, empty /tmp of its own and prints what it
# left there; 125 when the system allows no private /tmp.
private_tmp() {
    # Qt makes a runtime folder in /tmp when XDG_RUNTIME_DIR is unset; the
    # script gives it one there and looks past it.
    script='mount -t tmpfs sonmetra-tmp /tmp || exit 125
        mkdir -m 700 /tmp/xdg-runtime && export XDG_RUNTIME_DIR=/tmp/xdg-runtime
        "$@" >/dev/null 2>&1; rc=$?
        ls -A /tmp | grep -vx xdg-runtime; exit $rc'
    # As root a mount namespace is enough; otherwise a user namespace makes one.
    if unshare -m true 2>/dev/null; then
        unshare -m sh -c "$script" sh "$@"
    elif unshare -rm true 2>/dev/null; then
        unshare -rm sh -c "$script" sh "$@"
    else
        return 125
    fi
}

for program in "$@"; do
    left=$(private_tmp "$program" 2>/dev/null)
    code=$?
    if [ "$code" -eq 125 ]; then
        echo "not checked: no private /tmp for $(basename "$program") on this system"
        continue
    fi
    if [ "$code" -ne 0 ]; then
        echo "FAIL: $(basename "$program") failed ($code) in a private /tmp"
        status=1
    fi
    if [ -n "$left" ]; then
        echo "FAIL: $(basename "$program") left files in /tmp:"
        echo "$left"
        status=1
    elif [ "$code" -eq 0 ]; then
        echo "ok: $(basename "$program") leaves /tmp empty"
    fi
done
exit $status
