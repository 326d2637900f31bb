# An alias finds its file again after a rename and a move; a tree lists packages as one entry.
. "$DEMO/lib.sh"
title 'Aliases: renamed, moved, its folder renamed, and found again'
mkdir -p Work/2026 Archive
cp /etc/services Work/2026/report.txt
show tarvik alias make Work/2026/report.txt report.alias
mv Work/2026/report.txt 'Archive/annual report.txt'
show mv Archive Museum
show tarvik alias resolve --update report.alias
check 'the same file, by inode' "$(stat -c %i 'Museum/annual report.txt')" "$(stat -c %i "$(tarvik alias resolve report.alias)")"
rm 'Museum/annual report.txt'
check 'a deleted file is not found' 1 "$(tarvik alias resolve report.alias 2>/dev/null; echo $?)"
ln -s hosts link
ln -s /etc/hosts hosts
show tarvik alias show link
check 'as readlink has it' "link -> $(readlink -f link)" "$(tarvik alias show link)"

title 'Trees: files, packages as one, sizes'
mkdir -p Tree/Ink.app/Resources Tree/Letters
echo binary > Tree/Ink.app/Ink
cp /etc/hosts Tree/Letters/to-anna
show tarvik tree --sizes Tree
check 'a package is one entry' Ink.app "$(tarvik tree Tree | grep '^Ink')"
folder=/usr/share/perl
check "$folder lists as many files as find" "$(find $folder -not -type d -not -name '.*' | wc -l)" "$(tarvik tree $folder | wc -l)"
check 'and their sizes add up' "$(find $folder -not -xtype d -exec stat -L -c %s {} + | awk '{ n += $1 } END { print n }')" "$(tarvik tree --total $folder | cut -f1)"
