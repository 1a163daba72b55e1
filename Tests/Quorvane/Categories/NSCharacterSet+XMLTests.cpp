#include "Quorvane/Categories/NSCharacterSet+XML.h"

#include "Tests/Support/XMLFixtures.h"

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// Which of one character of each class are in the set: digit, letters of both cases, a letter without case,
/// a mark of punctuation, a symbol, a blank, a tab, a newline and an underscore.
std::u16string membersOf(std::string_view children) {
    const auto set = qv_characterSetWithXMLElement(*elementOf("<x>" + std::string(children) + "</x>"));
    std::u16string members;
    for (const char16_t unit : std::u16string_view(u"7aZ\u4E00!+ \t\n_"))
        if (set->characterIsMember(unit))
            members += unit;
    return members;
}

} // namespace

TEST(NSCharacterSetXML, EachWordNamesASet) {
    EXPECT_EQ(membersOf("<alphanumeric/>"), u"7aZ\u4E00");
    EXPECT_EQ(membersOf("<alpha/>"), u"aZ\u4E00");
    EXPECT_EQ(membersOf("<lower-alpha/>"), u"a");
    EXPECT_EQ(membersOf("<upper-alpha/>"), u"Z");
    EXPECT_EQ(membersOf("<decimal/>"), u"7");
    EXPECT_EQ(membersOf("<punctuation/>"), u"!_");
    EXPECT_EQ(membersOf("<symbols/>"), u"+");
    EXPECT_EQ(membersOf("<whitespace/>"), u" \t");
    EXPECT_EQ(membersOf("<string>+a_</string>"), u"a+_");
}

TEST(NSCharacterSetXML, TheSetIsTheUnionOfAllChildren) {
    EXPECT_EQ(membersOf("<lower-alpha/><string>_</string><decimal/><string>!</string>"), u"7a!_");
}

TEST(NSCharacterSetXML, UnknownChildrenAndTextBetweenThemAddNothing) {
    EXPECT_EQ(membersOf("a7<vowels/>!<Alpha/>"), u"");
    EXPECT_EQ(membersOf("<string/>"), u"");
    EXPECT_EQ(membersOf(""), u"");
}

TEST(NSCharacterSetXML, CharactersBeyondTheFirstPlaneAreTakenWhole) {
    const auto set = qv_characterSetWithXMLElement(*elementOf("<x><string>\xF0\x9D\x92\x9C</string></x>"));
    EXPECT_TRUE(set->longCharacterIsMember(U'\U0001D49C'));
    EXPECT_FALSE(set->longCharacterIsMember(U'\U0001D49D'));
}
