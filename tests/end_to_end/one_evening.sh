#!/usr/bin/env bash
# One evening with the program, by mouse and keyboard on a screen of its own: a statement is imported
# into a portfolio of the sample, the gains are exported, the workspace is saved under a new name and
# opened again. Afterwards what was saved is read with the console program.
#
# usage: one_evening.sh <folder of the programs> <folder of the example statements>
# CORVANE_SCREENS names a folder that keeps a picture of every step.
set -euo pipefail

programs=$1
examples=$2
deadline=${CORVANE_DEADLINE:-90}  # seconds until a step counts as failed; a loaded machine takes its time

work=$(mktemp -d)
screens=${CORVANE_SCREENS:-$work/screens}
mkdir -p "$screens" "$work/home/Documents" "$work/run" "$work/temporary"
chmod 700 "$work/run"
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
export XDG_CACHE_HOME=$work/home/.cache XDG_STATE_HOME=$work/home/.local/state
# What killed programs have left elsewhere must not be offered here.
export TMPDIR=$work/temporary
export XDG_RUNTIME_DIR=$work/run LC_ALL=C.UTF-8 TZ=UTC QT_QPA_PLATFORM=xcb
# The keyboard library hands strndup a text without an end, which is right and which the address
# sanitizer's strict checks refuse; the bus library keeps what it has allocated.
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}strict_string_checks=0:detect_leaks=0
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS QT_QPA_PLATFORMTHEME QT_STYLE_OVERRIDE QT_SCALE_FACTOR

started=()
clean_up() {
  local pid
  # In the opposite order, so that the screen goes last.
  for ((i = ${#started[@]} - 1; i >= 0; i--)); do
    pid=${started[i]}
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  rm -rf "$work"
}
trap clean_up EXIT

# --- Seeing ------------------------------------------------------------------------------------

step_number=0
picture() {
  step_number=$((step_number + 1))
  import -window root "$screens/$(printf '%02d' "$step_number")-$1.png"
}

fail() {
  echo "FAILED: $1"
  echo "The windows on the screen:"
  { xdotool search --onlyvisible --name . 2>/dev/null || true; } | while read -r id; do
    echo "  $(xdotool getwindowname "$id" 2>/dev/null || true)"
  done
  picture failed || true
  echo "What the program said:"
  tail -n 40 "$work/output" 2>/dev/null || true
  exit 1
}

# wait_for <what is awaited> <command that succeeds then>
wait_for() {
  local what=$1 end=$((SECONDS + deadline))
  shift
  until "$@"; do
    [ "$SECONDS" -lt "$end" ] || fail "waited $deadline s for $what"
    sleep 0.1
  done
}

screen_sum() { import -window root ppm:- | md5sum; }

# Two looks in a row that show the same.
settled() {
  local before
  before=$(screen_sum)
  sleep 0.2
  [ "$before" = "$(screen_sum)" ]
}

differs_from() { [ "$1" != "$(screen_sum)" ]; }

# see <name>: waits until nothing moves on the screen, and takes the picture.
see() {
  wait_for "the screen to come to rest ($1)" settled
  picture "$1"
  echo "seen: $1"
}

# see_change <name> <sum of the screen before>: as above, after something has changed.
see_change() {
  wait_for "the screen to change ($1)" differs_from "$2"
  see "$1"
}

window() { xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1; }
is_shown() { [ -n "$(window "$1")" ]; }
is_gone() { ! is_shown "$1"; }
has_focus() { [ "$(xdotool getwindowfocus 2>/dev/null)" = "$(window "$1")" ]; }
is_other_window() { is_shown "$1" && [ "$(window "$1")" != "$2" ]; }

# open_windows: how many the program shows, menus that popped up too.
open_windows() { xdotool search --onlyvisible --class corvane 2>/dev/null | wc -l; }
has_windows() { [ "$(open_windows)" -eq "$1" ]; }

wait_window() {
  wait_for "the window “$1”" is_shown "$1"
  wait_for "the keyboard to go to “$1”" has_focus "$1"
}

# --- Doing -------------------------------------------------------------------------------------

press() { xdotool key --clearmodifiers "$@"; }
write() { xdotool type --clearmodifiers --delay 15 "$1"; }

# click <window> <x> <y>: in its coordinates.
click() { xdotool mousemove --window "$1" "$2" "$3" click 1; }

# choose_field <row> <first letters>: opens the menu of a column and picks by typing.
choose_field() {
  local before
  before=$(open_windows)
  click "$setup" 95 $((89 + 30 * ($1 - 1)))
  wait_for "the menu of column $1" has_windows $((before + 1))
  write "$2"
  press Return
  wait_for "the menu of column $1 to close" has_windows "$before"
  wait_for "the fields to come to rest" settled
}

start_program() {
  "$programs/corvane" "$@" >>"$work/output" 2>&1 &
  program=$!
  started+=("$program")
}

has_ended() { ! kill -0 "$program" 2>/dev/null; }

# Ends the program by its key, and sees that it ends well.
quit_program() {
  local status=0
  press ctrl+q
  wait_for "the program to end" has_ended
  wait "$program" || status=$?
  [ "$status" -eq 0 ] || fail "the program ended with status $status"
}

# --- The screen --------------------------------------------------------------------------------

Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$work/display" >"$work/xvfb" 2>&1 &
started+=($!)
wait_for "a screen" test -s "$work/display"
DISPLAY=:$(cat "$work/display")
export DISPLAY
openbox >/dev/null 2>&1 &
started+=($!)
has_window_manager() { xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q '0x'; }
wait_for "the window manager" has_window_manager

# --- The evening -------------------------------------------------------------------------------

start_program --sample-market
wait_window '^Welcome to Corvane — Corvane$'
see welcome
press alt+F4
wait_for "the page to close" is_gone '^Welcome'
wait_window '^SampleMarket — Corvane$'
see sample
main=$(window '^SampleMarket — Corvane$')

before=$(screen_sum)
click "$main" 100 75
see_change portfolio "$before"

before=$(open_windows)
press alt+f
wait_for "the File menu" has_windows $((before + 1))
see file-menu
press i
wait_window '^Import$'
panel=$(window '^Import$')
see import-panel
write "$examples/penwyth-bank.tsv"
press Return
wait_for "the setup of the fields" is_other_window '^Import$' "$panel"
wait_window '^Import$'
setup=$(window '^Import$')
see field-setup
choose_field 1 'Trade D'
choose_field 3 'Symbol'
choose_field 4 'Cash A'
choose_field 5 'Ignore'
choose_field 6 'Ignore'
see fields-chosen
press Return
wait_for "the setup to close" is_gone '^Import$'
wait_window '^Corvane$'
see import-told
press Return
wait_for "the message to close" is_gone '^Corvane$'
# The star of a workspace with changes.
wait_window '^SampleMarket\* — Corvane$'
see imported

before=$(screen_sum)
press ctrl+2
see_change transactions "$before"
before=$(screen_sum)
press ctrl+1
see_change holdings "$before"
before=$(screen_sum)
xdotool mousemove --window "$main" 700 300
see_change chart-under-the-mouse "$before"

before=$(screen_sum)
press ctrl+3
see_change gains "$before"
press ctrl+e
wait_window '^Export$'
see export-panel
write "$work/gains.csv"
press Return
wait_for "the panel to close" is_gone '^Export$'
wait_for "the exported file" test -s "$work/gains.csv"
see exported
cat "$work/gains.csv"

press ctrl+shift+s
wait_window '^Save Workspace$'
see save-panel
press ctrl+a
write "$work/Family.corvane"
press Return
wait_window '^Family — Corvane$'
see saved
quit_program

# --- What has come of it -----------------------------------------------------------------------

check() {
  local what=$1
  shift
  "$@" || fail "$what"
}

check "the exported gains have a header" grep -q '^"Opening Date","Closing Date","Symbol"' "$work/gains.csv"
# The dates are those of the statement, in which the portfolio bought this and nothing else of it.
check "the exported gains are those of the days shown" \
  grep -q '"1/15/24","5/27/24","CWRLD.TO",.*,"122","0",' "$work/gains.csv"

"$programs/corvane-cli" verify "$work/Family.corvane" || fail "the saved workspace is not right"
sample=$programs/../share/corvane/SampleMarket.corvane
# rows <workspace>: writes its ledger into a file.
rows() {
  "$programs/corvane-cli" ledger "$1" --portfolio Retirement >"$work/ledger" ||
    fail "the ledger of $1 cannot be read"
}
rows "$sample"
before=$(wc -l <"$work/ledger")
rows "$work/Family.corvane"
after=$(wc -l <"$work/ledger")
[ "$((after - before))" -eq 6 ] || fail "the ledger has grown by $((after - before)) rows, not 6"
# has_row <day> <kind and amount, as a pattern>
has_row() { grep -Eq "$1 +$1 +$2" "$work/ledger" || fail "the ledger lacks $1 $2"; }
has_row 2024-01-15 'Transfer In +2500\.00 +CAD'
has_row 2024-02-02 'Transfer Out +-?750\.00 +CAD'
has_row 2024-05-27 'Transfer Out +-?200\.00 +CAD'

start_program --sample-market "$work/Family.corvane"
wait_window '^Family — Corvane$'
see opened-again
main=$(window '^Family — Corvane$')
before=$(screen_sum)
click "$main" 100 75
see_change portfolio-again "$before"
quit_program
echo "The evening went well."
