#!/bin/sh
# usage: session.sh LINE...
# Types the lines into the interactive console and prints how often each of its lines
# appears, then the report.
printf '%s\n' "$@" | cvntester >session.log
status=$?
awk '!count[$0]++ { lines[++last] = $0 }
  END { for (i = 1; i <= last; ++i) print count[lines[i]], lines[i] }' session.log
cat "$(grep -aom1 '/tmp/var/log/[0-9_]*\.txt' session.log)"
exit $status
