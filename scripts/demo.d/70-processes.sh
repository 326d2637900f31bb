# Processes by their applications; launching; the one in front, when there is a display.
. "$DEMO/lib.sh"
title 'Two applications that run, found by their folders'
mkdir -p Ink.app/Resources Pen.app
cp "$(command -v sleep)" Ink.app/Ink
cp Ink.app/Ink Pen.app/Pen
printf '{ NSExecutable = Ink; ApplicationName = "Ink & Paper"; CFBundleIdentifier = "org.tarvik.Ink"; }' > Ink.app/Resources/Info-gnustep.plist
Ink.app/Ink 60 & ink=$!
Pen.app/Pen 60 & pen=$!
trap 'kill $ink $pen 2>/dev/null' EXIT
until [ "$(readlink /proc/$ink/exe)" = "$PWD/Ink.app/Ink" ] && [ "$(readlink /proc/$pen/exe)" = "$PWD/Pen.app/Pen" ]; do sleep 0.02; done
show tarvik ps --long Ink.app Pen.app
check 'their process ids' "$ink $pen" "$(tarvik ps --pids Ink.app Pen.app | xargs)"
check 'the executable in a folder stands for nothing' 1 "$(tarvik ps Ink.app/Ink >/dev/null 2>&1; echo $?)"
mv Ink.app Writer.app
check 'found where its folder is now' "$ink" "$(tarvik ps --pids Writer.app)"
kill $ink
wait $ink 2>/dev/null
check 'gone' 1 "$(tarvik ps Writer.app >/dev/null 2>&1; echo $?)"

title 'Launching'
printf '#!/bin/sh\necho "$@" > %q\n' "$PWD/said" > Pen.app/Pen.new
chmod +x Pen.app/Pen.new
printf '{ NSExecutable = Pen.new; }' > Pen.app/Info.plist; mkdir -p Pen.app/Resources; mv Pen.app/Info.plist Pen.app/Resources/Info-gnustep.plist
show tarvik launch Pen.app
check 'it runs already: nothing was started' no "$([ -e said ] && echo yes || echo no)"
show tarvik launch --new Pen.app
for turn in $(seq 100); do [ -e said ] && break; sleep 0.05; done
check 'started anew' yes "$([ -e said ] && echo yes || echo no)"
