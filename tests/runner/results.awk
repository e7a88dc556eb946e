# The cases of a suite and then GoogleTest's XML report of them, as lines of "passed, failed or skipped <tab> case <tab>
# reason". A case that the report does not hold has failed; `ending` says why.

function attribute(name) {
  if (!match($0, " " name "=\"[^\"]*\"")) return ""
  return substr($0, RSTART + length(name) + 3, RLENGTH - length(name) - 4)
}

function plain(text) {
  sub(/^[^ ]*:[0-9]*&#x0A;/, "", text)  # where it stands
  gsub(/&#x0A;/, " ", text)
  gsub(/&quot;/, "\"", text)
  gsub(/&apos;/, "'", text)
  gsub(/&lt;/, "<", text)
  gsub(/&gt;/, ">", text)
  gsub(/&amp;/, "\\&", text)
  return text
}

NR == FNR { expected[$0]; order[NR] = $0; next }

/^ *<testcase / {
  test = attribute("classname") "." attribute("name")
  result = attribute("result")
  verdict[test] = result == "completed" ? "passed" : "skipped"
  reason[test] = result == "suppressed" ? "disabled" : ""
}
/^ *<skipped / { reason[test] = plain(attribute("message")) }
/^ *<failure / {
  verdict[test] = "failed"
  if (reason[test] == "") reason[test] = plain(attribute("message"))
}

END {
  for (i = 1; i in order; i++) {
    test = order[i]
    if (test in verdict) print verdict[test] "\t" test "\t" reason[test]
    else print "failed\t" test "\t" ending
  }
}
