// Linked into every program of a sanitizer build. What libraries keep for a program's life is no leak: the Objective-C
// runtime its classes, the display's libraries their fonts, pictures and connection. Losses of others that we can't mend:
// gnustep-base's cookie parser, a string for every cookie; its reader of a pasteboard's lists, what it has when it raises;
// gnustep-gui's loader of interface files, objects of its own; its TIFF reader, what it opens on data that is no TIFF.
// Only the slow unwinder sees whose they are. (Set here and not in the environment: programs are also run by hand.)
extern "C" {
const char *__asan_default_options() { return "fast_unwind_on_malloc=0:detect_stack_use_after_return=0"; }
const char *__lsan_default_options() { return "print_suppressions=0"; }
const char *__lsan_default_suppressions()
{
    return "leak:libobjc.so\n"
           "leak:_i_HTTPURLProtocol__keepCookies_\n"
           "leak:pastedPropertyList\n"
           "leak:InterfaceFiles.mm\nleak:loadInterfaceFile\n"
           "leak:NSTiffOpenDataRead\n"
           "leak:libfontconfig.so\nleak:libgnustep-cairo\nleak:libcairo.so\nleak:libX11.so\n";
}
}
