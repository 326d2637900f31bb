# Property lists: written, checked by another reader of XML, read back; user defaults that keep every text.
. "$DEMO/lib.sh"
title 'Property lists: a list from text to XML and back, and user defaults'
printf '{ Title = "Gr\\U00f6\\U00dfe & <Maße>"; Rows = ("one", {Deep = "two";}); Bytes = <00ff10>; }\n' > list.text
show tarvik plist show list.text
tarvik plist convert list.text list.plist
check 'another reader of XML takes it' 'Größe & <Maße>' "$(xmllint --nonet --xpath 'string(//key[.="Title"]/following-sibling::string[1])' list.plist)"
check 'back in the form of text it says the same' "$(tarvik plist show list.text)" "$(tarvik plist convert --form=text list.plist | tarvik plist show)"
show tarvik plist get list.plist Rows 1 Deep
{ echo '<?xml version="1.0"?><!DOCTYPE plist [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;">]>'; echo '<plist><string>&b;</string></plist>'; } > bomb.plist
show tarvik plist check list.plist bomb.plist
check 'a document that declares entities is refused' 1 "$(tarvik plist check --quiet bomb.plist 2>/dev/null; echo $?)"
text=$'smile \U1F600, escape \\U0041, bell \a.'
tarvik defaults write TarvikDemo Text "$text"
show tarvik defaults read TarvikDemo
check 'the user defaults give every character back' "$(printf '%s\n' "$text" | od -c)" "$(tarvik defaults read TarvikDemo Text | od -c)"
tarvik defaults remove TarvikDemo
