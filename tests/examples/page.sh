# The page is well-formed XML, and its table has the rows and cells that the lists promise.
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT

"$QZEXPAND" -o "$dir/page.xhtml" "$EXAMPLES/page/language.xhtml.qz"
count() { xmllint --xpath "count(//*[local-name()='$1'])" "$dir/page.xhtml"; }
echo "$(count tr) rows, $(count th) heads, $(count td) cells" | diff - <(
  echo '5 rows, 3 heads, 12 cells')
xmllint --xpath "string(//*[local-name()='p'])" "$dir/page.xhtml" | diff - <(
  echo '4 directives, of many:')
