#include "Quorvane/EditorConfig/QVEditorConfig.h"

#include "Tests/Support/Recorders.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace quorvane;
using test::TemporaryFolder;

namespace {

using Values = std::map<NSString, NSString>;

/// A folder whose settings come from itself alone, whatever stands in the folders above it.
struct Project : TemporaryFolder {
    explicit Project(const std::string &settings) { write(".editorconfig", "root = true\n" + settings); }
    std::shared_ptr<QVEditorConfig> config(const std::string &file) const {
        return QVEditorConfig::configForFileAtURL(url(file));
    }
};

std::shared_ptr<QVEditorConfig> with(const NSString &key, const NSString &value) {
    return QVEditorConfig::initWithDictionary({{key, value}});
}

} // namespace

TEST(QVEditorConfig, AFileHasTheSettingsOfAllSectionsThatFitItsName) {
    const Project project("[*]\nend_of_line = lf\ncharset = utf-8\n"
                          "[*.py]\nindent_style = space\nindent_size = 4\n"
                          "[*.{c,h}]\nindent_style = tab\ntab_width = 8\n");
    const auto python = project.config("tool.py");
    EXPECT_EQ(python->lineEndings(), u"lf");
    EXPECT_EQ(python->charset(), u"utf-8");
    EXPECT_EQ(python->indentationStyle(), u"space");
    EXPECT_EQ(python->indentationSize(), 4u);
    const auto header = project.config("part.h");
    EXPECT_EQ(header->indentationStyle(), u"tab");
    EXPECT_EQ(header->tabWidth(), 8u);
    EXPECT_EQ(project.config("page.html")->values(),
              (Values{{u"charset", u"utf-8"}, {u"end_of_line", u"lf"}}));
}

TEST(QVEditorConfig, AFolderBelowAddsToTheSettingsAndWinsOverThem) {
    const Project project("[*]\nindent_size = 2\ncharset = latin1\n");
    project.write("inner/.editorconfig", "[*]\nindent_size = 8\ninsert_final_newline = true\n");
    const auto config = project.config("inner/deeper/a.c");
    EXPECT_EQ(config->indentationSize(), 8u);
    EXPECT_EQ(config->insertFinalNewline(), true);
    EXPECT_EQ(config->charset(), u"latin1");
    EXPECT_EQ(project.config("a.c")->insertFinalNewline(), std::nullopt);
}

TEST(QVEditorConfig, ARootFileEndsTheSearchUpwards) {
    const Project project("[*]\ncharset = latin1\n");
    project.write("inner/.editorconfig", "root = true\n[*]\nindent_size = 8\n");
    EXPECT_EQ(project.config("inner/a.c")->charset(), NSString());
}

TEST(QVEditorConfig, NamesThatNobodyKnowsAreKeptToo) {
    const Project project("[*.c]\nBrace_Style = Knee\n");
    // Names come in lower case, and the values of names that aren't the standard's stay as they are written.
    EXPECT_EQ(project.config("a.c")->objectForKey(u"brace_style"), u"Knee");
    EXPECT_EQ(project.config("a.c")->objectForKeyedSubscript(u"brace_style"), u"Knee");
    EXPECT_EQ(project.config("a.c")->objectForKey(u"Brace_Style"), NSString());
}

TEST(QVEditorConfig, PathsAndValuesMayHoldAnyCharacter) {
    const Project project("[gr\xC3\xBC\xC3\x9F*]\nauthor = J\xC3\xB6rg \xF0\x9F\x98\x80\n");
    EXPECT_EQ(project
                  .config("gr\xC3\xBC\xC3\x9F"
                          "e.txt")
                  ->objectForKey(u"author"),
              u"J\u00F6rg \U0001F600");
}

TEST(QVEditorConfig, BytesThatAreNoTextBecomeReplacementCharacters) {
    const Project project("[*]\nauthor = a\xFF z\n");
    EXPECT_EQ(project.config("a")->objectForKey(u"author"), u"a\uFFFD z");
}

TEST(QVEditorConfig, AFileWithoutSettingsHasNone) {
    const Project project("[*.py]\nindent_size = 4\n");
    const auto config = project.config("a.c");
    EXPECT_TRUE(config->values().empty());
    EXPECT_EQ(config->charset(), NSString());
    EXPECT_EQ(config->indentationStyle(), NSString());
    EXPECT_EQ(config->indentationSize(), std::nullopt);
    EXPECT_EQ(config->tabWidth(), std::nullopt);
    EXPECT_EQ(config->lineEndings(), NSString());
    EXPECT_EQ(config->trimTrailingWhitespace(), std::nullopt);
    EXPECT_EQ(config->insertFinalNewline(), std::nullopt);
}

TEST(QVEditorConfig, ABrokenFileGivesNothingAtAll) {
    // The first section is sound and fits, but the place that can't be read takes its settings along.
    const Project project("[*]\nindent_size = 4\n[*.c\nthis is no setting\n");
    EXPECT_TRUE(project.config("a.c")->values().empty());
}

TEST(QVEditorConfig, ABrokenFileAboveTakesTheSettingsBelowAlong) {
    const Project project("[*.c\n");
    project.write("inner/.editorconfig", "[*]\nindent_size = 4\n");
    EXPECT_TRUE(project.config("inner/a.c")->values().empty());
}

TEST(QVEditorConfig, APlaceThatIsNoFullPathHasNoSettings) {
    EXPECT_TRUE(QVEditorConfig::configForFileAtURL(nullptr)->values().empty());
    EXPECT_TRUE(QVEditorConfig::configForFileAtURL(NSURL::fileURLWithPath(u""))->values().empty());
    EXPECT_TRUE(QVEditorConfig::configForFileAtURL(NSURL::fileURLWithPath(u"a.c"))->values().empty());
}

TEST(QVEditorConfig, AFolderInThePlaceOfTheFileIsPassedOver) {
    const Project project("[*]\nindent_size = 4\n");
    std::filesystem::create_directories(project.path() / "inner/.editorconfig");
    EXPECT_EQ(project.config("inner/a.c")->indentationSize(), 4u);
}

TEST(QVEditorConfig, HostilePatternsFitNothing) {
    for (const std::string &pattern :
         {std::string(4000, '['), "[!" + std::string(4000, '*') + "]", "{" + std::string(4000, '{'),
          std::string(100000, '*'), std::string("[\\"), std::string("{9..1}{a..}")}) {
        const Project project("[" + pattern + "]\nindent_size = 4\n");
        EXPECT_EQ(project.config("b.c")->indentationSize(), std::nullopt) << pattern.substr(0, 10);
    }
}

TEST(QVEditorConfig, IsMadeFromADictionaryOrEmpty) {
    const Values values{{u"indent_style", u"tab"}, {u"x", u""}};
    EXPECT_EQ(QVEditorConfig::initWithDictionary(values)->values(), values);
    EXPECT_TRUE(QVEditorConfig::init()->values().empty());
}

TEST(QVEditorConfig, AnEmptyValueIsAValue) {
    EXPECT_EQ(with(u"x", u"")->objectForKey(u"x"), u"");
    EXPECT_EQ(with(u"x", u"")->objectForKey(u"y"), NSString());
}

TEST(QVEditorConfig, ANullKeyIsAsserted) {
    const test::AssertionRecorder assertions;
    EXPECT_EQ(with(u"x", u"1")->objectForKey(nullptr), NSString());
    EXPECT_EQ(assertions.messages(),
              (std::vector<NSString>{u"Invalid parameter not satisfying: key != nil"}));
}

TEST(QVEditorConfig, AnIndentationOfOneTabIsAsWideAsATab) {
    EXPECT_EQ(QVEditorConfig::initWithDictionary({{u"indent_size", u"tab"}, {u"tab_width", u"8"}})
                  ->indentationSize(),
              8u);
    EXPECT_EQ(with(u"indent_size", u"tab")->indentationSize(), std::nullopt);
    // The word is compared as it stands.
    EXPECT_EQ(with(u"indent_size", u"Tab")->indentationSize(), 0u);
}

TEST(QVEditorConfig, NumbersAreReadAsFarAsTheyGo) {
    EXPECT_EQ(with(u"indent_size", u"")->indentationSize(), std::nullopt);
    EXPECT_EQ(with(u"indent_size", u" 3 columns")->indentationSize(), 3u);
    EXPECT_EQ(with(u"indent_size", u"wide")->indentationSize(), 0u);
    EXPECT_EQ(with(u"indent_size", u"-1")->indentationSize(), ~NSUInteger(0));
    EXPECT_EQ(with(u"tab_width", u"6")->tabWidth(), 6u);
    EXPECT_EQ(with(u"tab_width", u"wide")->tabWidth(), 0u);
    // Unlike an empty size of the indentation.
    EXPECT_EQ(with(u"tab_width", u"")->tabWidth(), 0u);
}

TEST(QVEditorConfig, TrueInAnyMixOfCasesIsYesAndEveryOtherWordIsNo) {
    for (const char16_t *yes : {u"true", u"TRUE", u"tRuE"}) {
        EXPECT_EQ(with(u"trim_trailing_whitespace", yes)->trimTrailingWhitespace(), true);
        EXPECT_EQ(with(u"insert_final_newline", yes)->insertFinalNewline(), true);
    }
    for (const char16_t *no : {u"false", u"yes", u"1", u"", u"true "}) {
        EXPECT_EQ(with(u"trim_trailing_whitespace", no)->trimTrailingWhitespace(), false);
        EXPECT_EQ(with(u"insert_final_newline", no)->insertFinalNewline(), false);
    }
}

TEST(QVEditorConfig, TextsAreAnsweredAsTheyStand) {
    EXPECT_EQ(with(u"charset", u"UTF-8")->charset(), u"UTF-8");
    EXPECT_EQ(with(u"indent_style", u"Odd")->indentationStyle(), u"Odd");
    EXPECT_EQ(with(u"end_of_line", u"crlf")->lineEndings(), u"crlf");
}
