#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef __SANITIZE_ADDRESS__
// Seen from outside, for the checker is a library of its own.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions();
/// Fontconfig keeps the patterns of its configuration by their distance from each other, which the search for
/// leaks can't follow: a program that lists fonts and frees all of it is told of the same 288 bytes. The
/// reader of .editorconfig files loses the settings that stand before a broken place.
extern "C" const char *__lsan_default_suppressions() { return "leak:libfontconfig\nleak:libeditorconfig"; }
#endif

#ifdef __SANITIZE_THREAD__
extern "C" __attribute__((visibility("default"))) const char *__tsan_default_suppressions();
/// HarfBuzz hands what it makes from thread to thread without locks, by steps that the checker does not see
/// in a library that was built without it.
extern "C" const char *__tsan_default_suppressions() { return "called_from_lib:libharfbuzz"; }
#endif

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
