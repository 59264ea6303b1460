#!/bin/sh
# make-language-file.sh SOURCE OUTPUT: the language file as the program reads it, each language's lines in the code page
# that its LANG line names. The source is UTF-8. Fails when a letter has no place in its page or a line is too long.
set -eu

source=$1
output=$2
temporary=$output.new
trap 'rm -f "$temporary"' EXIT

# Code page 1250 has s and t with cedilla only, not with comma below.
LC_ALL=C sed -e 's/ș/ş/g' -e 's/Ș/Ş/g' -e 's/ț/ţ/g' -e 's/Ț/Ţ/g' "$source" |
LC_ALL=C awk '
  # Lines of one page that follow each other go through one converter, so that the order stays.
  function finish() {
    if (converter != "" && close(converter) != 0) { failed = 1; exit 1 }
    converter = ""
  }
  {
    if ($1 == "LANG") page[$2] = $3
    wanted = $1 == "LANG" ? $3 : ($1 in page ? page[$1] : "1252")
    command = "iconv -f UTF-8 -t CP" wanted
    if (command != converter) finish()
    converter = command
    print | converter
  }
  END { finish(); exit failed }
' > "$temporary"

# The program reads lines in pieces of 1022 bytes.
LC_ALL=C awk 'length($0) > 1022 { print FILENAME ": line " FNR " is too long" > "/dev/stderr"; bad = 1 } END { exit bad }' \
  "$temporary"
mv "$temporary" "$output"
