#include "Platform/Foundation/NSRegularExpression.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Detectors/QVDetector.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/XMLFixtures.h"

#include <cmath>

using namespace quorvane;
using namespace quorvane::test;

namespace {

std::shared_ptr<QVDetector> detectorOf(std::string_view xml) {
    return QVDetector::detectorWithElement(*elementOf(xml));
}

float confidence(std::string_view xml, const NSString &string, const NSString &filename) {
    return detectorOf(xml)->confidenceForString(string, filename);
}

float extensionConfidence(std::string_view extensions, const NSString &filename) {
    return confidence("<extension>" + std::string(extensions) + "</extension>", nullptr, filename);
}

/// A detector that answers one number, to see how others combine it.
class FixedDetector final : public QVDetector {
public:
    explicit FixedDetector(float answer, int *asked = nullptr) : _answer(answer), _asked(asked) {}
    float confidenceForString(const NSString &, const NSString &) const override {
        if (_asked)
            ++*_asked;
        return _answer;
    }

private:
    float _answer;
    int *_asked;
};

} // namespace

TEST(QVDetector, AnUnknownElementGivesNoDetector) {
    EXPECT_EQ(detectorOf("<magic>abc</magic>"), nullptr);
    EXPECT_EQ(detectorOf("<Extension>abc</Extension>"), nullptr);
}

TEST(QVDetector, EachElementGivesItsClass) {
    EXPECT_EQ(detectorOf("<combo/>")->className(), u"QVCompoundDetector");
    EXPECT_EQ(detectorOf("<extension>a</extension>")->className(), u"QVExtensionDetector");
    EXPECT_EQ(detectorOf("<filename>a</filename>")->className(), u"QVFilenameDetector");
    EXPECT_EQ(detectorOf("<match-content>a</match-content>")->className(), u"QVRegularExpressionDetector");
}

TEST(QVDetector, ThePriorityIsHeldBetweenZeroAndOne) {
    EXPECT_EQ(detectorOf("<filename priority='5'>a</filename>")->priority(), 1.0f);
    EXPECT_EQ(detectorOf("<filename priority='-2'>a</filename>")->priority(), 0.0f);
    EXPECT_EQ(detectorOf("<filename priority='0.25'>a</filename>")->priority(), 0.25f);
}

TEST(QVDetector, WithoutAPriorityItIsATenth) {
    EXPECT_EQ(detectorOf("<filename>a</filename>")->priority(), 0.1f);
}

TEST(QVDetector, APriorityThatIsNoNumberIsZero) {
    EXPECT_EQ(detectorOf("<filename priority='high'>a</filename>")->priority(), 0.0f);
    EXPECT_EQ(detectorOf("<filename priority=''>a</filename>")->priority(), 0.0f);
    EXPECT_FALSE(std::isnan(detectorOf("<filename priority='nan'>a</filename>")->priority()));
}

TEST(QVDetector, TheBaseClassFitsNothing) {
    EXPECT_EQ(std::make_shared<QVDetector>()->confidenceForString(u"text", u"name"), 0.0f);
    EXPECT_EQ(std::make_shared<QVDetector>()->priority(), 0.0f);
}

// Extensions

TEST(QVExtensionDetector, AnExtensionOfTheListFitsFully) {
    EXPECT_EQ(extensionConfidence("cc, hh", u"main.cc"), 1.0f);
    EXPECT_EQ(extensionConfidence("cc, hh", u"main.hh"), 1.0f);
    EXPECT_EQ(extensionConfidence("cc, hh", u"main.c"), 0.0f);
}

TEST(QVExtensionDetector, CaseMakesNoDifferenceOnEitherSide) {
    EXPECT_EQ(extensionConfidence("Cc", u"MAIN.cC"), 1.0f);
}

TEST(QVExtensionDetector, ItemsAreTrimmedOfBlanksAndTabsButNotOfNewlines) {
    const auto detector = detectorOf("<extension>\t a ,b\n</extension>");
    EXPECT_EQ(std::dynamic_pointer_cast<QVExtensionDetector>(detector)->extensions(),
              (std::set<NSString>{u"a", u"b\n"}));
}

TEST(QVExtensionDetector, AnEmptyItemStandsForNoExtension) {
    EXPECT_EQ(extensionConfidence("a,,b", u"makefile"), 1.0f);
    EXPECT_EQ(extensionConfidence("", u"makefile"), 1.0f);
    EXPECT_EQ(extensionConfidence("a,b", u"makefile"), 0.0f);
}

TEST(QVExtensionDetector, AHiddenFileIsAnExtensionAsAWhole) {
    EXPECT_EQ(extensionConfidence("profile", u".profile"), 1.0f);
}

TEST(QVExtensionDetector, AHiddenFileKeepsItsCaseAndSoCannotFitWithCapitals) {
    EXPECT_EQ(extensionConfidence("profile", u".Profile"), 0.0f);
}

TEST(QVExtensionDetector, AHiddenFileWithAFurtherDotHasAPlainExtension) {
    EXPECT_EQ(extensionConfidence("json", u".config.JSON"), 1.0f);
    EXPECT_EQ(extensionConfidence("config.json", u".config.json"), 0.0f);
}

TEST(QVExtensionDetector, OfTwoDotsTheLastPartAloneFitsHalf) {
    EXPECT_EQ(extensionConfidence("html", u"page.tpl.HTML"), 0.5f);
    EXPECT_EQ(extensionConfidence("tpl.html", u"page.tpl.html"), 1.0f);
    EXPECT_EQ(extensionConfidence("tpl", u"page.tpl.html"), 0.0f);
    EXPECT_EQ(extensionConfidence("html", u"page.a.b.html"), 0.5f);
    EXPECT_EQ(extensionConfidence("b.html", u"page.a.b.html"), 0.0f);
}

TEST(QVExtensionDetector, ANameThatIsOnlyDotsIsNoTrap) {
    EXPECT_EQ(extensionConfidence("a", u"."), 0.0f);
    EXPECT_EQ(extensionConfidence("a", u".."), 0.0f);
    EXPECT_EQ(extensionConfidence("a", u"name."), 0.0f);
    EXPECT_EQ(extensionConfidence("a", u""), 0.0f);
}

TEST(QVExtensionDetector, WithoutANameNothingFits) { EXPECT_EQ(extensionConfidence("a,", nullptr), 0.0f); }

// Names

TEST(QVFilenameDetector, TheWholeNameFitsWithoutRegardToCase) {
    EXPECT_EQ(confidence("<filename>Makefile, GNUmakefile</filename>", nullptr, u"makefile"), 1.0f);
    EXPECT_EQ(confidence("<filename>Makefile, GNUmakefile</filename>", nullptr, u"GNUMAKEFILE"), 1.0f);
    EXPECT_EQ(confidence("<filename>Makefile</filename>", nullptr, u"Makefile.am"), 0.0f);
    EXPECT_EQ(confidence("<filename>Makefile,</filename>", u"text", nullptr), 0.0f);
}

// Content

TEST(QVRegularExpressionDetector, LooksAtTenLinesByDefault) {
    const auto detector = std::dynamic_pointer_cast<QVRegularExpressionDetector>(
        detectorOf("<match-content>mark</match-content>"));
    EXPECT_EQ(detector->numberOfLines(), 10u);
    EXPECT_EQ(detector->confidenceForString(u"1\n2\n3\n4\n5\n6\n7\n8\n9\nmark", nullptr), 1.0f);
    EXPECT_EQ(detector->confidenceForString(u"1\n2\n3\n4\n5\n6\n7\n8\n9\n10\nmark", nullptr), 0.0f);
}

TEST(QVRegularExpressionDetector, LinesOfAnyKindCount) {
    const std::string_view xml = "<match-content lines='2'>mark</match-content>";
    EXPECT_EQ(confidence(xml, u"1\r\nmark", nullptr), 1.0f);
    EXPECT_EQ(confidence(xml, u"1\r\n2\r\nmark", nullptr), 0.0f);
    EXPECT_EQ(confidence(xml, u"1\r2\rmark", nullptr), 0.0f);
    EXPECT_EQ(confidence(xml,
                         u"1\x0085"
                         u"2\x2028mark",
                         nullptr),
              0.0f);
    EXPECT_EQ(confidence(xml, u"1\x2029mark", nullptr), 1.0f);
}

TEST(QVRegularExpressionDetector, TheLastLinesTerminatorIsInsideTheArea) {
    EXPECT_EQ(confidence("<match-content lines='1'>a\\n</match-content>", u"a\nb", nullptr), 1.0f);
    EXPECT_EQ(confidence("<match-content lines='1'>a\\r\\n</match-content>", u"a\r\nb", nullptr), 1.0f);
}

TEST(QVRegularExpressionDetector, ZeroLinesStandForTheWholeText) {
    const NSString text(std::u16string(1000, u'\n') + u"mark");
    EXPECT_EQ(confidence("<match-content lines='0'>mark</match-content>", text, nullptr), 1.0f);
    EXPECT_EQ(confidence("<match-content lines='1001'>mark</match-content>", text, nullptr), 1.0f);
    EXPECT_EQ(confidence("<match-content lines='1000'>mark</match-content>", text, nullptr), 0.0f);
}

TEST(QVRegularExpressionDetector, AnchorsActAtLines) {
    EXPECT_EQ(confidence("<match-content>^b$</match-content>", u"a\nb\nc", nullptr), 1.0f);
}

TEST(QVRegularExpressionDetector, ABadPatternNeverFits) {
    const auto detector = std::dynamic_pointer_cast<QVRegularExpressionDetector>(
        detectorOf("<match-content>(</match-content>"));
    ASSERT_NE(detector, nullptr);
    EXPECT_EQ(detector->regularExpression(), nullptr);
    EXPECT_EQ(detector->confidenceForString(u"(", nullptr), 0.0f);
}

TEST(QVRegularExpressionDetector, WithoutATextNothingFits) {
    EXPECT_EQ(confidence("<match-content>a*</match-content>", nullptr, u"aaa"), 0.0f);
    EXPECT_EQ(confidence("<match-content>a*</match-content>", u"", nullptr), 1.0f);
}

// Combinations

TEST(QVCompoundDetector, ANameIsPassedOver) {
    const auto detector = std::dynamic_pointer_cast<QVCompoundDetector>(
        detectorOf("<combo><filename>a</filename><match-content>x</match-content><extension>b</extension>"
                   "<combo/></combo>"));
    ASSERT_EQ(detector->children().size(), 3u);
    EXPECT_EQ(detector->children()[0]->className(), u"QVRegularExpressionDetector");
    EXPECT_EQ(detector->children()[1]->className(), u"QVExtensionDetector");
    EXPECT_EQ(detector->children()[2]->className(), u"QVCompoundDetector");
}

TEST(QVCompoundDetector, WithoutChildrenNothingFits) {
    EXPECT_EQ(confidence("<combo/>", u"a", u"a.a"), 0.0f);
}

TEST(QVCompoundDetector, OneThatDoesNotFitMakesTheWholeNotFit) {
    const std::string_view xml =
        "<combo><extension>h</extension><match-content>template</match-content></combo>";
    EXPECT_EQ(confidence(xml, u"int a;", u"a.h"), 0.0f);
    EXPECT_EQ(confidence(xml, u"template", u"a.h"), 1.0f);
    EXPECT_EQ(confidence(xml, u"template", u"a.c"), 0.0f);
}

TEST(QVCompoundDetector, TheAnswerIsTheMeanWithoutPriorities) {
    // A half and a whole; the priorities of the children would make it far less.
    const std::string_view xml = "<combo><extension priority='0.1'>h</extension>"
                                 "<match-content priority='0.2'>x</match-content></combo>";
    EXPECT_EQ(confidence(xml, u"x", u"a.b.h"), 0.75f);
}

TEST(QVCompoundDetector, TheFirstZeroEndsTheAsking) {
    int asked = 0;
    QVCompoundDetector detector;
    detector.setChildren({std::make_shared<FixedDetector>(1.0f, &asked),
                          std::make_shared<FixedDetector>(0.0f, &asked),
                          std::make_shared<FixedDetector>(1.0f, &asked)});
    EXPECT_EQ(detector.confidenceForString(nullptr, nullptr), 0.0f);
    EXPECT_EQ(asked, 2);
}

// Archives and copies

TEST(QVDetector, ArchivesItsFieldsUnderTheirNames) {
    using Keys = std::vector<std::string>;
    EXPECT_EQ(archivedKeys(*detectorOf("<combo/>")), (Keys{"children: array", "priority: float"}));
    EXPECT_EQ(archivedKeys(*detectorOf("<extension/>")), (Keys{"extensions: string set", "priority: float"}));
    EXPECT_EQ(archivedKeys(*detectorOf("<filename/>")), (Keys{"filenames: string set", "priority: float"}));
    EXPECT_EQ(archivedKeys(*detectorOf("<match-content>a</match-content>")),
              (Keys{"numberOfLines: integer", "priority: float", "regularExpression: NSRegularExpression"}));
}

TEST(QVDetector, SurvivesATripThroughAnArchive) {
    const auto original = std::dynamic_pointer_cast<QVCompoundDetector>(
        detectorOf("<combo priority='0.5'><extension priority='0.25'>a,b</extension>"
                   "<match-content lines='3'>^x</match-content></combo>"));
    auto children = original->children();
    children.push_back(detectorOf("<filename>n</filename>"));
    original->setChildren(std::move(children));

    const auto copy = throughArchive<QVDetector>(original);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->priority(), 0.5f);
    const auto compound = std::dynamic_pointer_cast<QVCompoundDetector>(copy);
    ASSERT_EQ(compound->children().size(), 3u);
    EXPECT_EQ(compound->children()[0]->priority(), 0.25f);
    EXPECT_EQ(std::dynamic_pointer_cast<QVExtensionDetector>(compound->children()[0])->extensions(),
              (std::set<NSString>{u"a", u"b"}));
    const auto content = std::dynamic_pointer_cast<QVRegularExpressionDetector>(compound->children()[1]);
    EXPECT_EQ(content->numberOfLines(), 3u);
    EXPECT_EQ(content->regularExpression()->pattern(), u"^x");
    EXPECT_EQ(content->regularExpression()->options(), NSRegularExpressionAnchorsMatchLines);
    EXPECT_EQ(std::dynamic_pointer_cast<QVFilenameDetector>(compound->children()[2])->filenames(),
              (std::set<NSString>{u"n"}));
}

TEST(QVDetector, ACopyOfACombinationCopiesItsChildren) {
    const auto original = std::dynamic_pointer_cast<QVCompoundDetector>(
        detectorOf("<combo priority='0.5'><extension priority='0.25'>a</extension></combo>"));
    const auto copy = std::dynamic_pointer_cast<QVCompoundDetector>(original->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->priority(), 0.5f);
    ASSERT_EQ(copy->children().size(), 1u);
    EXPECT_NE(copy->children()[0], original->children()[0]);
    EXPECT_EQ(copy->children()[0]->priority(), 0.25f);
    EXPECT_EQ(copy->children()[0]->confidenceForString(nullptr, u"x.a"), 1.0f);
}

TEST(QVDetector, AnArchiveThatContainsItselfIsRefused) {
    const auto detector = std::make_shared<QVCompoundDetector>();
    detector->setChildren({detector});
    const NSData archive = NSKeyedArchiver::archivedDataWithRootObject(detector);
    detector->setChildren({});
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVDetector>(archive, &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), NSString(NSCocoaErrorDomain));
    EXPECT_EQ(error->code(), 4864);
}

TEST(QVDetector, AnArchiveWithOneChildInTwoPlacesIsRefused) {
    // Twice in each of thirty levels would be asked a thousand million times.
    auto detector = std::make_shared<QVCompoundDetector>();
    for (int level = 0; level < 30; ++level) {
        auto parent = std::make_shared<QVCompoundDetector>();
        parent->setChildren({detector, detector});
        detector = parent;
    }
    const NSData archive = NSKeyedArchiver::archivedDataWithRootObject(detector);
    std::shared_ptr<NSError> error;
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<QVDetector>(archive, &error), nullptr);
    EXPECT_NE(error, nullptr);
}
