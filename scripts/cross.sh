# shellcheck shell=bash disable=SC2154  # source_dir is common.sh's
# Additional functions for ARM builds. Sourced after common.sh.

# The Debian architecture that each preset builds for, and the package with its compiler.
declare -A debian_architecture=([aarch64]=arm64 [armhf]=armhf)
declare -A cross_packages=([aarch64]=g++-aarch64-linux-gnu [armhf]=g++-arm-linux-gnueabihf)

# Packages that simulation and tests link. They are unpacked into a directory: if installed, another
# architecture's packages would need the very same versions as this machine's, or replace them.
target_packages=(zlib1g-dev libssl-dev libavformat-dev libavcodec-dev libswresample-dev libgtest-dev)

# TargetApt ARCHITECTURE STATE ARGUMENT...: apt-get for another architecture, with its package lists
# in the directory STATE, installing nothing.
TargetApt() {
  local architecture=$1 state=$2
  shift 2
  apt-get -y -q -o APT::Architecture="$architecture" -o APT::Architectures="$architecture" \
    -o APT::Install-Recommends=false -o APT::Sandbox::User= -o Dir::State="$state" \
    -o Dir::State::status="$state/status" -o Dir::Cache="$state" "$@"
}

# Unpack ARCHIVE DIRECTORY: unpacks libraries and headers of a package, except the C library's
# headers, which come with the cross compiler.
Unpack() {
  case ${1##*/} in libc6-dev_* | linux-libc-dev_*) return ;; esac
  dpkg-deb --fsys-tarfile "$1" | tar -x --keep-directory-symlink -C "$2" \
    --exclude=./etc --exclude=./usr/bin --exclude=./usr/share --exclude=./var
}

# FillTargetRoot ARCHITECTURE DIRECTORY: fetches the target's packages and unpacks them.
FillTargetRoot() {
  local architecture=$1 root=$2 archive link
  mkdir -p "$root"/{apt/lists/partial,apt/archives/partial,usr/lib} || return
  ln -s usr/lib "$root/lib" && : >"$root/apt/status" || return
  # As with the machine's own packages, fetching reports a missing list.
  TargetApt "$architecture" "$root/apt" update || true
  TargetApt "$architecture" "$root/apt" --download-only install "${target_packages[@]}" || return
  for archive in "$root"/apt/archives/*.deb; do
    Unpack "$archive" "$root" || return
  done
  find "$root/usr/lib" -name '*.so' -lname '/*' | while read -r link; do
    ln -sfr "$root$(readlink "$link")" "$link" || return
  done || return
  rm -r "$root/apt" && echo "${target_packages[*]}" >"$root/packages"
}

# NeedTarget PRESET: provides compiler, emulator and, in build/root/PRESET, the libraries to link.
NeedTarget() {
  local preset=$1 root=$source_dir/build/root/$1
  NeedPackages qemu-user "${cross_packages[$preset]}"
  [[ "$(cat "$root/packages" 2>/dev/null)" != "${target_packages[*]}" ]] || return 0
  echo "Fetching libraries for $preset" >&2
  rm -rf "$root" "$root.new"
  RunQuietly "fetching libraries for $preset" \
    FillTargetRoot "${debian_architecture[$preset]}" "$root.new"
  mv "$root.new" "$root"
}
