# SPDX-License-Identifier: Apache-2.0
"""What runs on the server: a POSIX shell script that is always the same, and the values that it reads."""
from __future__ import annotations

COMMAND = "exec sh -c 'IFS= read -r program && eval \"$(printf %b \"$program\")\"'"
"""All that ssh is told. It means the same to every login shell, and reads the script from the input's first
line."""

PROGRAM = r"""
unset CDPATH ENV; umask 077

# One line of the input is one value, in which \\ is a backslash and \n a line end.
take() { IFS= read -r line && line=$(printf '%b.' "$line") && line=${line%.}; }
say() { printf '%s %s\n' "$token" "$1"; }
over() { say "$1"; say end; exit 0; }

take && token=$line && take && mode=$line || exit 1
# What a login prints by itself ends here.
printf '\n'; say hello

if [ "$mode" = health ]; then
    say "cpus $(getconf _NPROCESSORS_ONLN 2>/dev/null)"
    { read -r load rest </proc/loadavg; } 2>/dev/null && say "load $load"
    if [ -r /proc/meminfo ]; then
        while read -r name kib rest; do
            [ "$name" != MemAvailable: ] || say "available $kib"
        done </proc/meminfo
    fi
    over fine
fi

take && repo=$line && take && job=$line && take && seconds=$line && take && cpu=$line && take && high=$line \
    && take && max=$line && take && budget=$line && take && data=$line && take && task=$line || exit 1

case $repo in
    '~') repo=$HOME ;;
    '~/'*) repo=$HOME/${repo#'~/'} ;;
    /*) ;;
    *) repo=$HOME/$repo ;;
esac
[ -d "$repo" ] || over 'fail folder'
cd -P -- "$repo" 2>/dev/null || over 'fail closed'
place=$PWD
while [ ! -e "$place/.git" ]; do
    [ -n "$place" ] || over 'fail repository'
    place=${place%/*}
done

# A login that isn't interactive often lacks the folders of what its user installed.
PATH=$PATH:$HOME/.local/bin:$HOME/bin:$HOME/.npm-global/bin:$HOME/.cargo/bin:/usr/local/bin; export PATH
has() { command -v "$1" >/dev/null 2>&1; }
has codex || over 'fail tool'
free=$(df -Pk . 2>/dev/null | sed -n '$s/.* \([0-9][0-9]*\)  *[0-9][0-9]*%.*/\1/p')
[ "${free:-65536}" -ge 65536 ] || over "fail disk $((free / 1024))"

: "${XDG_RUNTIME_DIR:=/run/user/$(id -u)}"; export XDG_RUNTIME_DIR
manner=
if has prlimit && has timeout && has nice; then manner=prlimit; fi
if has systemd-run && has systemctl && has timeout; then
    group=$(timeout 5 systemctl --user show --property=ControlGroup 2>/dev/null </dev/null)
    case " $(cat "/sys/fs/cgroup${group#*=}/cgroup.controllers" 2>/dev/null) " in
        *' cpu '*' memory '* | *' memory '*' cpu '*) manner=systemd ;;
    esac
fi
[ -n "$manner" ] || over 'fail caps'
say "manner $manner"
[ "$mode" = start ] || over fine

if [ "$manner" = systemd ]; then
    set -- systemd-run --user --scope --quiet --collect "--unit=$job" -p "CPUQuota=$cpu%" \
        -p "MemoryHigh=${high}M" -p "MemoryMax=${max}M" -p MemorySwapMax=0 -p "RuntimeMaxSec=$seconds" \
        -p TimeoutStopSec=5 --
else
    set -- nice -n 10 prlimit "--data=$data" "--cpu=$budget" --core=0 -- timeout -k 5 "$seconds"
fi
stop_scope() {
    if [ "$manner" = systemd ]; then systemctl --user stop "$job.scope" </dev/null >/dev/null 2>&1; fi
}
# Whatever the task started has its mark, also what left its group and session.
sweep() {
    for round in 1 2 3 4 5; do
        left=$(grep -lszxF "OSTREL_JOB=$job" /proc/[0-9]*/environ 2>/dev/null)
        [ -n "$left" ] || return
        for file in $left; do
            file=${file#/proc/}
            kill -KILL "${file%/environ}" 2>/dev/null
        done
    done
}
say started
exec 3<&0
{
    printf %s "$task" | OSTREL_JOB=$job "$@" codex exec - 2>&1 3<&- &
    pid=$!
    # The input ends when the connection does, and with it the task.
    { while IFS= read -r line; do :; done; stop_scope; kill -TERM "$pid"; } <&3 >/dev/null 2>&1 &
    watcher=$!
    wait "$pid"
    status=$?
    kill "$watcher" 2>/dev/null
    stop_scope
    sweep
    printf '\n'; say "exit $status"
} 2>/dev/null | tail -c 65536
say end
"""


def spoken(text: str) -> bytes:
    """A value as one line."""
    return text.replace("\\", "\\\\").replace("\n", "\\n").encode("utf-8") + b"\n"


def conversation(*values: str) -> bytes:
    """The whole input: the script, then the values in the order in which it takes them."""
    return spoken(PROGRAM) + b"".join([spoken(value) for value in values])
