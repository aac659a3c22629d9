# shellcheck shell=bash disable=SC2034  # variables are used by the sourcing scripts
# Shared by run.sh, test.sh and the board's launcher: messages, Debian packages, builds.
# Sourced. `source_dir` is the checkout.
source_dir=$(cd "${BASH_SOURCE[0]%/*}/.." && pwd)

# Debian packages required to build and run the simulated board, and in addition by its panel, by
# the eyes, to record HAL calls, by reports of runs (cvnreport), by the comparison of HAL libraries
# (cvnhalcheck), by the man pages, by the tests, by the tests in a browser, and by the analysis of
# the sources.
run_packages=(g++ cmake ninja-build pkgconf zlib1g-dev libssl-dev bubblewrap busybox-static
  ffmpeg libavformat-dev libavcodec-dev libswresample-dev)
panel_packages=(libavfilter-dev libswscale-dev libmicrohttpd-dev fonts-dejavu-core)
eyes_packages=("${panel_packages[@]}" libavdevice-dev)
record_packages=(castxml python3)
report_packages=(python3 python3-jinja2 python3-pil)
halcheck_packages=(python3 python3-pyelftools binutils)
document_packages=(help2man lowdown)
test_packages=("${document_packages[@]}" "${eyes_packages[@]}" "${record_packages[@]}" "${report_packages[@]}" "${halcheck_packages[@]}"
  babeltrace2 clang libclang-rt-14-dev clang-format libgtest-dev libbenchmark-dev shellcheck edid-decode openssl procps valgrind jq libxml2-utils perl
  python3-hypothesis python3-junitparser python3-yaml tidy poppler-utils)
browser_packages=(chromium python3-websocket)
analysis_packages=(clang-tidy cppcheck)

# Packages for a LAVA lab and for labgrid (contrib). LAVA itself is unpacked, not installed.
labgrid_packages=(labgrid procps openssh-server openssh-client)
lava_packages=(postgresql curl python3-aiohttp python3-celery python3-defusedxml python3-django
  python3-django-allauth python3-django-auth-ldap python3-django-environ python3-django-filters
  python3-django-tables2 python3-djangorestframework python3-djangorestframework-extensions
  python3-djangorestframework-filters python3-docutils python3-eventlet python3-jinja2
  python3-junit.xml python3-psycopg2 python3-requests python3-simplejson python3-tap python3-tz
  python3-voluptuous python3-whitenoise python3-yaml python3-zmq gunicorn python3-configobj
  python3-magic python3-netifaces python3-pexpect python3-pyudev python3-setproctitle)

# Die STATUS MESSAGE: prints one line on standard error and exits.
Die() {
  printf '%s: %s\n' "${0##*/}" "$2" >&2
  exit "$1"
}

# A descriptor that the caller closed would be reused for the next opened file; opens /dev/null
# instead.
OpenClosedDescriptors() {
  [[ -e /dev/fd/0 ]] || exec </dev/null
  [[ -e /dev/fd/1 ]] || exec >/dev/null
  [[ -e /dev/fd/2 ]] || exec 2>/dev/null
}

# ShowSteps WHAT LOG: displays the last line of LOG on the terminal until it is killed; ninja's
# "[12/104] …" becomes "step 12 of 104".
ShowSteps() {
  local line
  while sleep 0.2; do
    # Can be a moment late: the log is removed as soon as the command has ended.
    line=$(tail -n 1 "$2" 2>/dev/null | tr -cd '[:print:]')
    [[ ! $line =~ ^\[([0-9]+)/([0-9]+)\] ]] || line="step ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]}"
    printf '\r\e[K%.*s' "$((${COLUMNS:-80} - 1))" "$1: $line" >&2
  done
}

# RunQuietly WHAT COMMAND...: prints the command's output only if it fails; on a terminal, shows
# progress.
RunQuietly() {
  local what=$1 log steps='' failed=''
  shift
  log=$(mktemp) || Die 1 'cannot create a temporary file'
  if [[ -t 2 ]]; then
    ShowSteps "$what" "$log" &
    steps=$!
  fi
  "$@" >"$log" 2>&1 </dev/null || failed=1
  if [[ -n $steps ]]; then
    kill "$steps" 2>/dev/null
    wait "$steps" 2>/dev/null || true
    printf '\r\e[K' >&2
  fi
  if [[ -n $failed ]]; then
    cat "$log" >&2
    rm -f "$log"
    Die 1 "$what failed, see above"
  fi
  rm -f "$log"
}

# NeedPackages NAME...: installs the missing ones of these Debian packages.
NeedPackages() {
  local installed name as_root=()
  local missing=()
  command -v dpkg-query >/dev/null || {
    echo "Not a Debian system; assuming that these packages are installed: $*" >&2
    return 0
  }
  installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package} \n' "$@" 2>/dev/null) || true
  for name in "$@"; do
    [[ $installed == *"ii  $name "* ]] || missing+=("$name")
  done
  ((${#missing[@]})) || return 0
  if ((EUID != 0)); then
    command -v sudo >/dev/null || Die 1 "cannot install ${missing[*]}: neither root nor sudo"
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}" >&2
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -q
    -o DPkg::Lock::Timeout=300)
  # A failed update of one source is not fatal: the installation reports missing packages.
  "${apt[@]}" update >/dev/null 2>&1 </dev/null || true
  RunQuietly 'apt-get install' "${apt[@]}" install --no-install-recommends "${missing[@]}"
}

# IsConfigured PRESET: whether build/PRESET exists and was not copied from another checkout.
IsConfigured() {
  local tree=$source_dir/build/$1
  [[ -f $tree/build.ninja ]] &&
    grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$source_dir" "$tree/CMakeCache.txt"
}

# Configure PRESET OPTION...: configures build/PRESET.
Configure() {
  local preset=$1
  shift
  IsConfigured "$preset" || set -- --fresh "$@"
  RunQuietly "configuring build/$preset" cmake -S "$source_dir" --preset "$preset" "$@"
}

# Ninja ARGUMENT...: announces on descriptor 3 that there is something to build.
Ninja() {
  local line said=
  ninja "$@" 2>&1 | while IFS= read -r line; do
    [[ $line != '[1/'* || -n $said ]] || {
      if [[ -t 3 ]]; then printf '\r\e[KBuilding …\n'; else echo 'Building …'; fi >&3
      said=1
    }
    printf '%s\n' "$line"
  done
}

# Build PRESET TARGET...: prints nothing if everything is up to date.
Build() {
  local preset=$1
  shift
  RunQuietly "building build/$preset" Ninja -C "$source_dir/build/$preset" "$@" 3>&2
}
