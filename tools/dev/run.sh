# shellcheck shell=bash
# Starting the programs, measuring them, taking their picture. Sourced by ./dev.

# Starts a virtual screen with a window manager if there is no display; sets DISPLAY and VirtualScreen.
VirtualScreen=
EnsureDisplay() {
    VirtualScreen=
    if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
        return 0
    fi
    local number
    mkdir -p build/run
    : >build/run/display
    Xvfb -screen 0 1280x900x24 -nolisten tcp -noreset -displayfd 3 3>build/run/display >build/run/xvfb.log 2>&1 &
    xvfbProcess=$!
    for _ in $(seq 100); do
        [ -s build/run/display ] && break
        sleep 0.1
    done
    number=$(head -n 1 build/run/display)
    if [ -z "$number" ]; then
        echo "The virtual screen did not start; see build/run/xvfb.log" >&2
        return 1
    fi
    export DISPLAY=:$number
    VirtualScreen=yes
    openbox --sm-disable >/dev/null 2>&1 &
    openboxProcess=$!
    trap 'kill $openboxProcess $xvfbProcess 2>/dev/null || true' EXIT
    for _ in $(seq 100); do
        wmctrl -m >/dev/null 2>&1 && break
        sleep 0.1
    done
    echo "No display here: the program runs on the virtual screen $DISPLAY."
    echo "To look at it: import -display $DISPLAY -window root picture.png"
}

# Waits for the main window, lets its page draw, and takes a screenshot of the whole screen.
TakeScreenshot() {
    local file=$1
    for _ in $(seq 200); do
        wmctrl -l 2>/dev/null | grep -q 'Varnelle (' && break
        sleep 0.1
    done
    sleep 2
    import -window root "$file" && echo "Screenshot: $file"
}

Run() {
    case "${1:-linux}" in
        linux)
            BuildLinux
            EnsureDisplay
            build/linux/dist/varnelle &
            program=$!
            if [ -n "$VirtualScreen" ]; then
                TakeScreenshot build/run/screenshot.png
                echo "Press Ctrl+C to end it."
            fi
            wait "$program"
            ;;
        windows)
            BuildPreset windows all dist
            EnsureDisplay
            echo "Varnelle.exe runs under Wine; there is no WebView2 there, so its page is shown in Chromium."
            exec node tests/program/run_windows.mjs build/windows
            ;;
        *)
            echo "dev: run what? linux or windows" >&2
            return 2
            ;;
    esac
}

Bench() {
    # shellcheck disable=SC2086
    InstallDebianPackages $BenchPackages
    BuildPreset linux all bench_all
    bench/run.sh build/linux
}

Pictures() {
    BuildPreset linux all dist
    node tools/pictures.mjs build/linux
}
