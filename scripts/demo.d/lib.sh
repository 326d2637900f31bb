# Sourced by the steps: headings, shown commands, checks. A step works in its own folder, $DEMO_FOLDER.
cd "$DEMO_FOLDER" || exit 1

if [ -t 1 ]; then bold=$'\e[1m' green=$'\e[32m' red=$'\e[31m' plain=$'\e[0m'; else bold= green= red= plain=; fi

# title TEXT: what the step shows
title() { printf '\n%s== %s%s\n' "$bold" "$1" "$plain"; }
# show WORD...: prints the command and runs it
show() {
    printf '%s$' "$bold"
    for word; do
        case $word in *[!A-Za-z0-9_./:=,+@%-]* | '') printf " %s" "${word@Q}" ;; *) printf ' %s' "$word" ;; esac
    done
    printf '%s\n' "$plain"
    "$@"
}
# check TEXT EXPECTED ACTUAL: says whether they are the same; ends the step when not
check() {
    if [ "$2" = "$3" ]; then
        printf '%s   ok: %s%s\n' "$green" "$1" "$plain"
    else
        printf '%s   WRONG: %s\n   expected: %s\n   actual:   %s%s\n' "$red" "$1" "$2" "$3" "$plain"
        exit 1
    fi
}
# mount_point IMAGE: where it is mounted. Its volume's name may hold spaces, as it does when another volume has the name already.
mount_point() { tarvik image list --no-header | awk -v image="$1" '$NF == image { sub(/ +[^ ]+$/, ""); print }'; }
