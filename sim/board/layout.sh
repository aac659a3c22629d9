# shellcheck shell=bash disable=SC2034,SC2154  # variables are shared with board-run
# The board's files: what a new board has, and what switching it on changes. Sourced by board-run;
# uses its variables, such as `board` and `build`, and sets `root` and `sim`.

board_dirs=(
  data home media mnt nvram/data system/bin tmp/var/log var
  vendor/{corvana,cvn_rootfs/{bin,usr/bin}} dev/block sys/crt proc/{.real,cvngdma,sys/vm} etc run
  usr/{bin,sbin,lib,lib32,lib64}
  opt/cvntester/{bin,lib,standins,www,eyes} sim/{log,tftp,usb/stick}
)
# What a board keeps in memory, so that it is gone after a power-on.
volatile_files=(
  tmp/{cross_module,OMX_MURO_CONFIG,GST_DVO_FREERUN,GST_DVO_FORCE_ADAPTIVE,enableDebugMode}
  tmp/{runningCrossModule,gst_1_0_registry.bin}
  tmp/var/log/dpq_{logfile,acpu1,acpu2,vcpu1,vcpu2}.log tmp/var/log/dpq_logfile.log.gz
)
block_nodes=(dev/block/{sda,sda1})
# The drivers' nodes are plain files: they keep what was written last, as long as there is power.
# sys/crt/register is one until the HAL starts and serves it.
driver_nodes=(dev/{cvnvdec,cvndvo,vodev,vscdev,vpqdev,cvnaudio})
board_nodes=(
  "${driver_nodes[@]}" "${block_nodes[@]}"
  sys/crt/register proc/{usercalls,cvngdma/dbg,sys/vm/drop_caches}
)

# The file that identifies the board's operating system.
declare -A os_markers=(
  [android]=vendor/manifest.xml [sorvex]=home/core.1st [pelxos]=vendor/corvana/pelxos
)

# Creates the board's directory, or rejects one that contains something else. Only one board-run at a
# time may use it: switching on discards the running board's state.
PrepareBoard() {
  local marker=$board/.cvntester-board
  if [[ -e $board && ! -f $marker && -n $(ls -A "$board" 2>&1) ]]; then
    Die 2 "$board is not empty and is not a board directory; nothing was changed"
  fi
  mkdir -p "$board" 2>/dev/null || Die 1 "cannot create the board directory $board"
  board=$(cd "$board" && pwd)
  marker=$board/.cvntester-board
  [[ -w $board ]] || Die 1 "cannot write to the board directory $board"
  : >>"$marker"
  exec 9<"$marker"
  flock -n 9 || Die 1 "the board in $board is already running"
  ((!fresh)) ||
    find "$board" -mindepth 1 -maxdepth 1 ! -name "${marker##*/}" -exec rm -rf {} +
  root=$board/root
  sim=$root/sim
  [[ -d $root ]] || MakeRoot
  InstallBusybox
}

# PrepareRecording: creates the directory `record`, which must be new or empty; makes it absolute.
PrepareRecording() {
  [[ -f $build/lib/libcvnrecord.so ]] || Die 1 "no recorder in $build"
  [[ ! -e $record || -d $record && -z $(ls -A "$record" 2>&1) ]] ||
    Die 2 "$record is not empty; use a new directory for a recording"
  mkdir -p "$record" 2>/dev/null || Die 1 "cannot create the directory $record"
  record=$(cd "$record" && pwd)
}

# Creates the root file system of a new board.
MakeRoot() {
  local new=$board/root.new node
  rm -rf "$new"
  (cd "$board" && ln -sfn root/sim run && ln -sfn root/sim/usb usb && ln -sfn root/sim/tftp tftp)
  mkdir "$new"
  (cd "$new" && mkdir -p "${board_dirs[@]}")
  chmod 1777 "$new/tmp"
  for node in "${board_nodes[@]}"; do
    : >"$new/$node"
  done
  LinkHostDirectories "$new"
  LinkProc "$new/proc"
  printf 'root:x:0:0:root:/:/bin/sh\nnobody:x:65534:65534:nobody:/:/bin/false\n' >"$new/etc/passwd"
  printf 'root:x:0:\nnogroup:x:65534:\n' >"$new/etc/group"
  printf 'ro.bootimage.build.%s\n' 'fingerprint=cvn/simboard/simboard:9/SIM1/1:userdebug/test-keys' \
    'date=Thu Jan  1 00:00:00 UTC 2026' >"$new/default.prop"
  mv "$new" "$board/root"
}

# /bin, /lib and similar directories have the layout of this machine, whose /usr the board uses.
LinkHostDirectories() {
  local name
  for name in bin sbin lib lib32 lib64 libx32; do
    if [[ -L /$name ]]; then
      ln -s "$(readlink "/$name")" "$1/$name"
    elif [[ -d /$name ]]; then
      mkdir "$1/$name"
    fi
  done
}

# The drivers' nodes cannot be added to procfs, so /proc is a plain directory with links to the real
# one, which is hidden in /proc/.real. Links for the lowest process ids serve programs that look
# themselves up by id; those without a process dangle.
LinkProc() {
  local path names=()
  for path in /proc/[!0-9]*; do
    [[ -e $1/${path##*/} ]] || names+=(".real/${path##*/}")
  done
  ln -s "${names[@]}" .real/{1..199} "$1"
  ln -s ../.real/sys/{fs,kernel,net} "$1/sys"
}

# Installs the real busybox, and the names by which the board's commands find it.
InstallBusybox() {
  local busybox bin=$root/vendor/cvn_rootfs/bin
  [[ ! -x $bin/busybox.real ]] && busybox=$(command -v busybox) || return 0
  cp -L "$busybox" "$bin/busybox.real"
  ln -sf /opt/cvntester/standins/busybox "$bin/busybox"
  ln -sf ../../bin/busybox.real "$root/vendor/cvn_rootfs/usr/bin/tftp"
  ln -sf /opt/cvntester/standins/busybox "$root/vendor/corvana/busybox"
}

# Installs the media files of the stick and the contents of the vendor partition, if this board has
# none or those of another build.
InstallMedia() {
  local media=$build/media content=$sim/usb/stick/cross_module_content_v1
  [[ -f $media/stamp ]] || return 0
  ! cmp -s "$media/stamp" "$sim/media-stamp" || return 0
  mkdir -p "$content"
  [[ ! -f $sim/media-stamp ]] ||
    echo 'The media files are new: restore the golden data (playback menu, 10)' >&2
  cp "$media"/www/cross_module_content_v1/* "$content"
  cp "$media"/vendor/* "$root/vendor/corvana"
  cp "$media/stamp" "$sim/media-stamp"
}

# UnmountAll: unmounts sticks that were mounted when the power was lost.
UnmountAll() {
  local directory
  [[ -f $sim/mounts ]] || return 0
  while read -r _ directory; do
    [[ ! -L $root$directory ]] || rm "$root$directory"
    [[ ! -d $sim/covered${directory//\//_} ]] ||
      mv -T "$sim/covered${directory//\//_}" "$root$directory"
  done <"$sim/mounts"
}

# SwitchOn: every start is a power-on, unless an earlier session with --keep-on left the board on and
# this one has --keep-on, too.
SwitchOn() {
  local on=
  ((!keep_on)) || read -r on 2>/dev/null <"$sim/on" || true
  if [[ -z $on ]]; then
    PowerOn
  else
    [[ $on == "$os" ]] || Die 2 "the board in $board is on with --os $on; switch it off with cvnsim off"
    [[ -z $scenario ]] ||
      Die 2 "the board in $board is on; a scenario requires a board that is off (cvnsim off)"
  fi
  rm -f "$sim/on"
  ((!keep_on)) || echo "$os" >"$sim/on"
  SetUpSession
}

# The root file system survives, except for what a board keeps in memory; the state of the HAL and
# the drivers does not, and everything around the board is in order. Reports stay for the user.
PowerOn() {
  UnmountAll
  rm -rf "$sim"/{state*,trace*,scenario,mounts,log/commands,{stick-out,network-down,tftp-down,disk-full}}
  printf '%s\n' "${volatile_files[@]}" "${driver_nodes[@]}" >"$sim/volatile"
  [[ -z $scenario ]] || cp "$scenario" "$sim/scenario"
  echo "$os" >"$sim/os"
  (
    cd "$root" || exit
    rm -f "${os_markers[@]}"
    rm -rf "${volatile_files[@]}"
    : >"${os_markers[$os]}"
    for node in "${driver_nodes[@]}" "${block_nodes[@]}"; do : >"$node"; done
  )
}

# Sets up what belongs to one session: its processes, and the network they are in.
SetUpSession() {
  rm -f "$root/tmp/cross_module/isPcbIpSetuped.cfg"
  # The last HAL replaced it by a pipe, which nobody reads any more.
  [[ ! -p $root/sys/crt/register ]] || rm "$root/sys/crt/register"
  : >>"$root/sys/crt/register"
  # A board without its own network has no servers, and none of its traffic leaves this machine.
  local server=192.0.2.1
  [[ $sandbox == bwrap ]] || server=127.0.0.1
  printf '%s\n' '127.0.0.1 localhost board' "$server content.local tftp.local" >"$root/etc/hosts"
  InstallMedia
}
