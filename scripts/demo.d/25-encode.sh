# Encodings, checked by the system's own iconv.
. "$DEMO/lib.sh"
title 'Encodings: to and from what older systems wrote'
printf 'Zürich, “déjà vu” – 20 €\n日本語の文章\n' > text
head -1 text > western

check 'MacRoman, as iconv writes it' "$(iconv -f UTF-8 -t MACINTOSH western | md5sum)" "$(tarvik encode --to=macintosh western | md5sum)"
tail -1 text > japanese
for name in shift_jis euc-jp iso-2022-jp gb18030; do
    check "$name there and back" "$(cat japanese)" "$(tarvik encode --to=$name japanese | tarvik encode --from=$name --to=utf-8)"
done
check 'EUC, as iconv writes it' "$(iconv -f UTF-8 -t EUC-JP japanese | od -tx1)" "$(tarvik encode --to=euc-jp japanese | od -tx1)"
show tarvik encode --to=us-ascii --lossy western
printf '   %s encodings are available\n' "$(tarvik encode --list | wc -l)"
