#!/bin/sh
# The Windows side of this machine: `up [DPI]` starts a private Wine prefix on a private X display and keeps it warm,
# `run PROGRAM ...` runs a program there (and returns its exit code), `down` stops everything.
# B is the folder that holds the prefix. With OC_DISPLAY set, programs appear on that display, outside a Wine desktop,
# and `down` leaves them open: the session ends by itself with its last program.
set -e
tools=$(cd "$(dirname "$0")" && pwd)
B=${B:-$tools/../build}
mkdir -p "$B/home"
B=$(cd "$B" && pwd)
[ -z "$OC_DISPLAY" ] || export XAUTHORITY="${XAUTHORITY:-$HOME/.Xauthority}" # the display's key is in the user's home
export HOME="$B/home" # a prefix links Documents and Desktop to $HOME
export WINEPREFIX="$B/wineprefix" WINEARCH=win64 WINEDEBUG="${WINEDEBUG:--all}" LC_ALL="${OC_LOCALE:-C.UTF-8}"
# winedbg would turn a crash into exit code 0 or into a window that waits for ever.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d;winedbg.exe=d"

# The processes of a session wait for each other all the time. On one processor that is a switch; on two it is a wake-up,
# which takes a virtual machine so long that dialogs are several times slower. So the first one does it all.
first_cpu=$(taskset -cp $$ | sed 's/.*: //; s/[-,].*//')
taskset -cp "$first_cpu" $$ >/dev/null

display() {
    if [ -n "$OC_DISPLAY" ]; then echo "$OC_DISPLAY"; else echo ":$(cat "$B/xvfb.display" 2>/dev/null || echo 99)"; fi
}
desktop_size=2560x2048 # room for every dialog at 192 DPI
quietly() { "$@" >/dev/null 2>&1 </dev/null; }

# The file may outlive its server, and the number go to another program.
x_runs() { grep -qs '^Xvfb' "/proc/$(cat "$B/xvfb.pid" 2>/dev/null)/cmdline"; }

start_x() {
    x_runs && return 0
    rm -f "$B/xvfb.display"
    Xvfb -displayfd 3 -screen 0 ${desktop_size}x24 -nolisten tcp 3>"$B/xvfb.display" >/dev/null 2>&1 </dev/null &
    echo $! >"$B/xvfb.pid"
    until [ -s "$B/xvfb.display" ]; do
        kill -0 $! 2>/dev/null || { echo "wine-env.sh: Xvfb did not start" >&2; exit 1; }
        sleep 0.1
    done
}

make_prefix() {
    [ -f "$WINEPREFIX/.ready" ] && return 0
    rm -rf "$WINEPREFIX"
    quietly wineboot -i
    mkdir -p "$WINEPREFIX/drive_c/windows/Fonts"
    # Tahoma from here gives the dialog units that Windows has; without it every dialog is a sixth too wide.
    for font in $(dpkg -L fonts-wine | grep -E '\.(ttf|fon)$'); do cp "$font" "$WINEPREFIX/drive_c/windows/Fonts/"; done
    touch "$WINEPREFIX/.ready"
}

# Wine reads the resolution and the desktop's name when a session starts.
configure() {
    if [ -n "$OC_DISPLAY" ]; then desktop=-; else desktop='"oc"'; fi
    cat >"$B/session.reg" <<REG
Windows Registry Editor Version 5.00

[HKEY_CURRENT_USER\\Software\\Wine\\Explorer]
"Desktop"=$desktop
[HKEY_CURRENT_USER\\Software\\Wine\\Explorer\\Desktops]
"oc"="$desktop_size"
[HKEY_CURRENT_USER\\Software\\Wine\\WineDbg]
"ShowCrashDialog"=dword:00000000
[HKEY_CURRENT_USER\\Software\\Wine\\Fonts\\Replacements]
"Segoe UI"="Liberation Sans"
[HKEY_CURRENT_USER\\Control Panel\\Desktop]
"LogPixels"=dword:$(printf %08x "$1")
REG
    wanted="$1 $desktop $desktop_size"
    [ "$(cat "$WINEPREFIX/.session" 2>/dev/null)" = "$wanted" ] && return 0
    quietly wine regedit /S "Z:$B/session.reg"
    quietly wineserver -k || true
    quietly wineserver -w || true
    printf '%s' "$wanted" >"$WINEPREFIX/.session"
}

case $1 in
up)
    [ -n "$OC_DISPLAY" ] || start_x
    DISPLAY=$(display)
    export DISPLAY
    make_prefix
    configure "${2:-96}"
    # The desktop process keeps the server warm; it must hold no pipe of ours, or a reader of the pipe waits for it.
    [ -n "$OC_DISPLAY" ] || wine explorer "/desktop=oc,$desktop_size" >/dev/null 2>&1 </dev/null &
    until quietly wine cmd /c exit 0; do sleep 0.2; done
    ;;
run)
    shift
    DISPLAY=$(display)
    export DISPLAY
    exec wine "$@"
    ;;
down)
    [ -z "$OC_DISPLAY" ] || exit 0
    quietly wineserver -k || true
    if x_runs; then kill "$(cat "$B/xvfb.pid")"; fi
    rm -f "$B/xvfb.pid" "$B/xvfb.display"
    ;;
*)
    echo "usage: $0 up [DPI] | run PROGRAM [ARGUMENT ...] | down" >&2
    exit 2
    ;;
esac
