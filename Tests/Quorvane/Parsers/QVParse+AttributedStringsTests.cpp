// Highlighted text as attributed strings.

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSAttributedString.h"
#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/NSProgress.h"
#include "Tests/Quorvane/Parsers/HighlightingFixtures.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/SyntaxText.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

const std::string wordText = matchText("word", "[a-z]+");
const std::string blockText = regionText("block", "\\(", "\\)", subscopesText(wordText));

std::shared_ptr<QVSyntax> styled(const std::string &scopes, const std::map<std::u16string, int> &numbers) {
    auto syntax = syntaxWithElements(scopesText(scopes));
    setStyles(syntax, numbers);
    return syntax;
}

/// "(|2 a|1 )|2": each run's text, a bar, its attributes.
std::string drawn(const NSAttributedString &string) {
    std::string text;
    string.enumerateAttributesInRange(
        {0, string.length()}, 0, [&](const NSAttributes &attributes, NSRange range, bool &) {
            const NSString run(string.string().substringWithRange(range));
            text += (text.empty() ? "" : " ") + run.UTF8String() + "|" + drawnAttributes(attributes);
        });
    return text;
}

std::string drawnRange(const std::shared_ptr<QVSyntax> &syntax, std::u16string_view text, NSRange range,
                       const NSAttributes &defaultAttributes = {}) {
    const auto parse = parseOfText(syntax, text);
    std::string result;
    parse->performReadingBlockAndWait(
        [&] { result = drawn(*parse->attributedStringFromRange(range, defaultAttributes)); });
    return result;
}

/// A grammar that takes far longer on its text than any test would wait, unless it is called off: each line
/// keeps the matcher busy till one of its limits.
std::shared_ptr<QVSyntax> slowSyntax() {
    return styled(matchText("never", "(a+)+b") + matchText("word", "^a"), {{u"word", 1}});
}

NSString slowText() {
    std::u16string text;
    for (int line = 0; line < 20000; ++line)
        text += u"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\n";
    return NSString(std::move(text));
}

} // namespace

TEST(QVParseAttributedStrings, WhatComesLaterOverridesWhatComesFirst) {
    EXPECT_EQ(drawnRange(styled(blockText, {{u"block", 2}, {u"word", 1}}), u"(a)b", {0, 4}),
              "(|2 a|1 )|2 b|-");
}

TEST(QVParseAttributedStrings, PlacesAreThoseOfTheRange) {
    EXPECT_EQ(drawnRange(styled(blockText, {{u"block", 2}, {u"word", 1}}), u"(ab cd)", {2, 4}, defaults(7)),
              "b|d7 1  |d7 2 cd|d7 1");
}

TEST(QVParseAttributedStrings, AnEmptyRangeGivesAnEmptyString) {
    EXPECT_EQ(drawnRange(styled(wordText, {}), u"ab", {2, 0}, defaults(7)), "");
}

TEST(QVParseAttributedStrings, ARangeOutsideOfTheTextRaises) {
    const auto parse = parseOfText(styled(wordText, {}), u"ab");
    parse->performReadingBlockAndWait([&] {
        for (const NSRange range : {NSRange{1, 2}, NSRange{3, 0}, NSRange{1, ~NSUInteger(0)}}) {
            try {
                parse->attributedStringFromRange(range, {});
                ADD_FAILURE();
            } catch (const NSException &exception) {
                EXPECT_EQ(exception.name(), NSRangeException);
            }
        }
    });
}

TEST(QVParseAttributedStrings, AResetClearsWhatHighlightingHasSetAndBringsTheDefaultsBack) {
    const std::string inner = regionText("plain", "<", ">", subscopesText(wordText), "reset-styles=\"true\"");
    const auto syntax =
        styled(regionText("outer", "\\(", "\\)", subscopesText(inner)), {{u"outer", 2}, {u"word", 1}});
    EXPECT_EQ(drawnRange(syntax, u"(<+a>)", {0, 6}, defaults(7)), "(|d7 2 <+|d7 a|d7 1 >|d7 )|d7 2");
    // Defaults that the outer style replaced come back as well.
    EXPECT_EQ(drawnRange(syntax, u"(<+>)", {0, 5}, {{NSUnderlineStyleAttributeName, 9}}), "(|2 <+>|9 )|2");
}

TEST(QVParseAttributedStrings, TheLexicalClassOfTheOutsideStaysThroughAReset) {
    const std::string inner = regionText("plain", "<", ">", "", "reset-styles=\"true\"");
    const auto syntax =
        styled(regionText("test.comment", "\\(", "\\)", subscopesText(inner)), {{u"test.comment", 2}});
    EXPECT_EQ(drawnRange(syntax, u"(<>)", {0, 4}), "(|2 comment <>|comment )|2 comment");
}

TEST(QVParseAttributedStrings, AnEmbeddedLanguageStartsFromTheDefaults) {
    const auto innerSyntax = syntaxFromXML(syntaxText("inner", scopesText(wordText)));
    setStyles(innerSyntax, {{u"word", 5}});
    const RegisteredSyntax inner(innerSyntax);
    const auto syntax =
        styled(regionText("code", "<", ">", element("subsyntax", named("inner"), "")), {{u"code", 1}});
    EXPECT_EQ(drawnRange(syntax, u"<a +>", {0, 5}, defaults(7)), "<|d7 1 a|d7 5  +|d7 >|d7 1");
}

// Texts without a parse

TEST(QVParseAttributedStrings, ATextIsParsedForItsAttributes) {
    const auto syntax = styled(blockText, {{u"block", 2}, {u"word", 1}});
    EXPECT_EQ(drawn(*QVParse::attributedStringFromString(u"(a)b", syntax, defaults(7))),
              "(|d7 2 a|d7 1 )|d7 2 b|d7");
    EXPECT_EQ(drawn(*QVParse::attributedStringFromString(u"", syntax, defaults(7))), "");
    EXPECT_EQ(drawn(*QVParse::attributedStringFromString(NSString(), syntax, defaults(7))), "");
}

TEST(QVParseAttributedStrings, ATextIsParsedOnAnyThread) {
    const auto syntax = styled(blockText, {{u"block", 2}, {u"word", 1}});
    std::string result;
    std::thread([&] {
        result = drawn(*QVParse::attributedStringFromString(u"(a)b", syntax, defaults(7)));
    }).join();
    EXPECT_EQ(result, "(|d7 2 a|d7 1 )|d7 2 b|d7");
}

TEST(QVParseAttributedStrings, ATextThatTakesTooLongComesWithTheDefaults) {
    const LogRecorder log;
    const NSString text = slowText();
    const auto string = QVParse::attributedStringFromString(text, slowSyntax(), defaults(7), 0.05);
    NSRange range;
    EXPECT_EQ(string->attributesAtIndex(0, &range), defaults(7));
    EXPECT_EQ(range, NSMakeRange(0, text.length()));
}

TEST(QVParseAttributedStrings, TheHandlerGetsTheStringWithoutTheCallerWaiting) {
    const auto syntax = styled(blockText, {{u"block", 2}, {u"word", 1}});
    std::promise<std::shared_ptr<NSAttributedString>> promise;
    std::thread::id handlersThread;
    const auto progress = QVParse::attributedStringFromString(
        u"(a)b", syntax, defaults(7), [&](std::shared_ptr<NSAttributedString> string) {
            handlersThread = std::this_thread::get_id();
            promise.set_value(std::move(string));
        });
    ASSERT_NE(progress, nullptr);
    EXPECT_TRUE(progress->isIndeterminate());
    EXPECT_EQ(drawn(*promise.get_future().get()), "(|d7 2 a|d7 1 )|d7 2 b|d7");
    EXPECT_NE(handlersThread, std::this_thread::get_id());
    EXPECT_FALSE(progress->isCancelled());
}

TEST(QVParseAttributedStrings, AfterCancellingTheHandlerIsNotCalled) {
    const LogRecorder log;
    // Lives as long as the handler does, and tells when that is over.
    struct Token {
        std::promise<void> gone;
        ~Token() { gone.set_value(); }
    };
    auto token = std::make_shared<Token>();
    auto gone = token->gone.get_future();
    std::atomic<bool> called = false;
    const auto progress = QVParse::attributedStringFromString(
        slowText(), slowSyntax(), {},
        [token, &called](const std::shared_ptr<NSAttributedString> &) { called = true; });
    token.reset();
    progress->cancel();
    ASSERT_EQ(gone.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_FALSE(called);
    EXPECT_TRUE(progress->isCancelled());
}

TEST(QVParseAttributedStrings, CancellingBehindTheEndDoesNothing) {
    const auto syntax = styled(blockText, {});
    std::promise<void> done;
    const auto progress = QVParse::attributedStringFromString(
        u"(a)", syntax, {}, [&](const std::shared_ptr<NSAttributedString> &) { done.set_value(); });
    done.get_future().wait();
    progress->cancel();
    EXPECT_TRUE(progress->isCancelled());
}

TEST(QVParseAttributedStrings, WithoutAHandlerThereIsNothingToDo) {
    const AssertionRecorder assertions;
    const auto progress = QVParse::attributedStringFromString(
        u"a", styled(wordText, {}), {}, std::function<void(std::shared_ptr<NSAttributedString>)>());
    EXPECT_NE(progress, nullptr);
    EXPECT_EQ(assertions.messages(),
              std::vector<NSString>{u"Invalid parameter not satisfying: completionHandler != nil"});
}
