# The string additions on Debian's own texts.
. "$DEMO/lib.sh"
title 'Text: lines, numbers, codes, replacing and filling'
licence=/usr/share/common-licenses/GPL-2
[ -e $licence ] || licence=$DEMO/../../README.md
sed 's/$/\r/' "$licence" > dos.txt
tarvik text lines dos.txt > unix.txt
check 'CR LF lines become LF lines again' "$(md5sum < "$licence")" "$(md5sum < unix.txt)"
show tarvik text replace --count the THE "$licence"
check 'as many as grep finds' "$(grep -o the "$licence" | wc -l)" "$(tarvik text replace --count the THE "$licence")"
check 'the text that sed makes' "$(sed 's/the/THE/g' "$licence" | md5sum)" "$(tarvik text replace the THE "$licence" | md5sum)"
check 'the digits of od become the bytes again' "$(head -c 4000 "$licence" | md5sum)" "$(tarvik text hex "$(head -c 4000 "$licence" | od -An -v -tx1 | tr -d ' \n')" | md5sum)"
show tarvik text ostype TEXT appl 0x3F3F3F3F
show tarvik text int 'page 12 of 40' 99999999999
for entry in Introduction Usage Index; do printf '   %s\n' "$(tarvik text pad --length=30 --fill=' .' "$entry")"; done
