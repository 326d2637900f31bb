# Digests, a secret under a password, and DES: each result checked by another program.
. "$DEMO/lib.sh"
title 'Digests: the lists of md5sum and sha1sum, both ways'
cp /usr/share/dict/words words 2>/dev/null || seq 100000 > words
printf 'two words\n' > 'a name with  blanks'
show tarvik digest words 'a name with  blanks'
tarvik digest words 'a name with  blanks' > ours
check 'sha1sum verifies our list' 'words: OK
a name with  blanks: OK' "$(sha1sum --check ours)"
md5sum words 'a name with  blanks' > theirs
check 'we verify the list of md5sum' "$(md5sum --check theirs)" "$(tarvik digest --check theirs)"
printf 'x' >> words
check 'a changed file is found' 'words: FAILED
a name with  blanks: OK' "$(tarvik digest --check ours 2>/dev/null)"

title 'A secret under a password'
printf 'meet me at noon' > message
export DEMO_PASSWORD='correct horse'
tarvik cipher encrypt --password-env=DEMO_PASSWORD message > secret
printf '   %s\n' "$(cat secret)"
check 'the password brings it back' 'meet me at noon' "$(tarvik cipher decrypt --password-env=DEMO_PASSWORD secret)"
read -r _ vector digits < secret
key=$(openssl kdf -keylen 32 -kdfopt digest:SHA1 -kdfopt "pass:$DEMO_PASSWORD" -kdfopt salt:bramWick -kdfopt iter:1000 \
    PBKDF2 | tr -d :)
check 'so does openssl, with the key derived its own way' 'meet me at noon' \
    "$(printf '%s' "$digits" | perl -e 'print pack "H*", <STDIN>' | openssl enc -d -aes-256-cbc -K "$key" -iv "$vector")"
if DEMO_PASSWORD=wrong tarvik cipher decrypt --password-env=DEMO_PASSWORD secret > wrong 2> reason; then
    check 'a wrong password gives nothing of the message' no "$(grep -q noon wrong && echo yes || echo no)"
else
    check 'a wrong password is an error' 'tarvik cipher' "$(tail -1 reason | cut -c1-13)"
fi

title 'DES blocks, in the bit order of the C library'
printf '12345678' > key
printf 'twelve bytes' > plain
tarvik des encrypt -k key plain > des
printf '   %s\n' "$(od -An -tx1 des | tr -d '\n')"
reversed() { perl -e 'binmode STDIN; binmode STDOUT; local $/; print pack "b*", unpack "B*", <STDIN>'; }
check 'openssl reads it, once the bits of every byte are reversed' 'twelve bytes' \
    "$(reversed < des | openssl enc -d -des-ecb -nopad -provider legacy -provider default \
        -K "$(reversed < key | od -An -tx1 | tr -d ' \n')" | reversed | tr -d '\0')"
check 'and so do we' 'twelve bytes' "$(tarvik des decrypt -k key --strip des)"
