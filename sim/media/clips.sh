# shellcheck shell=bash disable=SC2034  # variables are for what sources this
# Reads the list of the board's media files, `clips` next to this file. Sourced; needs Die.
clips_file=${BASH_SOURCE[0]%/*}/clips

# ClipNumbers: prints the test cases' numbers, one per line.
ClipNumbers() {
  grep -o '^[0-9]*' "$clips_file"
}

# FindClip NUMBER: sets clip_number, clip_hdr, clip_name, clip_file, clip_codec and clip_parts.
FindClip() {
  local line
  line=$(grep "^$1 " "$clips_file") || Die 2 "there is no test case $1"
  read -r clip_number clip_hdr clip_name clip_file clip_codec line <<<"$line"
  read -r -a clip_parts <<<"$line"
}
