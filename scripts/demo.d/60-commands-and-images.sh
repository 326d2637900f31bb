# Tools run as child processes, and a disk image's whole life, over a folder of the system.
. "$DEMO/lib.sh"
title 'Tools: arguments as they are, output captured, a live tail'
show tarvik run --summary printf '[%s]\n' 'a b' '$HOME' '"quoted"'
words=/usr/share/dict/words
[ -r $words ] || words=/etc/services
check 'sorted as sort itself does it' "$(sort -r < $words | sha256sum)" "$(tarvik run --input=$words sort -r | sha256sum)"
show tarvik run --live sh -c 'for i in 1 2 3; do echo "step $i"; sleep 0.2; done'
show tarvik run --timeout=1 sleep 100.$$
check 'a tool that takes too long is ended' 0 "$(pgrep -c -f "^sleep 100\\.$$\$")"

title 'Disk images: made, mounted, listed, compared, unmounted'
source=/usr/share/perl
image=$PWD/demo-$$.img
printf '   %s: %s files, %s\n' "$source" "$(find "$source" -type f | wc -l)" "$(du -sh "$source" | cut -f1)"
show tarvik image create "$source" "$image"
show tarvik image info "$image"
show tarvik image mount "$image"
folder=$(mount_point "$image")
show tarvik image list
check 'the kernel knows the mount' "$folder" "$(findmnt -n -o TARGET "$folder")"
check 'every file is as in the source (diff -r)' '' "$(diff -r --no-dereference "$source" "$folder" 2>&1)"
check 'the report is a property list' OK "$(tarvik image list --plist | xmllint --noout - && echo OK)"
show tarvik image unmount "$image"
check 'the folder is gone' no "$([ -e "$folder" ] && echo yes || echo no)"
for _ in $(seq 50); do [ -z "$(losetup -j "$image")" ] && break; sleep 0.1; done  # the kernel lets go of it in its own time
check 'no loop device is left' '' "$(losetup -j "$image")"
