# Sourced: a display of one's own with a window manager, for a quarter of an hour at most unless DISPLAY_SECONDS says longer.

# start_display WIDTHxHEIGHT [XVFB ARGUMENT]...: starts them and exports DISPLAY; false, with a word why, when that fails.
# Keys don't repeat (-r): on a busy machine more than half a second may pass between a key's press and its release. The server
# doesn't start over when its last client goes (-noreset), which would end those that are just coming.
start_display() {
    local number size=$1 end=$((SECONDS + 60))
    shift
    exec 3< <(exec timeout "${DISPLAY_SECONDS:-900}" Xvfb -displayfd 1 -r -noreset -screen 0 "${size}x24" -nolisten tcp "$@" 2>/dev/null)
    display_server=$!
    read -r -t 60 number <&3 || { echo "${0##*/}: Xvfb did not start (package xvfb)" >&2; return 1; }
    export DISPLAY=:$number
    unset WAYLAND_DISPLAY
    timeout "${DISPLAY_SECONDS:-900}" openbox >/dev/null 2>&1 &
    display_manager=$!
    until xdotool get_desktop >/dev/null 2>&1; do
        [ $SECONDS -lt $end ] || { echo "${0##*/}: openbox did not start (package openbox)" >&2; return 1; }
        sleep 0.05
    done
}
# end_display: ends them, if they were started.
end_display() { kill ${display_manager:-} ${display_server:-} 2>/dev/null; }
