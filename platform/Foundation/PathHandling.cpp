// gnustep-base reads paths as a mix of POSIX and Windows ones unless told otherwise: a file named "back\slash"
// is listed as "back/slash", one named "c:olon" has no attributes.
extern "C" const char *GSPathHandling(const char *mode);

namespace {
[[gnu::constructor]] void usePosixPaths() { GSPathHandling("unix"); }
}  // namespace
