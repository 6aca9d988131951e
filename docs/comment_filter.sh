#!/bin/sh
# Doxygen input filter: the public headers comment each declaration with plain // lines
# above it and members with // after them; this hands both to Doxygen as its own comments.
# A trailing comment that starts like a Markdown list marker (". ", "- ") is left alone.
exec sed -e 's|^\([[:space:]]*\)// |\1/// |' -e 's|^\([[:space:]]*\)//$|\1///|' \
         -e 's|\([;,{]\)\([[:space:]]*\)// \([^.*+-]\)|\1\2///< \3|' "$1"
