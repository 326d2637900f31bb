# Values out of the shared MIME database by text search, checked with libxml2's parser; escaping and back.
. "$DEMO/lib.sh"
title 'XML: values out of the shared MIME database'
database=/usr/share/mime/packages/freedesktop.org.xml
printf '   %s: %s bytes\n' "$database" "$(stat -c %s "$database")"
# xpath PATH: what the parser finds
xpath() { xmllint --xpath "$1" "$database" 2>/dev/null; }
# inNames PATH: PATH with its {names} in whatever name space
inNames() { printf '%s' "$1" | sed "s/{\([a-z-]*\)}/*[local-name()='\1']/g"; }

tarvik xml values comment "$database" > comments
printf '   comments without a language: %s; the first three:\n' "$(wc -l < comments)"
head -3 comments | sed 's/^/     /'
xpath "$(inNames '//{comment}[not(@*)]/text()')" > parsed
check 'the same comments as the parser finds' "$(sha256sum < parsed)" "$(tarvik xml unescape --entities comments | sha256sum)"

tarvik xml attribute --all pattern "$database" > patterns
printf '   file name patterns: %s\n' "$(wc -l < patterns)"
xpath '//@pattern' | sed 's/^ *pattern="//; s/"$//' > parsed
check 'the same patterns as the parser finds' "$(sha256sum < parsed)" "$(sha256sum < patterns)"

tarvik xml elements --null mime-type "$database" > types
pdf=$(grep -z '^<mime-type type="application/pdf"' types | tr -d '\0')
printf '   the element of application/pdf: %s bytes, known as %s, in French %s\n' ${#pdf} \
    "$(tarvik xml values comment <<< "$pdf")" "$(grep 'xml:lang="fr"' <<< "$pdf" | sed 's/<[^>]*>//g; s/^ *//')"
check 'as many types as the parser counts' "$(xpath "count($(inNames '//{mime-type}'))")" "$(tr -dc '\0' < types | wc -c)"

title 'XML: escaping'
printf '   plain:     %s\n   escaped:   %s\n' "Tom & \"Jerry\" <tom@example.org>" "$(printf 'Tom & "Jerry" <tom@example.org>' | tarvik xml escape)"
{ printf '<t>'; tarvik xml escape "$database"; printf '</t>'; } > escaped.xml
xmllint --huge --xpath 'string(/t)' escaped.xml | head -c "$(stat -c %s "$database")" > back
check 'the whole database escaped is one text to the parser, the same bytes' "$(sha256sum < "$database")" "$(sha256sum < back)"
# The way back loses what callers know it to lose: line ends, and the escape of < > and ' in text that was XML already.
tr -d '\r\n' < "$database" | sed "s/&lt;/</g; s/&gt;/>/g; s/&apos;/'/g" > flat
check 'and unescaped by Tarvik it is what sed expects' "$(sha256sum < flat)" "$(tarvik xml escape "$database" | tarvik xml unescape | sha256sum)"
