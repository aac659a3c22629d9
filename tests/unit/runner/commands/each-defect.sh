#!/bin/sh
# usage: each-defect.sh CASE STAGE COLUMN [OPTION]...
# Verifies dumps of a test case with one defect of each kind in a stage, made with the OPTIONs, and
# prints the stages that fail and the frame events.
case=$1 stage=$2 column=$3
shift 3
for defect in "change:20:$column" "change:0:$column=7" drop:20 drop:0 skip:20 repeat:20 copy:20 \
  freeze:20:4 insert:20 reorder:20 corrupt:20 garble:20:3 late:20:40 early:20:40 jitter:20:15 \
  cut:60 truncate:60 nothing; do
  echo "-- $defect"
  if cvndumpgen --case "$case" --home home --dump-dir drivers --frames 150 "$@" \
    --defect "$stage:$defect"; then
    cvntester --verify "$case" --dump home/dump_tmp --golden home/golden_data/playback \
      --events events --color never | grep -aE '^(FAIL|ERROR|BLOCKED)'
    cat events
  fi
done
