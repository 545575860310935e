#!/bin/sh
# Runs a command between two X servers, one inside the other, and ends them with it.
#
#   start_servers.sh COMMAND [ARGUMENT...]
#
# The command runs with DISPLAY naming the inner server, which has a window manager and no other window, and
# VARNELLE_HOST_DISPLAY naming the outer one. XTEST on the outer server is a user's input to the inner one; XTEST on
# the inner one is injected input. Display numbers are free ones, chosen by the servers. Returns the command's exit code.
# VARNELLE_WINDOW_MANAGER is openbox, which it also is when it is not set, or xfwm4.
set -eu

work=$(mktemp -d "${TMPDIR:-/tmp}/varnelle-servers.XXXXXX")
children=""

end() {
    for child in $children; do
        kill "$child" 2>/dev/null || true
    done
    for child in $children; do
        wait "$child" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap end EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# wait_until SECONDS COMMAND...
wait_until() {
    limit=$(($1 * 20))
    shift
    while ! "$@" >/dev/null 2>&1; do
        limit=$((limit - 1))
        if [ "$limit" -le 0 ]; then
            echo "start_servers: gave up waiting for: $*" >&2
            cat "$work"/*.log >&2
            exit 99
        fi
        sleep 0.05
    done
}

Xvfb -screen 0 1600x1000x24 -nolisten tcp -noreset -ac -displayfd 5 5>"$work/host" >"$work/xvfb.log" 2>&1 &
children="$! $children"
wait_until 30 test -s "$work/host"
VARNELLE_HOST_DISPLAY=":$(cat "$work/host")"

DISPLAY=$VARNELLE_HOST_DISPLAY Xephyr -screen 1600x1000 -no-host-grab -nolisten tcp -noreset -ac \
    -displayfd 5 5>"$work/inner" >"$work/xephyr.log" 2>&1 &
children="$! $children"
wait_until 30 test -s "$work/inner"
DISPLAY=":$(cat "$work/inner")"
export DISPLAY VARNELLE_HOST_DISPLAY

# Without key bindings of its own: keys are what the tests are about.
cat >"$work/rc.xml" <<'XML'
<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <keyboard/>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
  </mouse>
</openbox_config>
XML
case ${VARNELLE_WINDOW_MANAGER:-openbox} in
    openbox) openbox --sm-disable --config-file "$work/rc.xml" >"$work/openbox.log" 2>&1 & ;;
    xfwm4)
        # Its settings come from a daemon on a session bus of its own.
        dbus-daemon --session --nofork --nopidfile --print-address=5 5>"$work/bus" >"$work/bus.log" 2>&1 &
        children="$! $children"
        wait_until 30 test -s "$work/bus"
        NO_AT_BRIDGE=1 HOME=$work XDG_CONFIG_HOME=$work XDG_CACHE_HOME=$work XDG_RUNTIME_DIR=$work \
            DBUS_SESSION_BUS_ADDRESS=$(cat "$work/bus") xfwm4 --compositor=off --sm-client-disable \
            >"$work/xfwm4.log" 2>&1 &
        ;;
    *)
        echo "start_servers: no window manager named $VARNELLE_WINDOW_MANAGER" >&2
        exit 2
        ;;
esac
children="$! $children"
"$(dirname "$0")/../../tools/dev/await_window_manager.sh"

# The host's own auto-repeat would look like a user's releases and presses, and its pointer has to be inside.
DISPLAY=$VARNELLE_HOST_DISPLAY xset r off
DISPLAY=$VARNELLE_HOST_DISPLAY xdotool mousemove 801 501

code=0
"$@" || code=$?
exit "$code"
