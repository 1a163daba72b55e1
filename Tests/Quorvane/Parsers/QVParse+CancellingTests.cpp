#include "Host/QVMatchTreeText.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Quorvane/Packages/QVLoadable.h"
#include "Tests/Quorvane/Parsers/AccessFixtures.h"
#include "Tests/Support/Recorders.h"

#include <gmock/gmock.h>

using namespace quorvane;
using namespace quorvane::test;

namespace {

/// Calls back in the middle of a parse.
class Interruption : public QVParseDelegate {
public:
    explicit Interruption(std::function<void(QVParse &)> block) : _block(std::move(block)) {}
    bool parseLogDiagnosticMessage(QVParse &parse, const NSString &, NSUInteger) override {
        if (++count == 1)
            _block(parse);
        return true;
    }
    std::atomic<int> count = 0;

private:
    std::function<void(QVParse &)> _block;
};

/// A syntax that has something to say about every line, as it has a pattern that matches nothing.
std::shared_ptr<QVSyntax> talkativeSyntax() {
    return syntaxWithScopes(single("empty", "y*") + single("w", "\\w+"));
}

std::u16string lines(int count) {
    std::u16string content;
    for (int line = 0; line < count; ++line)
        content += u"x\n";
    return content;
}

void postUnloading() {
    NSNotificationCenter::defaultCenter().postNotification({QVLoadableWillUnloadPackagesNotification});
}

/// Both kinds of queue.
class Cancelling : public testing::TestWithParam<QVParseConcurrencyType> {
protected:
    std::shared_ptr<QVParse> parseOf(std::shared_ptr<QVSyntax> syntax) const {
        return QVParse::initWithSyntax(std::move(syntax), 0, GetParam());
    }
    static NSRange append(QVParse &parse, std::u16string_view content) {
        NSRange result{};
        parse.performWritingBlockAndWait([&] {
            result = parse.replaceCharactersInRange({parse.string().size(), 0}, content, nullptr);
        });
        return result;
    }
    /// Lets run what was submitted.
    void settle(QVParse &parse) const {
        if (GetParam() == QVParseMainQueueConcurrencyType)
            MainQueue::drain();
        else
            waitForQueue(parse);
    }
};

INSTANTIATE_TEST_SUITE_P(Queues, Cancelling,
                         testing::Values(QVParsePrivateQueueConcurrencyType,
                                         QVParseMainQueueConcurrencyType));

} // namespace

TEST_P(Cancelling, EmptiesTheTreeAndKeepsTheText) {
    const auto parse = parseOf(talkativeSyntax());
    append(*parse, u"x x");
    EXPECT_FALSE(parse->isCancelled());
    parse->cancelParsing();
    settle(*parse);
    EXPECT_FALSE(parse->isCancelled());
    parse->performReadingBlockAndWait([&] {
        EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
        EXPECT_TRUE(parse->symbols().empty());
        ASSERT_TRUE(parse->bracketLocationsByDepth());
        EXPECT_TRUE(parse->bracketLocationsByDepth()->empty());
        EXPECT_EQ(parse->string(), u"x x");
    });
}

TEST_P(Cancelling, MakesTheNextEditParseTheWholeText) {
    const auto parse = parseOf(syntaxWithScopes(single("w", "\\w+")));
    append(*parse, lines(100));
    parse->cancelParsing();
    settle(*parse);
    EXPECT_EQ(append(*parse, u"y"), (NSRange{0, 201}));
    parse->performReadingBlockAndWait([&] { EXPECT_EQ(parse->rootMatch()->submatches().count(), 201u); });
}

TEST_P(Cancelling, IsSeenAtOnceOnEveryThread) {
    const auto parse = parseOf(talkativeSyntax());
    parse->performWritingBlockAndWait([&] {
        std::thread([&] { parse->cancelParsing(); }).join();
        EXPECT_TRUE(parse->isCancelled());
        // An edit meanwhile changes nothing.
        EXPECT_EQ(parse->replaceCharactersInRange({0, 0}, u"x", nullptr), NSNotFoundRange);
        EXPECT_EQ(parse->string(), u"");
        EXPECT_FALSE(parse->isParsing());
    });
    settle(*parse);
    EXPECT_FALSE(parse->isCancelled());
}

TEST_P(Cancelling, StopsARunningParse) {
    const auto parse = parseOf(talkativeSyntax());
    const auto interruption = std::make_shared<Interruption>([](QVParse &running) {
        EXPECT_TRUE(running.isParsing());
        std::thread([&] { running.cancelParsing(); }).join();
    });
    parse->setDelegate(interruption);
    EXPECT_EQ(append(*parse, lines(1000)), NSNotFoundRange);
    EXPECT_FALSE(parse->isParsing());
    // The line it was at may have had more to say.
    EXPECT_LT(interruption->count, 5);
    settle(*parse);
    EXPECT_FALSE(parse->isCancelled());
    parse->performReadingBlockAndWait([&] {
        EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
        EXPECT_EQ(parse->string().size(), 2000u);
    });
}

TEST_P(Cancelling, FromInsideAParseWaitsUntilTheParseIsThrough) {
    // The tree and the resolved includes went away under the parser's feet.
    const RegisteredSyntax other(syntaxFromXML(
        "<syntax name='other'><scopes>" + single("empty", "y*") + single("w", "\\w") +
        region("r", "\\(", "\\)", holding("<include syntax='other'/>")) + "</scopes></syntax>"));
    for (const bool remembers : {true, false}) {
        const auto parse = parseOf(syntaxWithScopes("<include syntax='other'/>"));
        parse->setRemembersSearches(remembers);
        const auto interruption =
            std::make_shared<Interruption>([](QVParse &running) { running.cancelParsing(); });
        parse->setDelegate(interruption);
        EXPECT_EQ(append(*parse, u"((a\n" + lines(1000)), NSNotFoundRange);
        settle(*parse);
        EXPECT_FALSE(parse->isCancelled());
        parse->performReadingBlockAndWait([&] { EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty()); });
        EXPECT_EQ(append(*parse, u"z"), (NSRange{0, 2005}));
    }
}

TEST_P(Cancelling, InsideACallbackWithoutAParseIsDoneAtOnce) {
    const auto parse = parseOf(talkativeSyntax());
    append(*parse, u"x");
    parse->performWritingBlockAndWait([&] {
        parse->cancelParsing();
        EXPECT_FALSE(parse->isCancelled());
        EXPECT_TRUE(parse->rootMatch()->submatches().isEmpty());
    });
}

TEST(QVParseCancelling, TwiceInARowIsCancellingOnce) {
    const auto parse = parseOfWords();
    {
        const BusyQueue busy(*parse);
        parse->cancelParsing();
        parse->performWritingBlock([&] {
            EXPECT_FALSE(parse->isCancelled());
            EXPECT_EQ(parse->replaceCharactersInRange({0, 0}, u"a b", nullptr), (NSRange{0, 3}));
        });
        // Done a second time, it would empty the tree behind the edit.
        EXPECT_TRUE(parse->isCancelled());
        parse->cancelParsing();
    }
    parse->performReadingBlockAndWait([&] { EXPECT_EQ(parse->rootMatch()->submatches().count(), 3u); });
    EXPECT_FALSE(parse->isCancelled());
}

// Packages that go

TEST_P(Cancelling, UnloadingPackagesMakesIncludesResolveAnew) {
    QVSyntax::setSyntax(
        syntaxFromXML("<syntax name='other'><scopes>" + single("old", "o") + "</scopes></syntax>"), u"other");
    const auto parse = parseOf(syntaxWithScopes("<include syntax='other'/>"));
    append(*parse, u"o");
    QVSyntax::setSyntax(
        syntaxFromXML("<syntax name='other'><scopes>" + single("new", "o") + "</scopes></syntax>"), u"other");
    postUnloading();
    settle(*parse);
    append(*parse, u"o");
    parse->performReadingBlockAndWait([&] {
        EXPECT_EQ(QVMatchTreeText(*parse), "Root test.root -\n  Match new [0,1]\n  Match new [1,1]\n");
    });
    QVSyntax::setSyntax(nullptr, u"other");
}

TEST_P(Cancelling, TheTreeOutlivesThePackagesOfItsScopes) {
    auto other = syntaxFromXML("<syntax name='other'><scopes>" + single("o", "o") + "</scopes></syntax>");
    QVSyntax::setSyntax(other, u"other");
    const auto parse = parseOf(syntaxWithScopes("<include syntax='other'/>" +
                                                region("sub", "\\[", "\\]", "<subsyntax name='other'/>")));
    append(*parse, u"o[o]");
    postUnloading();
    settle(*parse);
    QVSyntax::setSyntax(nullptr, u"other");
    const std::weak_ptr<QVSyntax> weak = other;
    other = nullptr;
    parse->performReadingBlockAndWait([&] {
        EXPECT_EQ(QVMatchTreeText(*parse), "Root test.root -\n"
                                           "  Match o [0,1]\n"
                                           "  StartEnd sub [1,1] end[3,1]\n"
                                           "    Match o [2,1]\n");
    });
    // What is gone is not found again.
    append(*parse, u"o");
    parse->performReadingBlockAndWait([&] {
        EXPECT_EQ(QVMatchTreeText(*parse), "Root test.root -\n"
                                           "  Unknown test.unknown [0,1]\n"
                                           "  StartEnd sub [1,1] end[3,1]\n"
                                           "    Unknown test.unknown [2,1]\n"
                                           "  Unknown test.unknown [4,1]\n");
    });
    EXPECT_TRUE(weak.expired());
}

TEST_P(Cancelling, PackagesMayBeUnloadedFromInsideAParse) {
    const RegisteredSyntax other(syntaxFromXML(
        "<syntax name='other'><scopes>" + single("empty", "y*") + single("w", "\\w+") +
        region("r", "\\(", "\\)", holding("<include syntax='other'/>")) + "</scopes></syntax>"));
    for (const bool remembers : {true, false}) {
        const auto parse = parseOf(syntaxWithScopes("<include syntax='other'/>"));
        parse->setRemembersSearches(remembers);
        const auto interruption = std::make_shared<Interruption>([](QVParse &) { postUnloading(); });
        parse->setDelegate(interruption);
        EXPECT_EQ(append(*parse, u"(a)"), (NSRange{0, 3}));
        settle(*parse);
        parse->performReadingBlockAndWait([&] {
            EXPECT_EQ(QVMatchTreeText(*parse), "Root test.root -\n"
                                               "  StartEnd r [0,1] end[2,1]\n"
                                               "    Match w [1,1]\n");
        });
    }
}

TEST(QVParseCancelling, UnloadingPackagesDoesNotReachAParseThatIsGone) {
    std::weak_ptr<QVParse> weak;
    {
        const auto parse = parseOfWords();
        weak = parse;
    }
    EXPECT_TRUE(weak.expired());
    postUnloading();
}

// Settings

TEST(QVParseCancelling, SettingsMayChangeWhileAParseRuns) {
    const auto parse = QVParse::initWithSyntax(talkativeSyntax(), 0, QVParsePrivateQueueConcurrencyType);
    const auto quiet = std::make_shared<Interruption>([](QVParse &) {});
    parse->setDelegate(quiet);
    const Gate done;
    std::atomic<bool> finished = false;
    parse->performWritingBlock([&] {
        parse->replaceCharactersInRange({0, 0}, lines(2000), nullptr);
        finished = true;
        done.open();
    });
    for (NSUInteger round = 0; !finished; ++round) {
        parse->setTabWidth(round);
        parse->setMaximumLineLength(round % 2 * 10);
        parse->setPerformanceCollectionEnabled(round % 2 != 0);
        parse->setRemembersSearches(round % 2 != 0);
        parse->setDelegate(quiet);
        EXPECT_EQ(parse->delegate(), quiet);
        EXPECT_EQ(parse->tabWidth(), round);
    }
    done.pass();
    parse->performReadingBlockAndWait([&] { EXPECT_EQ(parse->rootMatch()->submatches().count(), 4000u); });
}
