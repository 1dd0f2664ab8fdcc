# The program that the build has made of expanded sources says what stands in them.
"$PAINT" | diff - <(echo 'Ada; and $others, brush 8: green')
