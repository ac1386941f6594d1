#!/bin/bash
# What the trials of the real programs share: functions that wait, look and click as an operator
# does. To be sourced by bash, on a desktop of private_desktop.

here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")

# The machine's address as the programs find it.
own_address() {
    ifconfig | grep 'inet ' | grep -v '127.0.0.1' | awk '{print $2}' | tail -n 1
}

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# Waits until a command succeeds: a generous minute and a half, then gives up. $1 says for what.
wait_for() {
    local what=$1 deadline=$((SECONDS + 90))
    shift
    until "$@" >/dev/null 2>&1; do
        [ $SECONDS -lt $deadline ] || fail "waited in vain for $what"
        sleep 0.1
    done
}

# Whether the window of exactly that title shows its widgets. A program that is busy is not asked
# for them before its window is there.
shown() {
    xdotool search --onlyvisible --name "^$1\$" && [ -n "$("$here/screen_content" "$1")" ]
}

# Waits for a window and brings it to the front: TITLE. Prints its number.
to_front() {
    wait_for "the window « $1 »" shown "$1"
    xdotool search --onlyvisible --name "^$1\$" windowactivate --sync
    xdotool search --onlyvisible --name "^$1\$"
}

# Saves the picture of a window, once it had the time to draw itself: TITLE FILE.
picture() {
    local window
    window=$(to_front "$1")
    sleep 0.5
    import -window "$window" "$2"
}

# Closes a window by the Escape key: TITLE.
close_window() {
    to_front "$1" >/dev/null
    xdotool key Escape
}

# Clicks on the button of a window, once it is shown and in front: TITLE, NUMBER from 1.
click() {
    local x y
    to_front "$1" >/dev/null
    read -r x y < <("$here/screen_content" "$1" | awk -F '\t' -v number="$2" \
        '$1 ~ /button/ && ++seen == number {print $2, $3}')
    xdotool mousemove "$x" "$y" click 1
}
