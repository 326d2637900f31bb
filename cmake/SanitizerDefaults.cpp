// Linked into every program of a sanitizer build. What the Objective-C runtime keeps for its classes is no leak, and only the
// slow unwinder sees that it is the runtime's. gnustep-base's cookie parser loses a string for every cookie. Fonts,
// pictures and the connection to the display stay with their libraries for a program's life. (Set here and not in the environment: programs are also run by hand.)
extern "C" {
const char *__asan_default_options() { return "fast_unwind_on_malloc=0:detect_stack_use_after_return=0"; }
const char *__lsan_default_options() { return "print_suppressions=0"; }
const char *__lsan_default_suppressions() { return "leak:libobjc.so\nleak:_i_HTTPURLProtocol__keepCookies_\n"
                                            "leak:libfontconfig.so\nleak:libgnustep-cairo\nleak:libcairo.so\nleak:libX11.so\n"; }
}
