#!/bin/sh
# Waits until the window manager of DISPLAY manages windows that are shown, 60 seconds at most.
#
# A window manager answers (wmctrl -m) before it has read the existing windows, and never manages a window shown in
# between: openbox loses one in eight on a busy machine. So show a test window until one is managed, then close it. Do
# not show it before the manager answers: xfwm4 dies of a window that is shown while it starts (BadGC).
set -u

# listed TITLE
listed() { wmctrl -l 2>/dev/null | grep -q " $1\$"; }

for _ in $(seq 1200); do
    ! wmctrl -m >/dev/null 2>&1 || break
    sleep 0.05
done
title=await-$$
taken=no
for _ in $(seq 20); do
    xlogo -title "$title" -geometry 40x40+10+10 >/dev/null 2>&1 &
    window=$!
    for _ in $(seq 60); do
        if listed "$title"; then
            taken=yes
            break
        fi
        sleep 0.05
    done
    kill "$window" 2>/dev/null
    wait "$window" 2>/dev/null
    [ $taken = no ] || break
done
if [ $taken = no ]; then
    echo "no window manager takes the windows of display ${DISPLAY:-}" >&2
    exit 1
fi
while listed "$title"; do
    sleep 0.05
done
