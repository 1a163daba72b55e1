#include "Platform/AppKit/NSCursor.h"

#include "Tests/Support/CodingFixtures.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(NSCursor, ThereIsOneForEachName) {
    EXPECT_EQ(NSCursor::pointingHandCursor()->name(), u"pointingHand");
    EXPECT_EQ(NSCursor::pointingHandCursor(), NSCursor::cursorNamed(u"pointingHand"));
    EXPECT_EQ(NSCursor::cursorNamed(u"noSuchCursor"), nullptr);
    EXPECT_EQ(NSCursor::cursorNamed(nullptr), nullptr);
    std::set<NSString> names;
    for (const auto &cursor :
         {NSCursor::arrowCursor(), NSCursor::IBeamCursor(), NSCursor::pointingHandCursor(),
          NSCursor::openHandCursor(), NSCursor::closedHandCursor(), NSCursor::crosshairCursor(),
          NSCursor::resizeLeftRightCursor(), NSCursor::resizeUpDownCursor(),
          NSCursor::operationNotAllowedCursor()}) {
        ASSERT_TRUE(cursor);
        names.insert(cursor->name());
    }
    EXPECT_EQ(names.size(), 9u);
    EXPECT_EQ(NSCursor::IBeamCursor()->description(), u"<NSCursor IBeam>");
}

TEST(NSCursor, ComesBackFromAnArchiveAsTheOneOfItsName) {
    EXPECT_EQ(test::throughArchive(std::const_pointer_cast<NSCursor>(NSCursor::crosshairCursor())),
              NSCursor::crosshairCursor());
    EXPECT_EQ(test::readForged<NSCursor>(
                  [](NSCoder &coder) { coder.encodeString(u"noSuchCursor", u"NSCursorName"); }),
              nullptr);
    EXPECT_EQ(test::readForged<NSCursor>([](NSCoder &) {}), nullptr);
}
