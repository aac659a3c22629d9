# shellcheck shell=bash disable=SC2034,SC2154  # variables are shared with what sources this
# The options that run.sh and board-run have in common. Sourced; needs Die and `usage`.
board=
scenario=
os=android
fresh=0
keep_on=0

UsageError() {
  Die 2 "$1; $usage"
}

# TakeBoardOption WORD...: parses the first option; `taken` is its number of words.
TakeBoardOption() {
  taken=2
  case $1 in
    --board | --scenario | --os) (($# > 1)) || UsageError "$1 requires a value" ;;
  esac
  case $1 in
    --board) board=$2 ;;
    --scenario) scenario=$2 ;;
    --os) os=$2 ;;
    --fresh) fresh=1 taken=1 ;;
    --keep-on) keep_on=1 taken=1 ;;
    *) UsageError "unknown option $1" ;;
  esac
}

# Rejects invalid values; makes `board` and `scenario` absolute.
CheckBoardOptions() {
  [[ -n $board ]] || UsageError '--board requires a directory'
  [[ $os == android || $os == sorvex || $os == pelxos ]] ||
    UsageError "invalid --os '$os': expected android, sorvex or pelxos"
  [[ -z $scenario || -f $scenario && -r $scenario ]] || Die 2 "cannot read the scenario $scenario"
  [[ $board == /* ]] || board=$PWD/$board
  [[ -z $scenario || $scenario == /* ]] || scenario=$PWD/$scenario
}
