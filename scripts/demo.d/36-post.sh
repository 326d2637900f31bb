# A document posted to a server on this machine through a proxy on this machine, and what both of them saw.
. "$DEMO/lib.sh"
free_port() { perl -MIO::Socket::INET -e 'print IO::Socket::INET->new(Listen => 1, LocalAddr => "127.0.0.1")->sockport'; }
server=$(free_port) proxy=$(free_port)

title 'A server (socat) that keeps what it gets, and a forward proxy (tinyproxy)'
cat > answer.sh <<'END'
length=0 lines=
while IFS= read -r line; line=${line%$'\r'}; [ -n "$line" ]; do
    lines+=$line$'\n'
    case ${line,,} in content-length:*) length=${line##* } ;; esac
done
[ -n "$lines" ] || exit 0  # somebody who only wanted to know whether the port is open
printf '%s' "$lines" > head
head -c "$length" > body
answer="<received bytes=\"$length\"/>"
printf 'HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: %d\r\nConnection: close\r\n\r\n%s\n' $((${#answer} + 1)) "$answer"
END
printf 'Port %s\nListen 127.0.0.1\nTimeout 30\nMaxClients 10\nLogLevel Connect\nLogFile "%s/proxy.log"\nAllow 127.0.0.1\n' \
    "$proxy" "$PWD" > proxy.conf
socat -lf socat.log "TCP-LISTEN:$server,bind=127.0.0.1,reuseaddr,fork" EXEC:'bash answer.sh' & socat=$!
tinyproxy -d -c proxy.conf > /dev/null 2>&1 & tinyproxy=$!
trap 'kill $socat $tinyproxy 2> /dev/null; wait 2> /dev/null' EXIT
for port in $server $proxy; do
    for _ in $(seq 100); do (: < "/dev/tcp/127.0.0.1/$port") 2> /dev/null && break; sleep 0.05; done
done

title 'The settings, and what they say about a URL'
export http_proxy=http://127.0.0.1:$proxy/ no_proxy=192.168.0.0/16
show tarvik proxy
url=http://127.0.0.1:$server/report
show tarvik proxy "$url" http://192.168.1.1/
show tarvik reach "$url"

title 'The document, posted'
{
    printf '<?xml version="1.0" encoding="UTF-8"?>\n<report>\n'
    env LC_ALL=de_AT.UTF-8 tarvik sysinfo | sed 's/\(.*\): \(.*\)/  <\1>\2<\/\1>/'
    printf '</report>\n'
} > report.xml
show cat report.xml
show tarvik post --verbose "$url" report.xml 2>&1 | tee said
check 'the answer counts the bytes' "<received bytes=\"$(stat -c %s report.xml)\"/>" "$(tail -1 said)"
check 'the proxy is told' 1 "$(grep -c "bytes, proxy 127.0.0.1:$proxy$" said)"
check 'the document has arrived, byte for byte' "$(sha256sum < report.xml)" "$(sha256sum < body)"
printf '   the head, as the server saw it:\n'
sed 's/^/     /' head
check 'it came through the proxy' yes "$(grep -q '^Via:.*tinyproxy' head && echo yes || echo no)"
check 'which has written it down' 1 "$(grep -c "POST http://127.0.0.1:$server/report" proxy.log)"

title 'With the server among the exceptions: straight there'
export no_proxy=127.0.0.1
show tarvik proxy "$url"
tarvik post "$url" report.xml > /dev/null
check 'the proxy has not seen it' no "$(grep -q '^Via:' head && echo yes || echo no)"
