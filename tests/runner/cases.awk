# The output of --gtest_list_tests as lines of "group <tab> suite.case": so many suites as `together` says share a process, the group, which has
# the name of the first. Those that wait in real time, and those of a fresh process, have one each.
{ sub(/\r$/, "") }
/^[^ ]+\.( +#.*)?$/ {
  suite = substr($1, 1, length($1) - 1)
  if (suite ~ /RealTime|FreshProcess/) group = suite
  else if (count++ % together == 0) group = shared = suite
  else group = shared
}
/^  [^ ]/ { print group "\t" suite "." $1 }
