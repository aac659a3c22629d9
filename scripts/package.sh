#!/bin/bash
# Makes packages: Debian packages of the program, the simulated board and the PC programs, and an
# archive of the program for boards without a package system. First installs missing packages.
set -euo pipefail
usage='usage: package.sh [--arch amd64|arm64|armhf]... [--output DIR] [--prefix DIR] [--help]'
here=$(cd "${BASH_SOURCE[0]%/*}" && pwd)
. "$here/common.sh"
. "$here/cross.sh"

# The preset that builds for each Debian architecture.
declare -A presets=([amd64]=release [arm64]=aarch64 [armhf]=armhf)

Help() {
  cat <<TEXT
$usage
  --arch NAME   only this architecture; can be repeated. Without it: amd64, arm64 and armhf
  --output DIR  where the packages go (default: build/packages)
  --prefix DIR  where the archive is unpacked from / on (default: /opt/cvntester)
The time in the packages is SOURCE_DATE_EPOCH, or that of the newest commit.
TEXT
}

# PackageTime: the time of the packages in seconds, equal for equal sources.
PackageTime() {
  git -C "$source_dir" log -1 --format=%ct 2>/dev/null || stat -c %Y "$source_dir/CHANGELOG.md"
}

# Version: the version of the sources.
Version() {
  sed -n 's/^project(cvntester VERSION \([0-9.]*\).*/\1/p' "$source_dir/CMakeLists.txt"
}

# ConfigurePackages PRESET OPTION...: configures a separate build tree that contains no path of this
# machine.
ConfigurePackages() {
  local preset=$1 tree=$source_dir/build/package/$1
  shift
  RunQuietly "configuring $tree" cmake -S "$source_dir" --preset "$preset" -B "$tree" \
    -DCVN_BUILD_TESTS=OFF -DCVN_PACKAGES=ON -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON \
    -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$source_dir/= -ffile-prefix-map=$tree/=build/" "$@"
}

# PackTree PRESET GENERATOR OPTION...: CPack writes its files to `output`.
PackTree() {
  local tree=$source_dir/build/package/$1 generator=$2
  shift 2
  rm -rf "$tree/_CPack_Packages"
  (cd "$tree" && RunQuietly "packing in $tree" cpack -G "$generator" -B "$output" "$@")
  rm -rf "$output/_CPack_Packages"
}

# Make ARCHITECTURE: makes all its packages. The archive's program contains the C++ runtime.
Make() {
  local preset=${presets[$1]} targets=(cvntester cvntester_documents cvn_k2vhal cvnsim cvndumpgen gst-cvn-test)
  if [[ $preset == release ]]; then
    targets=(simulated_board cvneyes cvnpanel)
  else
    NeedTarget "$preset"
  fi
  local tree=$source_dir/build/package/$preset
  ConfigurePackages "$preset" -DCVN_BUILD_RECORDER=ON -DCVN_STATIC_RUNTIME=OFF
  RunQuietly "building $tree" ninja -C "$tree" "${targets[@]}" recording documents
  PackTree "$preset" DEB
  ConfigurePackages "$preset" -DCVN_STATIC_RUNTIME=ON
  RunQuietly "building $tree" ninja -C "$tree" cvntester
  PackTree "$preset" TXZ -D CPACK_COMPONENTS_ALL=cvntester -D CPACK_PACKAGING_INSTALL_PREFIX="$prefix" \
    -D CPACK_ARCHIVE_CVNTESTER_FILE_NAME="cvntester-$(Version)-$1"
}

architectures=()
output=$source_dir/build/packages
prefix=/opt/cvntester
while (($#)); do
  case $1 in
    --help)
      Help
      exit 0
      ;;
    --arch)
      [[ -n ${2-} && -n ${presets[$2]-} ]] || Die 2 "--arch needs amd64, arm64 or armhf; $usage"
      architectures+=("$2")
      ;;
    --output)
      [[ -n ${2-} ]] || Die 2 "--output needs a directory; $usage"
      output=$2
      ;;
    --prefix)
      [[ ${2-} == /?* ]] || Die 2 "--prefix needs an absolute path; $usage"
      prefix=$2
      ;;
    *) Die 2 "unknown option $1; $usage" ;;
  esac
  shift 2
done
((${#architectures[@]})) || architectures=(amd64 arm64 armhf)

NeedPackages "${run_packages[@]}" "${eyes_packages[@]}" "${record_packages[@]}" "${report_packages[@]}" \
  "${halcheck_packages[@]}" "${document_packages[@]}" dpkg-dev file xz-utils
mkdir -p "$output"
output=$(cd "$output" && pwd)
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(PackageTime)}
export SOURCE_DATE_EPOCH
for architecture in "${architectures[@]}"; do
  Make "$architecture"
done
ls -l "$output"
