#!/usr/bin/awk -f
# What Doxygen reads of a header or a page. No line is added or removed, so that its messages name
# the right ones.
#
# Pages: fences lose the attributes that are for the test of the examples (tests/docs) and the languages
# that Doxygen does not know; code that holds a quotation mark becomes HTML, because Doxygen pairs
# quotation marks across code.
#
# Headers: a comment speaks for all declarations below it, up to the next blank line, comment or
# access specifier (except for constructors and destructors). Doxygen takes it for
# the first alone, unless the run is marked as a group.

function isDoc(line) { return line ~ /^[ ]*\/\/\/($|[^<])/ }
function endsRun(line) {
  return line ~ /^[ ]*($|\/\/|#|\}|public:|protected:|private:|using |template|(virtual )?~)/
}
function opensType(line) {
  return line ~ /^[ ]*(class|struct|enum|union|namespace|template|extern|using|#)/
}
function isConstructor(line) { return line ~ /^[ ]*(explicit )?~?[A-Za-z_0-9]+\(/ }
function braces(line) {
  return gsub(/[{]/, "{", line) - gsub(/[}]/, "}", line)
}

{ lines[NR] = $0 }

END {
  if (FILENAME ~ /\.h$/) GroupRuns()
  else CleanPage()
  for (i = 1; i <= NR; ++i) print before[i] lines[i]
}

# Behind a line, or in front of the next where a comment would swallow it.
function MarkAfter(i, mark) {
  if (lines[i] ~ /\/\/[^@]*$/) before[i + 1] = before[i + 1] mark
  else lines[i] = lines[i] mark
}

function GroupRuns(    first, start, end, statements, depth) {
  for (first = 1; first <= NR; ++first) {
    gsub(/ p[.] /, " p.\\ ", lines[first])  # the point ends no sentence
    gsub(/ pp[.] /, " pp.\\ ", lines[first])
    if (!isDoc(lines[first]) || (first > 1 && isDoc(lines[first - 1]))) continue
    for (start = first; start <= NR && isDoc(lines[start]); ++start) {}
    if (start > NR || endsRun(lines[start]) || opensType(lines[start])) continue
    if (isConstructor(lines[start])) continue
    statements = depth = 0
    for (end = start; end <= NR && (depth > 0 || !endsRun(lines[end])); ++end) {
      depth += braces(lines[end])
      if (depth == 0 && lines[end] ~ /[;}]([ ]*\/\/.*)?$/) ++statements
      if (lines[end] ~ /^[^(),]*,[^()]*;/) ++statements
    }
    if (statements < 2) continue
    MarkAfter(first - 1, "/**@{*/")
    MarkAfter(end - 1, "/**@}*/")
  }
}

function escaped(text) {
  gsub(/&/, "\\&amp;", text)
  gsub(/</, "\\&lt;", text)
  gsub(/"/, "\\&quot;", text)
  return text
}

# Contents pages say which pages belong to a part, in which order: the first link to each of these
# makes it a page below. Pages get names of their own for that.
function isContents(page) { return page ~ /^docs\/(.*\/README|program)\.md$/ }
function pageName(page) {
  sub(/\.md$/, "", page)
  gsub(/[^A-Za-z0-9]/, "_", page)
  return "page_" page
}
function PlacePages(page, line,    folder, link, result) {
  folder = page
  sub(/[^\/]*$/, "", folder)
  while (match(line, /\[[^\]]*\]\([^).][^):]*\.md\)/)) {
    split(substr(line, RSTART + 1, RLENGTH - 2), link, /\]\(/)
    result = result substr(line, 1, RSTART - 1) \
             (placed[link[2]]++ ? substr(line, RSTART, RLENGTH) \
                                : "\\subpage " pageName(folder link[2]) " \"" link[1] "\"")
    line = substr(line, RSTART + RLENGTH)
  }
  return result line
}

# The main page has a name of Doxygen's own.
function LinkMainPage(line,    link) {
  if (!match(line, /\[[^\]]*\]\([.\/]*docs\/README\.md\)/)) return line
  split(substr(line, RSTART + 1, RLENGTH - 2), link, /\]\(/)
  return substr(line, 1, RSTART - 1) "\\ref index \"" link[1] "\"" substr(line, RSTART + RLENGTH)
}

function CleanPage(    i, fenced, rest, span, at, page) {
  page = FILENAME
  sub("^" ENVIRON["PWD"] "/", "", page)
  lines[1] = lines[1] " {#" pageName(page) "}"
  for (i = 1; i <= NR; ++i) {
    lines[i] = LinkMainPage(lines[i])
    if (isContents(page)) lines[i] = PlacePages(page, lines[i])
    if (lines[i] ~ /^```/) {
      fenced = !fenced
      sub(/ .*/, "", lines[i])
      if (fenced && lines[i] !~ /cpp|python/) lines[i] = "```{.unparsed}"
    }
    if (fenced) continue
    for (rest = lines[i]; match(rest, /`[^`]*"[^`]*`/); rest = substr(rest, RSTART + RLENGTH)) {
      span = substr(rest, RSTART, RLENGTH)
      at = index(lines[i], span)
      lines[i] = substr(lines[i], 1, at - 1) "<code>" escaped(substr(span, 2, length(span) - 2)) \
                 "</code>" substr(lines[i], at + length(span))
    }
  }
}
