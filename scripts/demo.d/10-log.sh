# A record that really reaches a system log: a datagram socket stands at /dev/log, in a mount namespace of its own.
. "$DEMO/lib.sh"
title 'The log: a failure path of a host, as the system log receives it'
command -v socat >/dev/null || { echo "   (no socat on this machine: left out)"; exit 0; }
unshare --user --map-root-user --mount true 2>/dev/null || { echo "   (the kernel gives no mount namespace: left out)"; exit 0; }
export folder=$DEMO_FOLDER
unshare --user --map-root-user --mount bash -c '
    mkdir dev && mount --bind dev dev && touch dev/null && mount --bind /dev/null dev/null && mount --rbind dev /dev
    socat -u UNIX-RECV:/dev/log OPEN:"$folder/records",creat,append & receiver=$!
    for _ in $(seq 100); do [ -S /dev/log ] && break; sleep 0.05; done
    tarvik log --function="-[DiskImage mount]" --line=200 "no medium, 100% sure"
    for _ in $(seq 100); do [ -s "$folder/records" ] && break; sleep 0.05; done
    kill $receiver'
printf '   the record: %s\n' "$(cat records)"
check 'function, line and message, under the default priority' '-[DiskImage mount]:200: no medium, 100% sure' "$(sed 's/.*tarvik: //' records)"
