#!/bin/sh
# usage: register.sh ACCESS...
# Makes accesses to the register file of a board, "0xADDRESS 0xVALUE" to write and "0xADDRESS" to
# read, and prints what is read and what the board traces.
mkfifo keys answer
CVNSIM_TRACE=trace CVNSIM_REGISTER=register cvntester <keys >menus &
exec 3>keys 4<>answer
until [ -p register ]; do sleep 0.02; done
for access in "$@"; do
  echo "$access" >register
  echo '> answer' >register
  read -r value <&4
  echo "$value"
done
exec 3>&-
wait
cat trace
