# Scripts and the command tell applications what to do: two with windows, one that answers Apple events. On a display of the step's own.
. "$DEMO/lib.sh"
build=$(dirname "$(dirname "$(command -v tarvik)")")
. "$DEMO/../display.sh"
children=
trap 'kill -KILL $children 2>/dev/null; end_display' EXIT  # an application that loses its display first may take its time
start_display 1024x640 || exit 1
# await COMMAND...: until it succeeds
await() {
    local end=$((SECONDS + 60))
    until "$@" >/dev/null 2>&1; do [ $SECONDS -lt $end ] || { echo "   WRONG: $* did not come true"; exit 1; }; sleep 0.1; done
}

title 'Two applications with windows: which one is in front'
# Two copies of Shelf, each with a window of its own. Neither has a handler for what is asked here.
for name in Larder Cellar; do
    mkdir "$name.app"
    cp -rL "$build/Shelf.app/." "$name.app"
    mv "$name.app/Shelf" "$name.app/$name"
    sed -i "s/\(ApplicationName\|NSExecutable\) = [^;]*;/\1 = $name;/; s/\(CFBundleIdentifier\) = [^;]*;/\1 = \"org.example.$name\";/" \
        "$name.app/Resources/Info-gnustep.plist"
    "$name.app/$name" >/dev/null 2>&1 &
    children="$children $!"
    await tarvik script -e "tell application \"$name\" to activate"  # an error as long as it has no window
done
inFront() { tarvik ps --front 2>/dev/null | grep -q "/$1.app$"; }
# An application that comes up may bring itself to the front once more.
staysInFront() { tarvik script -e "tell application \"$1\" to activate"; for turn in 1 2 3 4 5 6 7 8; do sleep 0.1; inFront "$1" || return 1; done; }
await staysInFront Cellar
show tarvik ps --front
show tarvik script -e 'tell application "Larder" to activate'
await inFront Larder
show tarvik ps --front
show tarvik script -d source -e 'tell application "Cellar" to {name, frontmost, running}'
cat > swap.applescript <<'SCRIPT'
-- Brings the other one to the front, until it is.
on swap(one, other)
    if application one is frontmost then set one to other
    tell application one
        set frontmost to true
        repeat until it is frontmost
            delay 0.05
        end repeat
        return name & " is in front"
    end tell
end swap

with timeout of 20 seconds
    set said to {swap("Larder", "Cellar")}
    set end of said to swap("Larder", "Cellar")
end timeout
try
    tell application "Larder" to quit -- only itself could
on error message number n
    set end of said to message
end try
said
SCRIPT
show cat swap.applescript
swapped=$(show tarvik script -d source swap.applescript)
echo "$swapped"
check 'each in its turn' '{"Cellar is in front", "Larder is in front", "Larder got an error: It doesn’t understand the “quit” message."}' "$(tail -1 <<<"$swapped")"
check 'and the window manager agrees' yes "$(inFront Larder && echo yes)"

title 'A script and another program exchange an event'
cp "$(command -v tarvik)" librarian
./librarian event listen --answer 'due in 14 days' >heard 2>listening &
children="$children $!"
until [ -s listening ]; do sleep 0.05; done
show tarvik script -e 'tell application "librarian" to «event bookborw» "Emma" given «class page»:12'
check 'the reply' 'due in 14 days' "$(tarvik script -e "tell application \"$PWD/librarian\" to «event bookborw» \"Emma\"")"
sed 's/^/   heard by process /' heard
check 'the same, addressed by its place' 'due in 14 days' "$(tarvik event send ./librarian book/borw Emma | sed 's/.*("\(.*\)").*/\1/')"

title 'The clipboard'
show tarvik script -e 'set the clipboard to "from a script"'
check 'another program pastes it' 'from a script' "$(timeout 20 xclip -o -selection clipboard)"
printf 'from the desktop' | timeout 20 xclip -i -selection clipboard 2>/dev/null
pasted() { [ "$(timeout 20 xclip -o -selection clipboard)" = "$1" ]; }
await pasted 'from the desktop'  # from xclip's background process, which may only be starting
check 'and the other way' 'from the desktop' "$(tarvik script -e 'the clipboard')"
