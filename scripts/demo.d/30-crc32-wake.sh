# CRC-32 of what Debian ships, large and small, and a message enciphered and deciphered.
. "$DEMO/lib.sh"
title 'CRC-32: files, a list, standard input'
large=$(ls -S /usr/lib/*/lib*.so* /usr/lib/gcc/*/*/cc1plus 2>/dev/null | head -1)
show tarvik crc32 "$large" /usr/share/dict/words
for file in "$large" /usr/share/dict/words; do
    check "what gzip writes behind the same data ($(stat -Lc %s "$file") bytes)" \
        "$(gzip -1c "$file" | tail -c 8 | od -An -N4 -tx4 --endian=little | tr -d ' ')" "$(tarvik crc32 < "$file" | cut -c1-8)"
done
find /usr/share/mime -type f -print0 | head -z -n 500 | xargs -0 tarvik crc32 > checks
check "what perl's zlib says of $(wc -l < checks) files" \
    "$(cut -c11- checks | perl -MCompress::Raw::Zlib=crc32 -ne 'chomp; open F, "<:raw", $_ or die; local $/; printf "%08x  %s\n", crc32(scalar <F>) , $_' | sha256sum)" \
    "$(sha256sum < checks)"
check 'the list verifies' 0 "$(tarvik crc32 --check --quiet checks >/dev/null; echo $?)"
cp /usr/share/dict/words words
tarvik crc32 words > words.check
printf '\x01' | dd of=words bs=1 seek=1000 conv=notrunc 2>/dev/null
check 'one byte changed is found' 'words: FAILED' "$(tarvik crc32 --check words.check 2>/dev/null)"

title 'WAKE: a message there and back'
head -c 32 /dev/urandom > key
head -c 100001 /usr/share/dict/words > letter
tarvik wake encipher --pad --key-file=key letter > letter.wake
printf '   %s' "$(od -An -tx1 -N16 letter.wake)"; printf ' ...\n'
check 'deciphered byte for byte' "$(sha256sum < letter)" "$(tarvik wake decipher --pad --key-file=key letter.wake | sha256sum)"
check 'another key gives something else' different \
    "$(head -c 32 /dev/urandom > other; tarvik wake decipher -k other letter.wake | cmp -s - letter || echo different)"
show tarvik wake encipher --key-file=key letter
check 'without padding such a length is refused' 1 $?
