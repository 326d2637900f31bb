# Two processes: one listens for Apple events, the other one sends and gets the replies.
. "$DEMO/lib.sh"
title 'Apple events: a process asks another one'
cp /etc/services letter.txt
tarvik event listen --echo > heard 2> listening &
listener=$!
until [ -s listening ]; do sleep 0.05; done
cat listening
show tarvik event send $listener book/borw 'Emma & Co' page:long=12 back:bool=true
check 'the reply carries the direct object back' "'aevt'\\'ansr'{ '----':'utf8'(\"Emma & Co\") }" \
      "$(tarvik event send $listener book/borw 'Emma & Co')"
show tarvik event send $listener aevt/odoc :furl=letter.txt
check 'the file as an alias, found again after a rename' "$(stat -c %i letter.txt)" \
      "$(tarvik event send $listener test/alis :alis=letter.txt > reply; mv letter.txt moved.txt
         perl -ne 'print pack "H*", $1 if /\$([0-9A-F]+)\$/' reply > letter.alias; stat -c %i "$(tarvik alias resolve letter.alias)")"
check 'nobody there is an error' 1 "$(tarvik event send 1 book/borw 2>/dev/null; echo $?)"
show tarvik event send $listener aevt/quit
wait $listener
check 'five events came, each from a process of its own' 5 "$(cut -d: -f1 heard | sort -u | wc -l)"
echo "   what the listener printed:"
sed 's/\$[0-9A-F]*\$/$...$/; s/^/   /' heard
