# Shelf, the application. On the user's display when there is one; otherwise a tour under a display of its own, which leaves
# pictures in build/PRESET/shots.
. "$DEMO/lib.sh"
build=$(dirname "$(dirname "$(command -v tarvik)")")
shelf=$build/Shelf.app/Shelf
mkdir -p "$build/shots"

title 'Shelf: a catalogue of disk images'
for name in Anatomy Botany Cartography; do
    mkdir "$name"
    cp -r "$DEMO" "$name/$name notes"
    tarvik image create "$name" "$PWD/$name.img" </dev/null 2>/dev/null || exit 1
done
# Noise takes the packer a while.
mkdir Noise
head -c 150000000 /dev/urandom > Noise/noise
printf 'This was an image once.\n' > "$PWD/Damaged.img"

if [ -n "${DISPLAY:-}" ] && [ -t 0 ] && [ -t 1 ]; then
    echo '   Shelf is open with three images and a damaged one. Close its window to go on.'
    timeout 1800 "$shelf" ./*.img
    for image in "$PWD"/*.img; do tarvik image unmount "$image"; done
    exit 0
fi

# ---- A display and a window manager of our own; the server keeps its picture in a file
. "$DEMO/../display.sh"
frames=$(mktemp -d)
application=
leave() {
    [ -z "$application" ] || kill "$application" 2>/dev/null
    for image in "$PWD"/*.img; do tarvik image unmount "$image" 2>/dev/null; done
    end_display
    rm -rf "$frames"
}
trap leave EXIT
start_display 1024x640 -fbdir "$frames" || exit 1

# await TEXT COMMAND...: until it succeeds; ends the step when it does not
await() {
    local end=$((SECONDS + 60))
    while [ $SECONDS -lt $end ]; do
        "${@:2}" >/dev/null 2>&1 && { printf '%s   ok: %s%s\n' "$green" "$1" "$plain"; return; }
        sleep 0.1
    done
    shot failed
    printf '%s   WRONG: %s (see %s)%s\n' "$red" "$1" "$build/shots/failed.png" "$plain"
    exit 1
}
shot() { at 700 400; sleep 0.4; frame "$1"; }
frame() { xwdtopnm -quiet "$frames/Xvfb_screen0" 2>/dev/null | pnmcrop -quiet -black | pnmtopng -quiet -compression=9 > "$build/shots/$1.png" 2>/dev/null; }
start() {
    timeout 300 "$shelf" "$@" 2>shelf.log &
    application=$!
    window=
    await 'the window is there' found
    sleep 1
}
# The biggest window of the name: windows come and go while one looks
found() {
    local id WINDOW X Y WIDTH HEIGHT SCREEN
    for id in $(xdotool search --onlyvisible --name '^Shelf$'); do
        eval "$(xdotool getwindowgeometry --shell "$id")"
        [ "${WIDTH:-0}" -lt 500 ] || { window=$id; return 0; }
    done
    return 1
}
geometry() { xdotool getwindowgeometry "$window" | tail -n 2; }
keys() { xdotool key --delay 40 "$@"; sleep 0.3; }
at() { xdotool mousemove --window "$window" "$1" "$2" sleep 0.1; }   # in the window
press() { xdotool mousedown 1 sleep 0.08 mouseup 1 sleep "${1:-0.2}"; }
# row N: clicks it until it is drawn as selected: an application that is just starting may be late
row() {
    local tries
    for tries in 1 2 3 4 5 6 7 8; do
        at 60 $((110 + 22 * $1)); press
        [ "$(colour 75 0)" != ffffff ] && return
        sleep 0.5
    done
    shot failed
    echo "demo: row $1 can't be selected" >&2
    exit 1
}
# colour DX DY: of the screen, so far from the mouse
colour() {
    local X Y SCREEN WINDOW
    eval "$(xdotool getmouselocation --shell)"
    xwdtopnm -quiet "$frames/Xvfb_screen0" 2>/dev/null | pamcut -left $((X + $1)) -top $((Y + $2)) -width 1 -height 1 | tail -c 3 |
        od -An -tx1 | tr -d ' '
}
quit() {
    keys ctrl+q
    wait "$application"
    application=
}
# What the user defaults hold: the value of KEY in the row of the image NAME
defaults() { find "$(dirname "$GNUSTEP_CONFIG_FILE")" -name Shelf.plist; }
stored() { xmllint --xpath "string(//dict[key='path' and string[contains(., '/$1')]]/key[.='$2']/following-sibling::*[1])" "$(defaults)" 2>/dev/null; }
rows() { xmllint --xpath "count(//key[.='Images']/following-sibling::array[1]/dict)" "$(defaults)" 2>/dev/null; }
mounted() { findmnt -n -o TARGET -S "$(losetup -j "$1" -n -O NAME 2>/dev/null | head -1)" 2>/dev/null || tarvik image list --no-header | grep -F "$1"; }
is() { [ "$1" = "$("${@:2}")" ]; }

title 'Empty at first, then with images named on the command line'
start
shot 1-empty
place=$(geometry)
xdotool windowmove "$window" 20 30
sleep 0.5
moved=$(geometry)
quit
start "$PWD"/*.img

check 'the window is where it was left' "$moved" "$(geometry)"
[ "$moved" != "$place" ] || { echo 'demo: the window was not moved' >&2; exit 1; }

title 'Mounting, with the keyboard; the kernel agrees'
row 1
keys ctrl+m
await 'the image is mounted' mounted "$PWD/Botany.img"
point=$(mount_point "$PWD/Botany.img")
check 'the mounted folder is the one that went into it (diff -r)' '' "$(diff -r --no-dereference Botany "$point" 2>&1)"

title 'Labels, a note, checksums'
row 0
keys ctrl+1
row 1
keys ctrl+6
row 2
keys ctrl+4
at 860 110; press 0.05; press 0.6
xdotool type --delay 15 'Lent to Rosalind'
keys Return
row 2
keys ctrl+a ctrl+k
await 'the label is stored, and the note' is 'Lent to Rosalind' stored "Anatomy.img" note
await 'checksum as sha1sum computes it' is "$(sha1sum < "Botany.img" | cut -d' ' -f1)" stored "Botany.img" checksum
row 1
shot 2-catalogue

title 'A menu; a file that is no image'
at 135 10
xdotool mousedown 1 sleep 0.4
sleep 0.4; frame 3-menu
at 600 300
xdotool mouseup 1
row 3
keys ctrl+m
await 'the alert says what to do' xdotool search --onlyvisible --name '^(Window|Alert|)$'
sleep 0.5
shot 4-alert
keys Return
sleep 0.5

title 'Labels from their button'
row 1
at 690 48; press 0.6
frame 7-labels
at 700 187; press 0.6
await 'the label is the one that was chosen' is 6 stored Botany.img label

title 'Images added through the panel'
cp Botany.img Dendrology.img
keys ctrl+o
await 'the panel is there' xdotool search --onlyvisible --name '^Add Images$'
sleep 0.5
xdotool type --delay 30 Dendrology.img
sleep 0.5
frame 8-open
keys Return
await 'the image is in the catalogue' is 5 rows

title 'And dragged in from another program, a GTK window at the corner'
cp Botany.img 'Étymologie.img'
printf 'file://%s/%%C3%%89tymologie.img\r\n' "$PWD" | timeout 60 "$DEMO/../../tests/support/drag-peer" text/uri-list >peer 2>/dev/null &
peer=$!
await 'the other window is there' grep shown peer
xdotool mousemove 50 50 sleep 0.2 mousedown 1 sleep 0.1 mousemove 60 60 sleep 0.1 mousemove 90 90 sleep 0.3
at 400 300; xdotool sleep 0.5; at 404 304; xdotool sleep 0.7
frame 11-drag
xdotool mouseup 1
await 'the image is in the catalogue' is 6 rows
await 'as large as it is' is "$(stat -c %s 'Étymologie.img')" stored 'Étymologie.img' size
kill $peer
keys Delete
await 'and deleted again' is 5 rows
row 1

title 'A new image of a folder, made in the background'
keys ctrl+n
await 'a folder is asked for' xdotool search --onlyvisible --name '^Make an image of which folder\?$'
sleep 0.5
panel=$(xdotool search --onlyvisible --name '^Make an image of which folder\?$' | tail -1)
xdotool mousemove --window "$panel" 240 146 sleep 0.2; press 0.6
keys Return
await 'and a place' xdotool search --onlyvisible --name '^Save the image$'
sleep 0.5
frame 9-save
keys Return
sleep 0.7
frame 10-progress
await 'the new image is whole' test -e Noise.img
await 'and in the catalogue' is 6 rows
check 'it holds what went into it' "$(sha1sum < Noise/noise)" "$(unsquashfs -cat Noise.img noise | sha1sum)"

title 'The row deleted, and the deletion undone'
keys Delete
await 'it is gone' is 5 rows
keys ctrl+z
await 'it is back' is 6 rows

title 'Unmounting'
row 1
keys ctrl+u
await 'the folder is gone' test ! -e "$point"
quit
check 'six rows are kept' 6 "$(rows)"

title 'Ten thousand rows, from an exported catalogue'
{
    printf '<?xml version="1.0" encoding="UTF-8"?>\n<catalogue>\n'
    awk 'BEGIN { for (i = 1; i <= 10000; ++i) printf "  <image>\n    <name>Disk %05d</name>\n    <path>/srv/images/%d/disk-%05d.img</path>\n    <size>%d</size>\n    <note>Box %d</note>\n  </image>\n", i, i % 7, i, i * 7919 * 131, i % 100 }'
    printf '</catalogue>\n'
} > many.xml
start "$PWD/many.xml"
sleep 1
keys End
shot 5-many
quit
check 'all are kept' 10006 "$(rows)"

title 'In German'
start -NSLanguages '(German)'
shot 6-german
keys ctrl+e
await 'its panels speak German too' xdotool search --onlyvisible --name '^Katalog exportieren$'
keys Return
await 'the catalogue has a German name' test -s Katalog.xml
quit
check 'nothing was said on the console' '' "$(grep -v '^$' shelf.log)"
echo "   pictures: $build/shots"
