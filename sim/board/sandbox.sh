# shellcheck shell=bash disable=SC2154  # variables are shared with board-run
# Three ways to run a program on the board, best first. Sourced by board-run after layout.sh.
#   bwrap   in separate namespaces, as root or as an ordinary user; this machine is never touched
#   chroot  as root without namespaces: the root file system is filled with copies of what it needs
#   none    directly on this machine, with the board's stand-ins before its tools in PATH
# CVN_SANDBOX forces one. Each way has Probe_X, which sets `reason` if it is not available, and
# RunIn_X.

ChooseSandbox() {
  local ways=(bwrap chroot none) lost=
  if [[ -n ${CVN_SANDBOX-} ]]; then
    [[ $CVN_SANDBOX == @(bwrap|chroot|none) ]] ||
      Die 2 "invalid CVN_SANDBOX '$CVN_SANDBOX': expected bwrap, chroot or none"
    ways=("$CVN_SANDBOX")
  fi
  for sandbox in "${ways[@]}"; do
    "Probe_$sandbox"
    [[ -n $reason ]] || break
    lost+="${lost:+; }$sandbox: ${reason//$'\n'/, }"
  done
  [[ -z $reason ]] || Die 1 "cannot create a sandbox: $lost"
  [[ -n $lost ]] || return 0
  case $sandbox in
    chroot) echo "No namespaces ($lost): the board runs in a chroot" >&2 ;;
    none) echo "No sandbox ($lost): running directly on this machine, reports in /tmp/var/log" >&2 ;;
  esac
}

# Try COMMAND...: sets `reason` to nothing if the command succeeds, else to its output.
Try() {
  if reason=$("$@" 2>&1); then
    reason=
  else
    reason=${reason:-$1 failed}
  fi
}

# BoardEnvironment SIM TOP: sets the program's environment. `reboot` kills TOP. The stand-ins find
# their log through CVNSIM_DIR.
BoardEnvironment() {
  local name
  board_env=(
    CVNSIM_DIR="$1" CVNSIM_STATE="$1/state" CVNSIM_TRACE="$1/trace" CVNSIM_TOP="$2"
    TERM="${TERM:-dumb}" HOME=/
    PATH=/opt/cvntester/standins:/opt/cvntester/bin:/usr/sbin:/usr/bin:/sbin:/bin
  )
  [[ -z $scenario ]] ||
    board_env+=(CVNSIM_SCENARIO="$1/scenario" CVNSIM_SCENARIO_NAME="${scenario#"$PWD"/}")
  for name in TZ CVN_HTTP_CONTENT_SERVER; do
    [[ -z ${!name-} ]] || board_env+=("$name=${!name}")
  done
  # Without a sandbox there is no such file.
  [[ $sandbox == none ]] || board_env+=(CVNSIM_REGISTER=/sys/crt/register)
  if [[ -n $record ]]; then
    case $sandbox in
      bwrap) board_env+=(CVN_RECORD=/recording LD_PRELOAD=/opt/cvntester/lib/libcvnrecord.so) ;;
      none) board_env+=(CVN_RECORD="$record" LD_PRELOAD="$build/lib/libcvnrecord.so") ;;
      *) Die 1 '--record requires bubblewrap or CVN_SANDBOX=none' ;;
    esac
  fi
  board_env+=("${extra_env[@]}")
}

# --- bwrap ---

# BwrapArguments PROC_OPTION...: the arguments are the options that mount /proc/.real.
BwrapArguments() {
  local name node
  bwrap_args=(
    --unshare-user --uid 0 --gid 0 --unshare-pid --unshare-net --unshare-ipc --unshare-uts
    --hostname board --die-with-parent --cap-drop ALL
    --cap-add CAP_NET_ADMIN --cap-add CAP_NET_BIND_SERVICE --cap-add CAP_SETPCAP
    --bind "$root" / --ro-bind /usr /usr --dev /dev "$@"
    --ro-bind-try /etc/ld.so.cache /etc/ld.so.cache --ro-bind-try /etc/alternatives /etc/alternatives
    --ro-bind-try /etc/localtime /etc/localtime
    --ro-bind-try "$build/bin" /opt/cvntester/bin --ro-bind-try "$build/lib" /opt/cvntester/lib
    --ro-bind "$here/standins" /opt/cvntester/standins
    --ro-bind "$here/power-up" /opt/cvntester/power-up
    --ro-bind-try "$build/media/www" /opt/cvntester/www
    --ro-bind-try "$build/eyes" /opt/cvntester/eyes
  )
  [[ -z $record ]] || bwrap_args+=(--bind "$record" /recording)
  for name in bin sbin lib lib32 lib64 libx32; do
    [[ -L /$name || ! -d /$name ]] || bwrap_args+=(--ro-bind "/$name" "/$name")
  done
  for node in "$root"/dev/*; do
    [[ ! -f $node && ! -d $node ]] || bwrap_args+=(--bind "$node" "/dev/${node##*/}")
  done
}

# Inside a container that hides parts of /proc, no new one may be mounted, but its own, read-only.
Probe_bwrap() {
  if ! command -v bwrap >/dev/null; then
    reason='bubblewrap is not installed'
    return
  fi
  BwrapArguments --proc /proc/.real
  Try bwrap "${bwrap_args[@]}" /bin/true
  [[ -n $reason ]] || return 0
  local first_reason=$reason
  BwrapArguments --ro-bind /proc /proc/.real
  Try bwrap "${bwrap_args[@]}" /bin/true
  reason=${reason:+$first_reason}
}

# bwrap ends with this shell, not with the shell's parent, so that nohup works. Ctrl-C and Ctrl-\
# are for the program only: this shell and bwrap ignore them.
RunIn_bwrap() {
  local assignment set_env=() status=0
  BoardEnvironment /sim -1
  for assignment in "${board_env[@]}"; do
    set_env+=(--setenv "${assignment%%=*}" "${assignment#*=}")
  done
  trap '' INT QUIT
  bwrap "${bwrap_args[@]}" --clearenv "${set_env[@]}" --chdir /opt/cvntester -- \
    /opt/cvntester/power-up "$@" 9<&- || status=$?
  exit "$status"
}

# --- chroot ---

# The program keeps no capability with which it could affect anything outside the chroot by mistake.
chroot_command=(setpriv '--bounding-set=-all,+sys_chroot' --inh-caps=-all chroot)

Probe_chroot() {
  if ((EUID != 0)); then
    reason='root privileges required'
  elif [[ ! -x $root/vendor/cvn_rootfs/bin/busybox.real ]]; then
    reason='busybox is not installed'
  else
    Try "${chroot_command[@]}" / /bin/true
  fi
}

# CopyPrograms: copies the shell, our programs and the libraries they need, if they changed. The
# shell is not busybox, whose applets would take precedence over the stand-ins.
CopyPrograms() {
  local program library
  cp -uL /bin/sh "$root/usr/bin/sh"
  for program in cvntester cvnsim cvnpanel cvneyes gst-cvn-test-1.0; do
    [[ ! -x $build/bin/$program ]] || cp -u "$build/bin/$program" "$root/opt/cvntester/bin"
  done
  for library in "$build"/lib/*.so; do
    [[ ! -f $library ]] || cp -u "$library" "$root/opt/cvntester/lib"
  done
  ldd "$root"/usr/bin/sh "$root"/opt/cvntester/{bin/*,lib/*.so} 2>/dev/null |
    grep -o '/[^ ]*' | grep -v -e ':$' -e '/opt/cvntester/' | sort -u |
    xargs -r -I{} cp -uL --parents {} "$root"
  cp -u --no-dereference "$here"/standins/* "$root/opt/cvntester/standins"
  [[ ! -d $build/eyes ]] || cp -uT --recursive "$build/eyes" "$root/opt/cvntester/eyes"
}

# LinkApplets: links busybox under all its names, except those that stop the machine.
LinkApplets() {
  local busybox=/vendor/cvn_rootfs/bin/busybox.real name
  [[ ! -L $root/usr/bin/env ]] || return 0
  for name in $("$root$busybox" --list | grep -vxE 'halt|init|linuxrc|poweroff|reboot|sh'); do
    ln -sf "$busybox" "$root/usr/bin/$name"
  done
}

# MakeDeviceNodes: if nodes cannot be created, a plain file takes the place of /dev/null.
MakeDeviceNodes() {
  local name major minor
  while read -r name major minor; do
    [[ -c $root/dev/$name ]] || mknod -m 666 "$root/dev/$name" c "$major" "$minor" 2>/dev/null || true
  done <<<$'null 1 3\nzero 1 5\nfull 1 7\nrandom 1 8\nurandom 1 9\ntty 5 0'
  { : >"$root/dev/null"; } 2>/dev/null || {
    rm -f "$root/dev/null"
    : >"$root/dev/null"
  }
}

RunIn_chroot() {
  CopyPrograms
  LinkApplets
  MakeDeviceNodes
  BoardEnvironment /sim $$
  # Without /proc, a program cannot find out where it is, nor find its libraries from there.
  board_env+=(LD_LIBRARY_PATH=/opt/cvntester/lib)
  # shellcheck disable=SC2016  # expanded by the board's shell
  exec "${chroot_command[@]}" "$root" /vendor/cvn_rootfs/bin/busybox.real env -i "${board_env[@]}" \
    /bin/sh -c 'cd /opt/cvntester && exec "$@"' sh "$@"
}

# --- none ---

Probe_none() {
  Try mkdir -p /tmp/var/log
}

RunIn_none() {
  BoardEnvironment "$sim" $$
  cd "$build" || exit
  exec env "${board_env[@]}" HOME="${HOME:-/}" PATH="$here/standins:$build/bin:$PATH" "$@"
}
