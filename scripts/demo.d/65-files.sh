# Labels, both forks of a file through a copy, and companions that any other tool can read.
. "$DEMO/lib.sh"
title 'Labels, types and forks, kept beside the file in the AppleDouble format'
cp /etc/services Services
show tarvik file label --set=red Services
show tarvik file type --type=TEXT --creator=ttxt Services
head -c 100000 /bin/sh | tarvik file put --resource Services
show tarvik file info Services
check 'the companion is AppleDouble to other programs' 'AppleDouble encoded Macintosh file' "$(file -b ._Services | cut -d, -f1)"
check 'the label is in its Finder information' 'TEXTttxt..0c' "$(perl -0777 -ne 'print "$1..", unpack("H2", $2) if /(TEXTttxt).(.)/s' ._Services)"

title 'A copy has both forks, the label and the type'
mkdir -p backup
show tarvik copy Services backup
show tarvik file forks Services backup/Services
check 'data as cmp sees them' same "$(cmp -s Services backup/Services && echo same)"
check 'resources byte for byte' "$(head -c 100000 /bin/sh | sha256sum)" "$(tarvik file cat --resource backup/Services | sha256sum)"
show tarvik file label backup/Services
check 'the label came along' red "$(tarvik file label backup/Services | cut -d' ' -f1)"

title 'Whole folders, with their labels and what is in them'
mkdir -p Projects/Old
cp /etc/hosts Projects/Old
ln -s Old/hosts Projects/link
tarvik file label --set=green Projects/Old
show tarvik copy Projects backup
check 'as diff sees them' '' "$(diff -r --no-dereference --exclude='._*' Projects backup/Projects)"
show tarvik file label backup/Projects/Old

title 'What stands in a companion'\''s place and is none'
printf 'somebody else'\''s' > ._Services
show tarvik file label --set=blue Services
check 'what is no companion is left alone' "somebody else's" "$(cat ._Services)"
