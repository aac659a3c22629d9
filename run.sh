#!/bin/bash
# Opens the harness's console on the simulated board; installs and builds first what is missing.
set -euo pipefail
usage='usage: run.sh [--os android|sorvex|pelxos] [--board DIR] [--scenario FILE] [--fresh] [--help] [-- ARGUMENT...]'
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/scripts/common.sh"
. "$here/sim/board/options.sh"

Help() {
  cat <<TEXT
$usage
  --os NAME        the board's operating system: android (default), sorvex or pelxos
  --board DIR      where the board's files live; they survive between runs (default: board/)
  --scenario FILE  starting state of the simulated HAL and what happens later
  --fresh          throw the board's files away first
  -- ARGUMENT...   the rest goes to cvntester
TEXT
}

OpenClosedDescriptors
board=$here/board
while (($#)); do
  case $1 in
    --help)
      Help
      exit 0
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

NeedPackages "${run_packages[@]}"
IsConfigured release || Configure release -DCVN_BUILD_TESTS=OFF
Build release simulated_board

fresh_option=()
((!fresh)) || fresh_option=(--fresh)
scenario_option=()
[[ -z $scenario ]] || scenario_option=(--scenario "$scenario")
echo "Board files: $board"
echo "Reports:     $board/root/tmp/var/log"
echo "USB stick:   $board/usb/stick"
echo "TFTP server: $board/tftp"
exec "$here/sim/board/board-run" --board "$board" --bin "$here/build/release" --os "$os" \
  "${fresh_option[@]}" "${scenario_option[@]}" -- cvntester "$@"
