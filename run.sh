#!/bin/bash
# Opens the harness's console on the simulated board; first installs and builds what is missing.
set -euo pipefail
usage='usage: run.sh [--os android|sorvex|pelxos] [--board DIR] [--scenario FILE] [--fresh] [--keep-on] [--panel] [--report] [--record DIR] [--help] [-- ARGUMENT...]'
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/scripts/common.sh"
. "$here/sim/board/options.sh"

Help() {
  cat <<TEXT
$usage
  --os NAME        the board's operating system: android (default), sorvex or pelxos
  --board DIR      directory of the board's files, kept between sessions (default: board/)
  --scenario FILE  initial state of the simulated board and later events
  --fresh          delete the board's files first
  --keep-on        leave the board on at the end, and continue with a board that was left on;
                   by default every start is a power-on that discards what cvnsim changed
  --panel          serve a page with the board's panel to this machine's browser and print its
                   address; installs the packages that it needs
  --report         only make a page of the last run with --results on the board; it is opened if
                   there is a desktop
  --record DIR     record all HAL calls to DIR, which must be new or empty (docs/RECORDING.md);
                   installs the packages that it needs
  -- ARGUMENT...   arguments for cvntester; --eyes among them installs the packages that judging
                   the simulated panel needs
TEXT
}

# LastRun BOARD: the result directory on the board with the newest journal.
LastRun() {
  find "$1/root" -xdev -name journal -type f -printf '%T@ %h\n' 2>/dev/null | sort -rn |
    while read -r _ directory; do
      [[ $(head -c 17 "$directory/journal" 2>/dev/null | tr -d '\0') != 'cvntester journal' ]] || {
        printf '%s\n' "$directory"
        break
      }
    done
}

# ShowReport BOARD: makes and opens the page of the last run.
ShowReport() {
  local page=$1/report.html run
  NeedPackages "${report_packages[@]}"
  run=$(LastRun "$1") || true
  [[ -n $run ]] || Die 2 "no results in $1/root; start a run with --results DIR first"
  "$here/tools/report/cvnreport" "$run" -o "$page"
  echo "Report: $page"
  if [[ -n ${DISPLAY-}${WAYLAND_DISPLAY-} ]] && command -v xdg-open >/dev/null; then
    xdg-open "$page" >/dev/null 2>&1 </dev/null &
  fi
}

OpenClosedDescriptors
board=$here/board
panel=0
report=0
record=
while (($#)); do
  case $1 in
    --help)
      Help
      exit 0
      ;;
    --panel)
      panel=1
      shift
      ;;
    --report)
      report=1
      shift
      ;;
    --record)
      [[ -n ${2-} ]] || UsageError '--record requires a directory'
      record=$2
      shift 2
      ;;
    --)
      shift
      break
      ;;
    *)
      TakeBoardOption "$@"
      shift "$taken"
      ;;
  esac
done
CheckBoardOptions
if ((report)); then
  ShowReport "$board"
  exit
fi

eyes=0
for argument; do
  [[ $argument != --eyes ]] || eyes=1
done

NeedPackages "${run_packages[@]}"
((!panel)) || NeedPackages "${panel_packages[@]}"
((!eyes)) || NeedPackages "${eyes_packages[@]}"
[[ -z $record ]] || NeedPackages "${record_packages[@]}"
IsConfigured release || Configure release -DCVN_BUILD_TESTS=OFF
# A tree configured before the libraries were installed has neither.
((!panel)) || [[ -x $here/build/release/bin/cvnpanel ]] || Configure release
((!eyes)) || [[ -x $here/build/release/bin/cvneyes ]] || Configure release
Build release simulated_board
if [[ -n $record ]]; then
  [[ -f $here/build/release/lib/libcvnrecord.so ]] || Configure release -DCVN_BUILD_RECORDER=ON
  Build release recording
fi

board_options=(--board "$board" --os "$os")
((!fresh)) || board_options+=(--fresh)
((!keep_on)) || board_options+=(--keep-on)
[[ -z $scenario ]] || board_options+=(--scenario "$scenario")
[[ -z $record ]] || board_options+=(--record "$record")

# Options that only print information about the program need no board.
for argument; do
  case $argument in
    --help | --version | --document) exec "$here/build/release/bin/cvntester" "$@" ;;
  esac
done

# The page lives as long as this process, which becomes the board's launcher. It has its own
# session, because Ctrl-C is meant for the harness.
panel_line=
((!panel)) || read -r panel_line < <(
  setsid "$here/build/release/bin/cvnsim" --board "$board" panel --with $$ 2>&1 </dev/null
) || true
((!panel)) || [[ $panel_line == Panel:* ]] || Die 1 "no panel: ${panel_line:-it did not start}"

# With arguments, standard output is reserved for the harness.
(($#)) && banner=2 || banner=1
cat >&"$banner" <<TEXT
Board files: $board
Reports:     $board/root/tmp/var/log
USB stick:   $board/usb/stick
TFTP server: $board/tftp${panel_line:+
Panel:       ${panel_line#Panel: }}
TEXT
exec "$here/sim/board/board-run" "${board_options[@]}" --bin "$here/build/release" -- cvntester "$@"
