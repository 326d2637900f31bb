# A bundle in the layout of Mac applications, with texts in two languages, and the version record of a resource file.
. "$DEMO/lib.sh"
title 'Bundles: places, texts of a language, a version record'
mkdir -p 'Sample.app/Contents/Resources/'{English,French}.lproj
printf '"hello" = "Hello";\n' > Sample.app/Contents/Resources/English.lproj/Localizable.strings
printf '"hello" = "Bonjour, \\"été\\"";\n' | iconv -t UTF-16 > Sample.app/Contents/Resources/French.lproj/Localizable.strings
cat > Sample.app/Contents/Info.plist <<'PLIST'
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleIdentifier</key><string>org.example.sample</string></dict></plist>
PLIST
show tarvik bundle info Sample.app
show tarvik bundle strings --language=French Sample.app hello
check 'UTF-16 and escapes are read' 'Bonjour, "été"' "$(tarvik bundle strings --language=French Sample.app hello)"
check 'a key that is missing' 'not there' "$(tarvik bundle strings --language=English --default='not there' Sample.app none)"

# A resource fork written byte by byte: one 'vers' resource, number 1, of 24 bytes.
header='\0\0\1\0\0\0\1\034\0\0\0\034\0\0\0\062'
{
    printf "$header"; head -c 240 /dev/zero
    printf '\0\0\0\030\001\043\200\000\000\016\0051.2.3\0131.2.3, 2026'
    printf "$header"'\0\0\0\0\0\0\0\0\0\034\0\062\0\0vers\0\0\0\012\0\001\377\377\0\0\0\0\0\0\0\0'
} > sample.rsrc
show tarvik vers sample.rsrc
check 'the record reads in this order of bytes' 'version: 1.2.35.0' "$(tarvik vers sample.rsrc | head -1)"
