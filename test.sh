#!/bin/bash
# Builds and runs all tests; first installs what is missing.
set -euo pipefail
usage='usage: test.sh [--quick|--arch NAME|--fuzz [SECONDS]|--analyse|--approve|--farm|--packages|--kills N|--mutate [N [SEED]]|--help] [-R REGEX]'
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/scripts/common.sh"
. "$here/scripts/cross.sh"

Help() {
  cat <<TEXT
$usage
  --quick    skip the build with sanitizers
  --approve  update the expected texts in tests/expected to the present output
  --fuzz [SECONDS]
             fuzz all parsers, SECONDS each (default 60), after each fuzzer has found the faults
             planted for it
  --arch NAME
             run the unit tests built for aarch64 or armhf under an emulator, and read a recording
             made there with this machine's programs; can be repeated
  --analyse  run clang-tidy and cppcheck on the whole tree, and the unit tests under valgrind
  --farm     run shards, crashes and power cuts in a LAVA lab and through labgrid, with simulated
             boards; installs their packages and requires root
  --packages make all packages, twice; check them with lintian, and start the program of each in a
             root with only what the package depends on; requires root
  --kills N  only run the test that kills an unattended run N times at random moments and resumes
             it (6 times in an ordinary run)
  --mutate [N [SEED]]
             mutation testing: put N (default 50) single faults into a copy of the sources, one at
             a time, and list those that no unit test detects; SEED selects the faults
  -R REGEX   only tests whose name matches
TEXT
}

passed=0
failed=0
skipped=0

# Add JUNIT_FILE: adds the file's totals to the overall totals.
Add() {
  local name value tests=0 failures=0 skips=0
  while IFS='="' read -r name _ value _; do
    case $name in
      tests) tests=$value ;;
      failures) failures=$value ;;
      skipped) skips=$value ;;
    esac
  done < <(sed -n '/<testsuite /,/>/p' "$1" | grep -oE '(tests|failures|skipped)="[0-9]+"')
  passed=$((passed + tests - failures - skips))
  failed=$((failed + failures))
  skipped=$((skipped + skips))
}

# BuildTests PRESET: builds the entire tree of the preset, including tests.
BuildTests() {
  Configure "$1" -DCVN_BUILD_TESTS=ON
  Build "$1"
}

# TellSkipped JUNIT_FILE: prints which tests were skipped and why.
TellSkipped() {
  awk -F'"' '/<testcase / { name = $2 }
    /: Skipped$/ { getline; print "Skipped " name ": " $0 }' "$1"
}

# RunTests PRESET: runs CTest, with two tests per core because many wait. A run without totals
# counts as a failure.
RunTests() {
  local results=$here/build/$1/results.xml
  echo "== $1"
  rm -f "$results"
  ctest --preset "$1" -j$(($(nproc) * 2)) --no-tests=error --output-junit "$results" "${selection[@]}" </dev/null ||
    ctest_failed=1
  if [[ -f $results ]]; then
    Add "$results"
    TellSkipped "$results"
  else
    failed=$((failed + 1))
  fi
}

# Check WHAT COMMAND...: one more test, outside CTest.
Check() {
  local what=$1
  shift
  if "$@"; then
    echo "$what: passed"
    passed=$((passed + 1))
  else
    echo "$what: FAILED"
    failed=$((failed + 1))
  fi
}

# Total: prints the totals; exit status 0 if everything passed.
Total() {
  echo "Total: $passed passed, $failed failed, $skipped skipped"
  ((!failed && !ctest_failed))
}

IsFormatted() {
  find hal muro record sim tests tools bench \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \) -print0 |
    xargs -0 clang-format --dry-run -Werror
}

ScriptsAreClean() {
  shellcheck -x -P SCRIPTDIR run.sh test.sh .ci/run scripts/*.sh sim/board/board-{run,power,login} contrib/*/*.sh \
    packaging/cvnboard tests/packages/check-packages \
    sim/board/*.sh sim/board/power-up sim/board/standins/{standin,cat} sim/media/make-* sim/media/*.sh \
    sim/eyes/look contrib/eyes/* contrib/yocto/files/run-ptest tests/unit/record/at-desk
}

TidyIsClean() {
  run-clang-tidy -quiet -p build/debug -j2 "^$here/(?!build/)" >build/clang-tidy.txt 2>&1 &&
    return
  cat build/clang-tidy.txt
  return 1
}

CppcheckIsClean() {
  cppcheck -q -j2 --project=build/debug/compile_commands.json --library=googletest \
    --enable=warning,performance,portability --suppressions-list=.cppcheck --error-exitcode=1
}

# TestAll: the requested builds, their tests, and the checks of formatting and scripts.
TestAll() {
  local preset
  for preset in "${presets[@]}"; do BuildTests "$preset"; done
  for preset in "${presets[@]}"; do RunTests "$preset"; done
  echo '== checks'
  Check 'formatting (clang-format)' IsFormatted
  Check 'scripts (shellcheck)' ScriptsAreClean
  Total
}

# TestForArm: runs a board's unit tests on the emulator. Tests that the emulator cannot run are
# reported as skipped.
TestForArm() {
  local preset
  Configure release -DCVN_BUILD_TESTS=ON
  Build release recording hal_session
  for preset in "${arm_presets[@]}"; do
    NeedTarget "$preset"
    BuildTests "$preset"
    RunTests "$preset"
    Check "recordings from $preset at the desk" tests/unit/record/at-desk "build/$preset" build/release
  done
  Total
}

# Analyse: checks that take too long for every run.
Analyse() {
  NeedPackages "${analysis_packages[@]}"
  BuildTests debug
  BuildTests valgrind
  selection+=(-L unit)
  RunTests valgrind
  echo '== analysis'
  Check 'sources (cppcheck)' CppcheckIsClean
  Check 'sources (clang-tidy)' TidyIsClean
  Total
}

# Approve: tests write the expected texts instead of comparing them.
Approve() {
  BuildTests release
  CVN_APPROVE=1 ctest --preset release -j2 --no-tests=error -L 'e2e|unit' -LE long "${selection[@]}" </dev/null
  echo 'Review the changes: git diff tests/expected'
}

# FindsPlanted FUZZER NAME: exits unless the fuzzer finds, from its corpus and in 10 s each, the
# faults that are planted where only parsed text leads.
FindsPlanted() {
  local fault scratch=build/fuzz/scratch
  while IFS= read -r fault; do
    rm -rf "$scratch"
    mkdir -p "$scratch"  # the fuzzer writes to the first directory
    if CVN_PLANT=$fault "$1" -max_total_time=10 -max_len=$fuzz_length \
      -artifact_prefix=build/fuzz/planted- "$scratch" "tests/fuzz/corpus/$2" \
      >build/fuzz/planted.txt 2>&1 ||
      ! grep -qF "$fault" build/fuzz/planted.txt; then
      Die 1 "fuzz_$2 does not find the planted fault '$fault', see build/fuzz/planted.txt"
    fi
  done < <(sed -n 's/.*fuzz::Plant("\([^"]*\)".*/\1/p' "tests/fuzz/fuzz_$2.cpp")
}

# Fuzz: findings are kept in build/fuzz/findings; a finding ends the run.
Fuzz() {
  local fuzzer name
  Configure fuzz
  Build fuzz fuzzers
  mkdir -p build/fuzz/findings
  for fuzzer in build/fuzz/bin/fuzz_*; do
    name=${fuzzer##*/fuzz_}
    mkdir -p "build/fuzz/corpus/$name"
    echo "== fuzzing $name, $fuzz_seconds s"
    FindsPlanted "$fuzzer" "$name"
    RunQuietly "fuzzing $name" "$fuzzer" -max_total_time="$fuzz_seconds" -timeout=10 -max_len=$fuzz_length \
      -artifact_prefix="build/fuzz/findings/$name-" "build/fuzz/corpus/$name" "tests/fuzz/corpus/$name"
  done
  echo "== fuzzing result directories"
  RunQuietly 'fuzzing result directories' env CVN_EXAMPLES=$((fuzz_seconds * 20)) \
    /usr/bin/python3 tests/tools/report/read_test.py Fuzz
  echo 'Nothing found'
}

# KillRuns: not under CTest, whose time limit would end a run with many kills.
KillRuns() {
  BuildTests release
  CVN_KILLS=$kills build/release/bin/e2e_test --gtest_filter='KillsTest.*' </dev/null
}

# Farm: the labs and their tests. LAVA and labgrid are Debian's, and so is their Python interpreter.
Farm() {
  local lab
  if ! unshare --mount --net --pid --fork true 2>/dev/null; then
    echo 'Skipped: the labs require namespaces (unshare)'
    return 77
  fi
  NeedPackages "${labgrid_packages[@]}" "${lava_packages[@]}"
  IsConfigured release || Configure release -DCVN_BUILD_TESTS=OFF
  Build release simulated_board
  lab=$(mktemp -d)
  chmod 755 "$lab" # PostgreSQL runs as another user
  Check 'labgrid' contrib/labgrid/lab.sh "$lab/labgrid" /usr/bin/python3 tests/farm/labgrid_test.py
  Check 'LAVA' contrib/lava/lab.sh "$lab/lava" /usr/bin/python3 tests/farm/lava_test.py
  ((failed)) || rm -rf "$lab"
  Total
}

# Packages: makes packages, inspects and starts them, makes them again elsewhere and compares.
Packages() {
  local scratch
  NeedPackages lintian qemu-user
  scratch=$(mktemp -d)
  scripts/package.sh --output "$scratch/packages"
  Check 'packages' tests/packages/check-packages "$scratch/packages" "$scratch/checks" amd64 arm64 armhf
  ((failed)) || rm -rf "$scratch"
  Total
}

# Mutate: measures which faults the unit tests find.
Mutate() {
  scripts/mutate.py "$faults" --seed "$seed"
}

# Choose TASK: selects a task in place of the default one.
Choose() {
  [[ $task == TestAll || $task == "$1" ]] || Die 2 "one task at a time; $usage"
  task=$1
}

OpenClosedDescriptors
presets=(release debug)
arm_presets=()
fuzz_seconds=60
fuzz_length=16384
kills=6
faults=50
seed=1
task=TestAll
ctest_failed=0
selection=()
while (($#)); do
  case $1 in
    --help)
      Help
      exit 0
      ;;
    --quick) presets=(release) ;;
    --approve) Choose Approve ;;
    --analyse) Choose Analyse ;;
    --farm) Choose Farm ;;
    --packages) Choose Packages ;;
    --fuzz)
      Choose Fuzz
      if [[ ${2-} =~ ^[1-9][0-9]*$ ]]; then
        fuzz_seconds=$2
        shift
      fi
      ;;
    --mutate)
      Choose Mutate
      if [[ ${2-} =~ ^[1-9][0-9]*$ ]]; then
        faults=$2
        shift
        if [[ ${2-} =~ ^[0-9]+$ ]]; then
          seed=$2
          shift
        fi
      fi
      ;;
    --kills)
      [[ ${2-} =~ ^[1-9][0-9]*$ ]] || Die 2 "--kills requires a number; $usage"
      Choose KillRuns
      kills=$2
      shift
      ;;
    --arch)
      [[ -n ${2-} && -n ${cross_packages[$2]-} ]] || Die 2 "--arch requires aarch64 or armhf; $usage"
      Choose TestForArm
      arm_presets+=("$2")
      shift
      ;;
    -R)
      (($# > 1)) || Die 2 "-R requires a value; $usage"
      selection=(-R "$2")
      shift
      ;;
    *) Die 2 "unknown option $1; $usage" ;;
  esac
  shift
done

NeedPackages "${run_packages[@]}" "${test_packages[@]}"
# Not every machine can have a browser. The tests that need one are then skipped.
(NeedPackages "${browser_packages[@]}") || echo 'No browser: skipping the tests of the pages' >&2
cd "$here"
"$task"
