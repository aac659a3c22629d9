#!/bin/bash
# lab.sh DIR COMMAND...: two simulated boards with SSH servers on the loopback interface, each with
# a power switch, for labgrid. Runs COMMAND while the boards exist, and ends them afterwards. Needs
# root.
#
# COMMAND finds DIR/board-1.yaml and DIR/board-2.yaml, environments for --lg-env, and the number of
# boards in CVN_BOARDS. All files are below DIR; processes and network are in namespaces that end
# with this script.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source=$(cd "$here/../.." && pwd)
board_tools=$source/sim/board
boards=2
(($# >= 2)) || {
  echo 'usage: lab.sh DIR COMMAND...' >&2
  exit 2
}
if [[ ${CVN_LAB_INSIDE-} != yes ]]; then
  export CVN_LAB_INSIDE=yes
  exec unshare --net --pid --fork --kill-child --mount-proc --propagation private -- "$0" "$@"
fi
mkdir -p "$1"
lab=$(cd "$1" && pwd)
shift

# StartServer NUMBER: starts an SSH server whose logins end up on that board.
StartServer() {
  local number=$1 name=board-$1 port=$((2200 + $1))
  cat >"$lab/$name.sshd" <<TEXT
Port $port
ListenAddress 127.0.0.1
HostKey $lab/host_key
AuthorizedKeysFile $lab/key.pub
PidFile none
StrictModes no
UsePAM no
PasswordAuthentication no
PermitRootLogin prohibit-password
ForceCommand $board_tools/board-login $lab/$name
TEXT
  cat >"$lab/$name.yaml" <<TEXT
targets:
  main:
    resources:
      NetworkService:
        address: 127.0.0.1
        port: $port
        username: root
    drivers:
      ExternalPowerDriver:
        cmd_on: $board_tools/board-power $lab/$name on --bin $build
        cmd_off: $board_tools/board-power $lab/$name off
        cmd_cycle: $board_tools/board-power $lab/$name cycle --bin $build
      SSHDriver:
        keyfile: $lab/key
TEXT
  /usr/sbin/sshd -f "$lab/$name.sshd" -E "$lab/$name.log"
  "$board_tools/board-power" "$lab/$name" on --bin "$build"
}

ip link set lo up
mkdir -p /run/sshd
build=${CVN_BUILD:-$source/build/release}
rm -f "$lab"/{key,host_key}{,.pub}
ssh-keygen -q -t ed25519 -N '' -f "$lab/key"
ssh-keygen -q -t ed25519 -N '' -f "$lab/host_key"
for ((number = 1; number <= boards; number++)); do StartServer "$number"; done
export CVN_BOARDS=$boards CVN_LAB=$lab
status=0
"$@" || status=$?
exit "$status" # the first process of its namespace: its end ends all others
