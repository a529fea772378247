#!/usr/bin/env bash
# scripts/man_pages.sh PROGRAM FOLDER: man pages of the program and of each of its commands, from their
# help. Needs help2man.
set -euo pipefail
program=$1 folder=$2
mkdir -p "$folder"
version=$("$program" --version | cut -d' ' -f2)
commands=$("$program" --help | sed -n '/^Subcommands:/,$ s/^  \([a-z]\+\) .*/\1/p')

page() {  # page NAME SUMMARY COMMAND...: what stands in help becomes a page
  local name=$1 summary=$2
  shift 2
  help2man --no-info --section=1 --name="$summary" --version-string="$version" \
    --source="geomath $version" --manual="User Commands" --output="$folder/$name.1" "$*"
  sed -i "/^\.SH NAME/{n;s/^geomath [^\\\\]*/$name /}" "$folder/$name.1"  # as man looks for it
}

page geomath "geodetic conversions for surveying and mapping" "$program"
for command in $commands; do
  help=$("$program" "$command" --help)
  summary=${help%%$'\n'*}
  page "geomath-$command" "${summary,}" "$program" "$command"
done
