# Scripts: lists, handlers, errors, the shell; compiled once and run again; checked against other programs.
. "$DEMO/lib.sh"
title 'A script: the commonest endings of a folder, by a handler, with an error on the way'
cat > endings.applescript <<'SCRIPT'
property report : {}

on endingOf(path)
    set AppleScript's text item delimiters to "."
    set parts to text items of path
    if (count parts) < 2 then error "no ending" number 77
    return last item of parts
end endingOf

on run argv
    set folderPath to item 1 of argv
    set names to {}
    set counts to {}
    set bare to 0
    repeat with path in paragraphs of (do shell script "find " & quoted form of folderPath & " -type f -printf '%f\\n'")
        try
            set ending to endingOf(path)
            set found to false
            repeat with i from 1 to count names
                if item i of names = ending then
                    set item i of counts to (item i of counts) + 1
                    set found to true
                    exit repeat
                end if
            end repeat
            if not found then
                set end of names to ending
                set end of counts to 1
            end if
        on error number 77
            set bare to bare + 1
        end try
    end repeat
    set most to 0
    repeat with i from 1 to count names
        if item i of counts > most then
            set most to item i of counts
            set commonest to item i of names
        end if
    end repeat
    return {ending:commonest, files:most, without:bare}
end run
SCRIPT
show cat endings.applescript
folder=/usr/share/perl
show tarvik script --display=source endings.applescript $folder
expected=$(find $folder -type f -printf '%f\n' | grep -F . | sed 's/.*\.//' | tr A-Z a-z | sort | uniq -c | sort -rn | head -1)
check 'the commonest ending, as sort and uniq have it' "$(awk '{ print $2 ":" $1 }' <<<"$expected")" \
    "$(tarvik script endings.applescript $folder | sed 's/ending:\(.*\), files:\(.*\), without:.*/\1:\2/' | tr A-Z a-z)"
show tarvik script -o endings.scpt endings.applescript
check 'the compiled script says the same' "$(tarvik script endings.applescript $folder)" "$(tarvik script endings.scpt $folder)"

title 'Errors name their place'
show tarvik script -e 'set prices to {3, 5, "seven"}' -e 'set total to 0' -e 'repeat with p in prices' -e '    set total to total + p' -e 'end repeat'
check 'with status 1' 1 "$(tarvik script -e 'error "x"' 2>/dev/null; echo $?)"
check 'and the shell'\''s own status as its number' 3 "$(tarvik script -e 'try' -e 'do shell script "exit 3"' -e 'on error number n' -e 'n' -e 'end try')"

title 'Sums, beside awk'
check 'the squares up to 1000' "$(awk 'BEGIN { for (i = 1; i <= 1000; i++) s += i * i; print s }')" \
    "$(tarvik script -e 'set s to 0' -e 'repeat with i from 1 to 1000' -e 'set s to s + i * i' -e 'end repeat' -e 's')"
