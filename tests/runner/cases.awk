# The output of --gtest_list_tests as lines of "suite <tab> case".
{ sub(/\r$/, "") }
/^[^ ]+\.( +#.*)?$/ { suite = substr($1, 1, length($1) - 1) }
/^  [^ ]/ { print suite "\t" $1 }
