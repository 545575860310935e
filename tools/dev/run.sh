# shellcheck shell=bash
# Starts, measures and photographs the programs. Sourced by ./dev.

# Starts a virtual screen with a window manager if there is no display; sets DISPLAY and VirtualScreen.
VirtualScreen=
program=

# Ends the program first, so that it saves before its screen closes.
EndVirtualScreen() {
    if [ -n "$program" ]; then
        kill "$program" 2>/dev/null || true
        wait "$program" 2>/dev/null || true
    fi
    kill "$openboxProcess" "$xvfbProcess" 2>/dev/null || true
}

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
    trap EndVirtualScreen EXIT
    tools/dev/await_window_manager.sh
    echo "No display here: the program runs on the virtual screen $DISPLAY."
    echo "To look at it: import -display $DISPLAY -window root picture.png"
}

# Waits until the main window shows its page (an empty one has a handful of colours), and takes a screenshot.
TakeScreenshot() {
    local file=$1 window colours
    for _ in $(seq 300); do
        window=$(wmctrl -l 2>/dev/null | awk '/Varnelle \(/ { print $1; exit }')
        if [ -n "$window" ] && import -window "$window" "$file" 2>/dev/null; then
            colours=$(identify -format %k "$file")
            if [ "$colours" -gt 100 ]; then
                echo "Screenshot: $file"
                return 0
            fi
        fi
        sleep 0.2
    done
    echo "The window did not show its page; see $file" >&2
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
            tools/dev/run_windows.sh build/windows
            ;;
        *)
            echo "dev: run what? linux or windows" >&2
            return 2
            ;;
    esac
}

Bench() {
    # shellcheck disable=SC2086,SC2154
    InstallDebianPackages $BenchPackages
    BuildPreset linux all dist bench_all
    bench/run.sh build/linux
}

# Takes the pictures of the documents from the running program, with a session made for them. The page has few colours,
# so a palette loses little and makes the files a third of the size. The pictures of the themes need all colours.
Pictures() {
    BuildPreset linux dist observer test_webview
    rm -rf build/pictures
    VARNELLE_BUILD=build/linux node tools/pictures/take.mjs build/pictures
    local picture
    for picture in build/pictures/*.png; do
        convert "$picture" -dither None -colors 128 -strip -define png:compression-level=9 \
            "png8:docs/pictures/$(basename "$picture")"
    done
    node tools/themes/pictures.mjs build/linux/dist/themes docs/pictures
    ls -l docs/pictures
}
