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
function PlacePages(folder, line,    link, result) {
  while (match(line, /\[[^\]]*\]\([^).][^):]*\.md\)/)) {
    split(substr(line, RSTART + 1, RLENGTH - 2), link, /\]\(/)
    result = result substr(line, 1, RSTART - 1) \
             (placed[link[2]]++ ? substr(line, RSTART, RLENGTH) \
                                : "\\subpage " pageName(folder link[2]) " \"" link[1] "\"")
    line = substr(line, RSTART + RLENGTH)
  }
  return result line
}

# Links to pages go by their names, which not every version of Doxygen finds from the names of files.
# The main page has one of Doxygen's own.
function LinkPages(folder, line,    link, target, result) {
  while (match(line, /\[[^\]]*\]\([^):]*\.md(#[^)]*)?\)/)) {
    split(substr(line, RSTART + 1, RLENGTH - 2), link, /\]\(/)
    target = folder link[2]
    sub(/#.*/, "", target)
    while (sub(/[^\/]+\/\.\.\//, "", target)) {}
    target = target == "docs/README.md" ? "index" : pageName(target)
    result = result substr(line, 1, RSTART - 1) "\\ref " target " \"" link[1] "\""
    line = substr(line, RSTART + RLENGTH)
  }
  return result line
}

# The names of the classes in the library's namespace, which Doxygen does not look for in a page.
function ReadClassNames(    headers, count, i, line, inside, words) {
  count = split(ENVIRON["GEOMATH_PUBLIC_HEADERS"], headers, " ")
  for (i = 1; i <= count; ++i) {
    inside = 0
    while ((getline line < headers[i]) > 0) {
      if (line ~ /^namespace zel_cs::geomath \{/) inside = 1
      if (line ~ /^}  \/\/ namespace/) inside = 0
      if (!inside || line !~ /^(class|struct) .*\{$/) continue
      sub(/^(class|struct) (GEOMATH_API )?/, "", line)
      split(line, words, /[ :{]/)
      isClass[words[1]] = 1
    }
    close(headers[i])
  }
}

# Code spans: what stands between every other backtick of a line.
function CodeSpans(line,    parts, count, i, result) {
  count = split(line, parts, "`")
  if (count % 2 == 0) return line
  for (i = 1; i <= count; ++i) {
    if (i % 2 == 1) result = result parts[i]
    else if (isClass[parts[i]]) result = result "\\ref zel_cs::geomath::" parts[i] " \"" parts[i] "\""
    else if (parts[i] ~ /"/) result = result "<code>" escaped(parts[i]) "</code>"
    else result = result "`" parts[i] "`"
  }
  return result
}

function CleanPage(    i, fenced, page, folder) {
  page = FILENAME
  sub("^" ENVIRON["PWD"] "/", "", page)
  folder = page
  sub(/[^\/]*$/, "", folder)
  if (page != "docs/python.md") ReadClassNames()  # its classes are others
  lines[1] = lines[1] " {#" pageName(page) "}"
  for (i = 1; i <= NR; ++i) {
    if (lines[i] ~ /^```/) {
      fenced = !fenced
      sub(/ .*/, "", lines[i])
      if (fenced && lines[i] !~ /cpp|python/) lines[i] = "```{.unparsed}"
    }
    if (fenced || lines[i] ~ /^```/) continue
    if (lines[i] ~ /^!\[/) sub(/\]\(.*\//, "](", lines[i])  # pictures are found by IMAGE_PATH
    gsub(/\[`/, "[", lines[i])  # code is not understood in the text of a link
    gsub(/`\]\(/, "](", lines[i])
    if (isContents(page)) lines[i] = PlacePages(folder, lines[i])
    lines[i] = CodeSpans(LinkPages(folder, lines[i]))
  }
}
