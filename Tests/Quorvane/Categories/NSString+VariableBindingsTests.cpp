#include "Quorvane/Categories/NSString+QuorvaneAdditions.h"

#include "Platform/Foundation/NSException.h"
#include "Tests/Support/TextGaps.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::withEveryGap;

namespace {

/// The names handed over, each between bars.
NSString namesIn(QVTextReader text, int stopAfter = -1) {
    std::u16string names = u"|";
    qv_enumerateVariableBindingsUsingBlock(text, [&](const NSString &name, bool &stop) {
        EXPECT_FALSE(stop);
        names += name.view();
        names += u"|";
        stop = --stopAfter == 0;
    });
    return names;
}

/// Each binding becomes its name between angles; "gone" has no value.
NSString replacedIn(QVTextReader text) {
    return qv_stringByReplacingVariableBindingsUsingBlock(text, [](const NSString &name, bool &stop) {
        EXPECT_FALSE(stop);
        return name == u"gone" ? NSString() : NSString::stringWithFormat(u"<%@>", name);
    });
}

} // namespace

TEST(QVVariableBindings, AreNamedInThreeForms) {
    struct {
        const char16_t *text;
        const char16_t *names;
        const char16_t *replaced;
    } const rows[] = {
        {u"", u"|", u""},
        {u"plain", u"|", u"plain"},
        {u"$(a b)c", u"|a b|", u"<a b>c"},
        {u"${a b}c", u"|a b|", u"<a b>c"},
        {u"$a1b-c", u"|a1b|", u"<a1b>-c"},
        {u"x$\u00FC\U00010400y z", u"|\u00FC\U00010400y|", u"x<\u00FC\U00010400y> z"},
        {u"$a$b$(c)${d}", u"|a|b|c|d|", u"<a><b><c><d>"},
        // The underscore is no alphanumeric character.
        {u"$a_b", u"|a|", u"<a>_b"},
        // A name goes on to the first closing character, whatever is in it.
        {u"$(a}$(b)c)", u"|a}$(b|", u"<a}$(b>c)"},
        {u"${a)\\b}", u"|a)\\b|", u"<a)\\b>"},
        // Enumerating hands over the name with its blanks, replacing asks for it without.
        {u"$( x )${\ty }", u"| x |\ty |", u"<x><y>"},
        {u"$( )", u"| |", u"<>"},
        // Only the blanks that are no line ends are trimmed.
        {u"$(\nx)", u"|\nx|", u"<\nx>"},
        // No value leaves nothing.
        {u"a$(gone)b$gone", u"|gone|gone|", u"ab"},
        // No name, or no end.
        {u"$()x", u"|", u"$()x"},
        {u"${}$y", u"|y|", u"${}<y>"},
        {u"a$(foo", u"|", u"a$(foo"},
        {u"${foo)$x", u"|", u"${foo)$x"},
        {u"$(", u"|", u"$("},
        {u"a${", u"|", u"a${"},
        {u"a$", u"|", u"a$"},
        {u"$-$ $", u"|", u"$-$ $"},
        {u"$$a", u"|a|", u"$<a>"},
        // Escapes lose their backslash and guard one composed sequence.
        {u"\\$x", u"|", u"$x"},
        {u"\\$(x)\\${y}", u"|", u"$(x)${y}"},
        {u"\\\\$x", u"|x|", u"\\<x>"},
        {u"a\\bc", u"|", u"abc"},
        {u"\\e\u0301$x", u"|x|", u"e\u0301<x>"},
        {u"\\\U0001F600", u"|", u"\U0001F600"},
        {u"\\\r\n$x", u"|x|", u"\r\n<x>"},
        {u"$a\\$b", u"|a|", u"<a>$b"},
    };
    for (const auto &row : rows)
        withEveryGap(row.text, [&](QVTextReader text) {
            EXPECT_EQ(namesIn(text), row.names) << NSString(row.text).UTF8String();
            EXPECT_EQ(replacedIn(text), row.replaced) << NSString(row.text).UTF8String();
        });
}

TEST(QVVariableBindings, StopEndsTheEnumeration) { EXPECT_EQ(namesIn(u"$a $b $c", 2), u"|a|b|"); }

TEST(QVVariableBindings, StopWhileReplacingDropsTheRestOfTheText) {
    const auto replaced =
        qv_stringByReplacingVariableBindingsUsingBlock(u"x $a y $b z", [](const NSString &name, bool &stop) {
            stop = name == u"b";
            return NSString::stringWithFormat(u"<%@>", name);
        });
    EXPECT_EQ(replaced, u"x <a> y <b>");
}

TEST(QVVariableBindings, ADictionaryIsAskedForTheTrimmedName) {
    const std::map<NSString, NSString> values{{u"name", u"Ada"}, {u"empty", u""}, {u"dollar", u"$name"}};
    const auto replaced = [&](const char16_t *text) {
        return qv_stringByReplacingVariableBindingsUsingDictionary(text, values);
    };
    EXPECT_EQ(replaced(u"Hi ${ name }, $name!"), u"Hi Ada, Ada!");
    EXPECT_EQ(replaced(u"[$(missing)$empty]"), u"[]");
    // What was put in is not read again.
    EXPECT_EQ(replaced(u"$dollar"), u"$name");
}

TEST(QVVariableBindings, ABackslashAtTheEndAsksThePlatformForWhatIsNotThere) {
    for (const char16_t *text : {u"\\", u"$a\\"}) {
        try {
            namesIn(text);
            FAIL() << "no exception";
        } catch (const NSException &exception) {
            EXPECT_EQ(exception.name(), u"NSRangeException");
        }
        EXPECT_THROW(replacedIn(text), NSException);
    }
}
