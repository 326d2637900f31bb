script P
on f(n)
n
end f
end script
script Q
property parent : P
on f(n)
continue f(n * 2)
end f
end script
repeat with i from 1 to 3
with timeout of i seconds
tell application "x"
set frontmost to true
if it is not running then exit repeat
end tell
end timeout
end repeat
ignoring application responses but considering case
tell application "y" to set name to "z"
end ignoring
display dialog "a" default answer "b" with hidden answer buttons {"c"} giving up after 1
{Q's f(4), the clipboard, clipboard info for text, application "x" is frontmost}
