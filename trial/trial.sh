#!/bin/bash
# What the trials of the real programs share: functions that wait, look and click as an operator
# does. To be sourced by bash, on a desktop of private_desktop.

here=$(realpath "$(dirname "${BASH_SOURCE[0]}")")

# The machine's address as the programs find it.
own_address() {
    ifconfig | grep 'inet ' | grep -v '127.0.0.1' | awk '{print $2}' | tail -n 1
}

# The lines of the trial that led here, the last one first.
lines() {
    local frame
    for ((frame = 1; frame < ${#BASH_SOURCE[@]}; frame++)); do
        [ "${BASH_SOURCE[frame]}" = "${BASH_SOURCE[0]}" ] ||
            printf '%s:%s ' "$(basename "${BASH_SOURCE[frame]}")" "${BASH_LINENO[frame - 1]}"
    done
}

fail() {
    echo "FAILED: $*, at $(lines)" >&2
    exit 1
}

# When the trial has failed, shows the last output of its programs and what their windows show.
# shellcheck disable=SC2317 # called by the trap
show_what_stands() {
    local title
    set +e
    [ -z "${unexpected-}" ] || echo "FAILED: $unexpected"
    tail -n 20 trace err ./*.log ${pictures:+"$pictures/trace"} 2>/dev/null
    xdotool search --onlyvisible --name . getwindowname %@ 2>/dev/null | sort -u |
        while read -r title; do
            printf '==> window « %s »\n' "$title"
            timeout 10 "$here/screen_content" "$title" 2>/dev/null
        done
}

# A command may fail without a word of its own.
set -E
trap 'unexpected="$BASH_COMMAND, at $(lines)"' ERR
trap '[ $? = 0 ] || show_what_stands >&2' EXIT

# One process reads the screen for the whole trial: a new one takes longer to start than to read.
[ -z "${DISPLAY-}" ] || {
    coproc reader { exec setpriv --pdeathsig TERM "$here/screen_content" --each; }
    # Also for subshells, which do not get those of the reader.
    exec {questions}>&"${reader[1]}" {answers}<&"${reader[0]}"
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

# Leaves in $content what the window shows, a line a widget; fails when it shows nothing: TITLE.
read_screen() {
    printf '%s\n' "$1" >&"$questions"
    IFS= read -r -d '' -u "$answers" content
    [ -n "$content" ]
}

# Leaves in $window the number of the window of exactly that title; fails when there is none: TITLE.
find_window() {
    window=$(xdotool search --onlyvisible --name "^$1\$")
}

# Whether the window of exactly that title, left in $window, shows its widgets, which are left in
# $content. A program that is busy is not asked for them before its window is there.
shown() {
    find_window "$1" && read_screen "$1"
}

# Whether a window shows that text: TITLE TEXT.
says() {
    read_screen "$1" && [[ $content = *"$2"* ]]
}

# Asks for the window of $window to be in front and looks whether its program is. A message of the
# same program, which the window waits for, stays in front of it.
in_front() {
    local wanted active
    {
        read -r wanted
        read -r active
    } < <(xdotool windowactivate "$window" getwindowpid "$window" getactivewindow getwindowpid) &&
        [ "$wanted" = "$active" ]
}

# Brings a window to the front: TITLE. It is that of $window, unless another has taken its place.
brought() {
    in_front && return
    sleep 0.1
    find_window "$1" && in_front
}

no_window() { ! xdotool search --onlyvisible --name "^$1\$"; }

# Waits for a window and brings it to the front: TITLE. Prints its number.
to_front() {
    local window
    wait_for "the window « $1 »" shown "$1"
    wait_for "« $1 » in front" brought "$1"
    echo "$window"
}

# Waits until a window shows a text, and brings it to the front: TITLE TEXT.
shows() {
    to_front "$1" >/dev/null
    [[ $content = *"$2"* ]] || wait_for "« $2 »" says "$1" "$2"
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
    read_screen "$1"
    read -r x y < <(awk -F '\t' -v number="$2" \
        '$1 ~ /button/ && ++seen == number {print $2, $3}' <<<"$content")
    xdotool mousemove "$x" "$y" click 1
}

# Prints the place of what is shown under that name, or a name that begins so: TITLE NAME.
place_of() {
    read_screen "$1" && awk -F '\t' -v name="$2" \
        'index($4, name) == 1 {print $2, $3; found = 1; exit} END {exit !found}' <<<"$content"
}

found() { place=$(place_of "$1" "$2"); }

# Clicks on it, once the window is in front: TITLE NAME.
click_on() {
    local x y
    to_front "$1" >/dev/null
    wait_for "« $2 »" found "$1" "$2"
    read -r x y <<<"$place"
    xdotool mousemove "$x" "$y" click 1
}
