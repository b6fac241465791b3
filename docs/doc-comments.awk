# Doxygen's input filter: the headers' plain // comments made into the
# documentation they are, so the headers keep one comment style.
#  - A comment block right above a declaration, at namespace or class level
#    (not inside a function body), documents it. A comment that speaks for a
#    run of declarations stands between a line //@{ and the run, which a line
#    //@} ends (a member group: doxygen gives the comment to every member).
#  - A comment after a member on its own line documents that member.
#  - The block that opens a file describes the file.
#  - Blocks followed by a blank line or a preprocessor line other than a
#    macro definition (section titles, notes) stay plain comments.
# No line is added or removed, so warnings point at the header's own lines.

function isGroupMark(s) { return s ~ /^[ \t]*\/\/@[{}][ \t]*$/ }
function isComment(s) { return s ~ /^[ \t]*\/\// && !isGroupMark(s) }
function isBlank(s) { return s ~ /^[ \t]*$/ }
function isDirective(s) { return (s ~ /^[ \t]*#/ && s !~ /^#define/) || isGroupMark(s) }

{ line[NR] = $0 }

END {
  # Brace depth before each line, and whether every brace open there is a
  # namespace, class, struct, union or enum (strings and character literals in
  # headers hold no braces).
  depth = 0
  for (i = 1; i <= NR; i++) {

    top[i] = 1
    for (k = 1; k <= depth; k++) if (!scope[k]) top[i] = 0
    if (isComment(line[i])) continue
    code = line[i]
    sub(/\/\/.*/, "", code)
    isScope = code ~ /(^|[^A-Za-z_])(namespace|class|struct|union|enum)([^A-Za-z_]|$)/ && code !~ /\)/
    for (c = 1; c <= length(code); c++) {
      ch = substr(code, c, 1)
      if (ch == "{") scope[++depth] = isScope
      else if (ch == "}" && depth > 0) depth--
    }
  }


  seenCode = 0
  for (i = 1; i <= NR; i++) {
    if (isGroupMark(line[i])) sub(/\/\/@/, "///@", line[i])
    if (!isComment(line[i])) {
      if (!isBlank(line[i])) seenCode = 1
      if (top[i]) {
        # "int x;  // what x is" documents x.
        if (sub(/[;,][ \t]+\/\/ /, "&/< ", line[i])) sub(/\/\/ \/< /, "///< ", line[i])
      }
      continue
    }
    first = i
    while (i < NR && isComment(line[i + 1])) i++
    last = i
    next_ = last + 1
    if (!seenCode && (next_ > NR || isBlank(line[next_]) || line[next_] ~ /^#pragma once/)) {
      line[last] = line[last] " @file"
      doc = 1
    } else {
      doc = next_ <= NR && !isBlank(line[next_]) && !isDirective(line[next_]) && top[next_]
    }
    if (!doc) continue
    for (k = first; k <= last; k++) sub(/\/\//, "///", line[k])
  }
  for (i = 1; i <= NR; i++) print line[i]
}
