# Text in UTF-8 to code points and back, over a large file of many scripts: the translations in the shared MIME database.
. "$DEMO/lib.sh"
title 'UTF-8: to code points and back'
show tarvik utf8 decode --text='Größe 10 €, 漢字 😀'
show tarvik utf8 encode U+48 U+69 U+20 U+20AC U+A
text=/usr/share/mime/packages/freedesktop.org.xml
printf '   %s: %s bytes\n' "$text" "$(stat -c %s "$text")"
check 'as many characters as wc counts' "$(wc -m < "$text")" "$(tarvik utf8 decode --count "$text")"
check 'the same code points as iconv gives' \
    "$(iconv -f UTF-8 -t UTF-32LE "$text" | od -An -v -tx4 -w4 | sha256sum)" \
    "$(tarvik utf8 decode "$text" | tr ' ' '\n' | sed 's/U+/0000/; s/^0*\(........\)$/\1/; s/^/ /' | tr A-F a-f | sha256sum)"
tarvik utf8 decode "$text" | tarvik utf8 encode > back
check 'and back, byte for byte' "$(sha256sum < "$text")" "$(sha256sum < back)"

title 'Versions'
show tarvik version compare 10.4.10 10.4.9
check 'components are numbers, as sort -V has it' "$(printf '10.4.10\n10.4.9\n' | sort -V | tail -1)" \
    "$(tarvik version compare --test=gt 10.4.10 10.4.9 && echo 10.4.10)"
