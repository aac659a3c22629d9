# Compares the lines of a dump with those of the file S, whole lines first. Prints every differing
# column and one line per frame.
FNR == 1 { getline other < S; next }
{
  if ((getline other < S) <= 0) exit
  if ($0 == other) { print "vdec info compare frame", $0 + 0, "PASS !!!"; next }
  columns = split($0, golden, ",")
  split(other, sample, ",")
  failed = 0
  for (i = 1; i <= columns; i++) {
    if (golden[i] == sample[i] || i == 7) continue
    failed++
    print "vdec info compare fail in frame", golden[1] ", column", i, golden[i], sample[i]
  }
  if (failed) print "vdec info compare frame", golden[1], "Fail", failed, "item !!!"
  else print "vdec info compare frame", golden[1], "PASS !!!"
}
