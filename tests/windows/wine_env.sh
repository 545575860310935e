# shellcheck shell=bash
# Wine as a Windows to test on. Sourced by the runners; then:
#
#   StartWine BUILD_DIR [desktop]    a separate prefix in BUILD_DIR/wine, created if missing; with
#                                    "desktop" also an X server of its own with a Wine desktop in it, so that input
#                                    sent by XTEST is real input to the programs
#   Wine SECONDS PROGRAM ARGUMENT... runs a program with a time limit; returns its exit code
#
# Everything started ends when the shell exits. One run per build folder: a second one waits.

export WINEARCH=win64 WINEDEBUG=-all
# Without installations, and without a debugger dialog for a program that crashes on purpose.
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=;winedbg.exe="

kDesktopSize=1024x768
xServerPid=

# A Wine process may outlive this shell, so it must hold neither its pipes, which readers wait for, nor the lock.
QuietWine() {
    timeout --kill-after=5 120 "$@" </dev/null >/dev/null 2>&1 9>&-
}

# wineserver -k kills a slow server, and its programs then wait for its reply for ever.
EndWineServer() {
    QuietWine wineserver -k || true
    QuietWine wineserver -w || true
    local process
    for process in /proc/[0-9]*; do
        if [[ $(readlink "$process/exe") == */wine/* ]] &&
            tr '\0' '\n' <"$process/environ" | grep -qxF "WINEPREFIX=$WINEPREFIX"; then
            kill -KILL "${process#/proc/}" || true
        fi
    done 2>/dev/null
}

StopWine() {
    EndWineServer
    if [ -n "$xServerPid" ]; then
        kill "$xServerPid" 2>/dev/null || true
        wait "$xServerPid" 2>/dev/null || true
    fi
}

CreatePrefix() {
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    QuietWine env -u DISPLAY wineboot -i &&
        QuietWine env -u DISPLAY wine winecfg -v win10 &&
        QuietWine env -u DISPLAY wine reg add 'HKCU\Software\Wine\Explorer\Desktops' /v t /d "$kDesktopSize" /f &&
        QuietWine wineserver -w &&
        touch "$WINEPREFIX/complete"
}

# The server picks a free display number and prints it once it is ready.
StartXServer() {
    local number file
    file=$(mktemp)
    Xvfb -displayfd 3 -screen 0 "${kDesktopSize}x24" -nolisten tcp 3>"$file" </dev/null >/dev/null 2>&1 9>&- &
    xServerPid=$!
    local deadline=$((SECONDS + 60))
    until [ -s "$file" ] && number=$(<"$file") && [ -n "$number" ]; do
        if [ $SECONDS -ge $deadline ]; then
            echo "wine_env: no X server" >&2
            return 1
        fi
        sleep 0.05
    done
    rm -f "$file"
    export DISPLAY=:$number
}

StartWine() {
    local folder
    folder=$(realpath "$1")
    export WINEPREFIX=$folder/wine
    exec 9>"$folder/wine.lock"
    flock 9
    trap StopWine EXIT
    if [ ! -f "$WINEPREFIX/complete" ] && ! CreatePrefix; then
        echo "wine_env: no Wine prefix" >&2
        return 1
    fi
    unset DISPLAY WAYLAND_DISPLAY
    if [ "${2:-}" = desktop ]; then
        StartXServer
        QuietWine env -u DISPLAY wine reg add 'HKCU\Software\Wine\Explorer' /v Desktop /d t /f
        QuietWine env -u DISPLAY wine reg delete 'HKCU\Software\Wine\Drivers' /v Graphics /f || true
    else
        # Windows, hooks and sent input work without a display too, and key names come out as on Windows.
        QuietWine env -u DISPLAY wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f
    fi
    EndWineServer
    # Stays until it is stopped, so that no start of a program has to wait for it.
    QuietWine wineserver -p
    QuietWine wine wineboot
}

Wine() {
    local limit=$1
    shift
    timeout --kill-after=5 "$limit" wine "$@" 9>&-
}
