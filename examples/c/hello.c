/* A host in plain C.
 *   cc hello.c $(pkg-config --cflags --libs tarvik-c) -o hello */
#include <Tarvik/Tarvik.h>

#include <stdio.h>

int main(int argc, char **argv)
{
    unsigned char flags[16];
    LogMainArguments(argc, argv);
    MemCopyBitFlags("\x01\x80", 2, flags);
    printf("%s %d%d\n", StringGetLastSubstring("a.b.c", ".", 0), flags[0], flags[15]);
    return 0;
}
