#include "Quorvane/Completions/QVCompletionSet.h"

#include "Platform/Foundation/NSException.h"
#include "Platform/Foundation/QVLimits.h"
#include "Quorvane/Completions/QVCompletion.h"
#include "Quorvane/Completions/QVCompletionBehavior.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/QuorvaneErrors.h"
#include "Quorvane/Symbols/QVSymbolTypes.h"
#include "Tests/Support/CodingFixtures.h"
#include "Tests/Support/Recorders.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/XMLFixtures.h"

#include <atomic>
#include <thread>

using namespace quorvane;
using namespace quorvane::test;

namespace {

QVCompletionSet::Sets setsOf(std::string_view xml) {
    std::shared_ptr<NSError> error;
    auto sets = QVCompletionSet::completionSetsWithDocument(*documentOf(xml), nullptr, &error);
    EXPECT_EQ(error, nullptr);
    EXPECT_TRUE(sets.has_value());
    return sets.value_or(QVCompletionSet::Sets());
}

std::vector<NSString> stringsOf(const QVCompletionSet &set) {
    std::vector<NSString> strings;
    for (const auto &completion : *set.completions())
        strings.push_back(completion->string());
    return strings;
}

std::shared_ptr<QVCompletionSet> setWithStrings(const std::vector<NSString> &strings) {
    QVCompletionSet::Completions completions;
    for (const NSString &string : strings) {
        completions.push_back(std::make_shared<QVCompletion>());
        completions.back()->setString(string);
    }
    auto set = std::make_shared<QVCompletionSet>();
    set->setCompletions(std::move(completions));
    return set;
}

/// An archived set with these bytes in place of its completions.
std::shared_ptr<QVCompletionSet> setWithData(NSData data) {
    class Writer final : public NSSecureCoding {
    public:
        explicit Writer(NSData data) : _data(std::move(data)) {}
        const NSCodingClass &classForCoder() const override { return QVCompletionSet::codingClass(); }
        void encodeWithCoder(NSCoder &coder) const override { coder.encodeData(_data, u"completionsData"); }
        std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &,
                                                      std::shared_ptr<NSSecureCoding> self) override {
            return self;
        }

    private:
        NSData _data;
    };
    auto set = NSKeyedUnarchiver::unarchivedObjectOfClass<QVCompletionSet>(
        NSKeyedArchiver::archivedDataWithRootObject(std::make_shared<Writer>(std::move(data))));
    EXPECT_NE(set, nullptr);
    return set ? set : std::make_shared<QVCompletionSet>();
}

using Texts = std::vector<NSString>;

} // namespace

// MARK: - The registry

TEST(QVCompletionSet, IsFoundByTheNameItWasRegisteredUnder) {
    const auto set = std::make_shared<QVCompletionSet>();
    QVCompletionSet::setCompletionSet(set, u"registry.one");
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"registry.one"), set);
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"registry.two"), nullptr);
    EXPECT_EQ(QVCompletionSet::allCompletionSets().at(u"registry.one"), set);
    QVCompletionSet::setCompletionSet(nullptr, u"registry.one");
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"registry.one"), nullptr);
    EXPECT_FALSE(QVCompletionSet::allCompletionSets().contains(u"registry.one"));
}

TEST(QVCompletionSet, ANameRegisteredAgainStandsForTheLaterSet) {
    const auto first = std::make_shared<QVCompletionSet>();
    const auto second = std::make_shared<QVCompletionSet>();
    QVCompletionSet::setCompletionSet(first, u"registry.again");
    QVCompletionSet::setCompletionSet(second, u"registry.again");
    EXPECT_EQ(QVCompletionSet::completionSetForName(u"registry.again"), second);
    QVCompletionSet::setCompletionSet(nullptr, u"registry.again");
}

TEST(QVCompletionSet, RemovingANameThatIsNotRegisteredDoesNothing) {
    const auto before = QVCompletionSet::allCompletionSets();
    QVCompletionSet::setCompletionSet(nullptr, u"registry.unknown");
    EXPECT_EQ(QVCompletionSet::allCompletionSets(), before);
}

TEST(QVCompletionSet, AllCompletionSetsAreASnapshot) {
    QVCompletionSet::setCompletionSet(std::make_shared<QVCompletionSet>(), u"registry.snapshot");
    const auto snapshot = QVCompletionSet::allCompletionSets();
    QVCompletionSet::setCompletionSet(nullptr, u"registry.snapshot");
    EXPECT_TRUE(snapshot.contains(u"registry.snapshot"));
}

TEST(QVCompletionSet, ANullNameIsAsserted) {
    const AssertionRecorder assertions;
    QVCompletionSet::completionSetForName(nullptr);
    QVCompletionSet::setCompletionSet(nullptr, nullptr);
    EXPECT_EQ(assertions.messages(), (Texts{u"Invalid parameter not satisfying: name != nil",
                                            u"Invalid parameter not satisfying: name != nil"}));
}

// MARK: - The file

TEST(QVCompletionSet, AFileGivesItsSetsByName) {
    const auto sets =
        setsOf("<completions><set name='a'><completion string='x'/><completion string='y'/></set>"
               "<set name='b'/></completions>");
    ASSERT_EQ(sets.size(), 2u);
    EXPECT_EQ(stringsOf(*sets.at(u"a")), (Texts{u"x", u"y"}));
    EXPECT_EQ(stringsOf(*sets.at(u"b")), Texts());
}

TEST(QVCompletionSet, AFileIsReadFromItsPlace) {
    const TemporaryFolder folder;
    folder.write("words.xml", "<completions><set name='a'><completion string='x'/></set>"
                              "<provider name='p'/></completions>");
    std::vector<std::shared_ptr<QVCompletionProvider>> providers;
    std::shared_ptr<NSError> error;
    const auto sets =
        QVCompletionSet::completionSetsWithContentsOfURL(folder.url("words.xml"), &providers, &error);
    ASSERT_TRUE(sets.has_value());
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(stringsOf(*sets->at(u"a")), (Texts{u"x"}));
    ASSERT_EQ(providers.size(), 1u);
    EXPECT_EQ(providers[0]->name(), u"p");
    EXPECT_TRUE(QVCompletionSet::completionSetsWithContentsOfURL(folder.url("words.xml")).has_value());
}

TEST(QVCompletionSet, AFileThatIsMissingOrNoXMLGivesAnError) {
    const TemporaryFolder folder;
    folder.write("broken.xml", "<completions>\n  <set></completions>");
    for (const char *const name : {"missing.xml", "broken.xml"}) {
        std::shared_ptr<NSError> error;
        EXPECT_FALSE(
            QVCompletionSet::completionSetsWithContentsOfURL(folder.url(name), nullptr, &error).has_value());
        ASSERT_NE(error, nullptr) << name;
        EXPECT_EQ(error->domain(), NSString(QVXMLDocumentErrorDomain)) << name;
        EXPECT_FALSE(QVCompletionSet::completionSetsWithContentsOfURL(folder.url(name)).has_value());
    }
}

TEST(QVCompletionSet, ASetWithoutANameIsSkipped) {
    const auto sets = setsOf("<completions><set name=''><completion string='x'/></set>"
                             "<set><completion string='y'/></set><set name='a'/></completions>");
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_TRUE(sets.contains(u"a"));
}

TEST(QVCompletionSet, OfTwoSetsOfOneNameTheLaterCounts) {
    const auto sets = setsOf("<completions><set name='a'><completion string='x'/></set>"
                             "<set name='a'><completion string='y'/></set></completions>");
    EXPECT_EQ(stringsOf(*sets.at(u"a")), (Texts{u"y"}));
}

TEST(QVCompletionSet, AFileOfAnotherKindIsEmpty) {
    std::vector<std::shared_ptr<QVCompletionProvider>> providers(1);
    std::shared_ptr<NSError> error;
    const auto sets = QVCompletionSet::completionSetsWithDocument(
        *documentOf("<syntax name='x'><set name='a'/><provider/></syntax>"), &providers, &error);
    ASSERT_TRUE(sets.has_value());
    EXPECT_TRUE(sets->empty());
    EXPECT_TRUE(providers.empty());
    EXPECT_EQ(error, nullptr);
}

TEST(QVCompletionSet, TheSetsTypeIsTheDefaultOfItsCompletionsAndBehaviours) {
    const auto sets =
        setsOf("<completions><set name='a' symbol='function'>"
               "<behavior/><behavior symbol='class'/>"
               "<completion string='x'/><completion string='y' symbol='class'/><completion symbol='no-such'/>"
               "</set></completions>");
    const auto completions = sets.at(u"a")->completions();
    ASSERT_EQ(completions->size(), 3u);
    EXPECT_EQ((*completions)[0]->symbolType(), QVSymbolTypeFunction);
    EXPECT_EQ((*completions)[1]->symbolType(), QVSymbolTypeClass);
    EXPECT_EQ((*completions)[2]->symbolType(), QVSymbolTypeFunction);
    const auto &behaviors = (*completions)[0]->behaviors();
    ASSERT_EQ(behaviors.size(), 2u);
    EXPECT_EQ(behaviors[0]->symbolType(), QVSymbolTypeFunction);
    EXPECT_EQ(behaviors[1]->symbolType(), QVSymbolTypeClass);
}

TEST(QVCompletionSet, BehavioursOfTheSetComeBeforeOrBehindItsCompletionsAlike) {
    const auto sets = setsOf("<completions><set name='a'><completion string='x'/>"
                             "<behavior><append>!</append></behavior></set></completions>");
    const auto completions = sets.at(u"a")->completions();
    ASSERT_EQ((*completions)[0]->behaviors().size(), 1u);
    EXPECT_EQ((*completions)[0]->behaviors()[0]->append(), u"!");
}

TEST(QVCompletionSet, ACompletionWithABehaviourHasNoneOfTheSets) {
    const auto sets =
        setsOf("<completions><set name='a' symbol='function'><behavior><append>!</append></behavior>"
               "<completion string='x'><behavior><append>?</append></behavior></completion>"
               "<completion string='y'/></set></completions>");
    const auto completions = sets.at(u"a")->completions();
    ASSERT_EQ((*completions)[0]->behaviors().size(), 1u);
    EXPECT_EQ((*completions)[0]->behaviors()[0]->append(), u"?");
    // The set's type is for the set's behaviours alone.
    EXPECT_EQ((*completions)[0]->behaviors()[0]->symbolType(), 0u);
    ASSERT_EQ((*completions)[1]->behaviors().size(), 1u);
    EXPECT_EQ((*completions)[1]->behaviors()[0]->append(), u"!");
}

TEST(QVCompletionSet, AFileHasAsManyBehavioursAsAllowed) {
    // Those of the set count for each of its completions.
    constexpr std::size_t behaviors = 1024;
    std::string xml = "<completions>\n<set name='a'>";
    for (std::size_t index = 0; index < behaviors; ++index)
        xml += "<behavior/>";
    for (std::size_t index = 0; index < limits::completionBehaviors / behaviors; ++index)
        xml += "<completion/>";
    xml += "</set>";
    EXPECT_EQ(setsOf(xml + "</completions>").at(u"a")->completions()->size(),
              limits::completionBehaviors / behaviors);
    std::shared_ptr<NSError> error;
    EXPECT_FALSE(
        QVCompletionSet::completionSetsWithDocument(
            *documentOf(xml + "\n<set name='b'><completion><behavior/></completion></set></completions>"),
            nullptr, &error)
            .has_value());
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), NSString(QVQuorvaneErrorDomain));
    EXPECT_EQ(error->code(), 1);
    EXPECT_EQ(error->localizedDescription(), u"Too many behaviors in completion set b, {3, 14}");
}

TEST(QVCompletionSet, AFileGivesItsProvidersInOrder) {
    std::vector<std::shared_ptr<QVCompletionProvider>> providers;
    std::shared_ptr<NSError> error;
    const auto sets = QVCompletionSet::completionSetsWithDocument(
        *documentOf("<completions><provider name='p'><syntax>c</syntax></provider><set name='a'/>"
                    "<provider name='q'/></completions>"),
        &providers, &error);
    ASSERT_TRUE(sets.has_value());
    EXPECT_EQ(sets->size(), 1u);
    ASSERT_EQ(providers.size(), 2u);
    EXPECT_EQ(providers[0]->name(), u"p");
    EXPECT_EQ(providers[0]->syntaxNames(), (Texts{u"c"}));
    EXPECT_EQ(providers[1]->name(), u"q");
}

TEST(QVCompletionSet, ABadProviderFailsTheWholeFile) {
    std::vector<std::shared_ptr<QVCompletionProvider>> providers;
    std::shared_ptr<NSError> error;
    // The place is where the start tag ends.
    const auto sets = QVCompletionSet::completionSetsWithDocument(
        *documentOf("<completions>\n<set name='a'/>\n<provider name='good'/>\n"
                    "  <provider name='bad'><expression>[</expression></provider></completions>"),
        &providers, &error);
    EXPECT_FALSE(sets.has_value());
    EXPECT_TRUE(providers.empty());
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), NSString(QVQuorvaneErrorDomain));
    EXPECT_EQ(error->code(), 1);
    EXPECT_EQ(error->localizedDescription(),
              u"Invalid regular expression for completion provider bad, {4, 23}");
    EXPECT_EQ(error->underlyingError(), nullptr);
}

TEST(QVCompletionSet, ABadProviderIsNotSeenWhereNobodyAsksForProviders) {
    const auto sets = setsOf("<completions><provider><expression>[</expression></provider>"
                             "<set name='a'/></completions>");
    EXPECT_EQ(sets.size(), 1u);
}

// MARK: - Completions

TEST(QVCompletionSet, ANewSetIsEmpty) {
    const QVCompletionSet set;
    ASSERT_NE(set.completions(), nullptr);
    EXPECT_TRUE(set.completions()->empty());
}

TEST(QVCompletionSet, SettingNothingStoresAnEmptyList) {
    const auto set = setWithStrings({u"a"});
    set->setCompletions(std::nullopt);
    ASSERT_NE(set->completions(), nullptr);
    EXPECT_TRUE(set->completions()->empty());
}

TEST(QVCompletionSet, WhatWasAskedForStaysAsItWas) {
    const auto set = setWithStrings({u"a"});
    const auto before = set->completions();
    set->setCompletions(std::nullopt);
    EXPECT_EQ(before->size(), 1u);
}

TEST(QVCompletionSet, ArchivesItsCompletionsAsDataAlone) {
    EXPECT_EQ(archivedKeys(*setWithStrings({u"a"})), (std::vector<std::string>{"completionsData: data"}));
    EXPECT_EQ(archivedKeys(QVCompletionSet()), std::vector<std::string>());
}

TEST(QVCompletionSet, SurvivesATripThroughAnArchive) {
    const auto copy = throughArchive(setWithStrings({u"one", u"two"}));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(stringsOf(*copy), (Texts{u"one", u"two"}));
    EXPECT_EQ(stringsOf(*copy), (Texts{u"one", u"two"}));
}

TEST(QVCompletionSet, ASetThatWasNeverUnpackedIsArchivedAsItIs) {
    const auto copy = throughArchive(throughArchive(setWithStrings({u"one"})));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(stringsOf(*copy), (Texts{u"one"}));
    EXPECT_EQ(stringsOf(*throughArchive(copy)), (Texts{u"one"}));
}

TEST(QVCompletionSet, AnEmptySetComesBackEmpty) {
    const LogRecorder log;
    const auto copy = throughArchive(std::make_shared<QVCompletionSet>());
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->completions()->empty());
    EXPECT_TRUE(log.messages().empty());
}

TEST(QVCompletionSet, CompletionsThatAreSetTakeThePlaceOfPackedOnes) {
    const auto copy = throughArchive(setWithStrings({u"one"}));
    copy->setCompletions(std::nullopt);
    EXPECT_TRUE(copy->completions()->empty());
    EXPECT_TRUE(throughArchive(copy)->completions()->empty());
}

TEST(QVCompletionSet, DataThatIsNoArchiveIsLoggedOnce) {
    const auto set = setWithData(NSData(std::string_view("no archive")));
    const LogRecorder log;
    EXPECT_TRUE(set->completions()->empty());
    EXPECT_TRUE(set->completions()->empty());
    ASSERT_EQ(log.messages().size(), 1u);
    const NSString message = log.messages()[0];
    EXPECT_TRUE(message.hasPrefix(
        NSString::stringWithFormat(u"Error unarchiving completion set: %@, ", set->description())))
        << message.UTF8String();
    EXPECT_TRUE(message.containsString(NSCocoaErrorDomain)) << message.UTF8String();
    // The data was dropped with the attempt.
    EXPECT_EQ(archivedKeys(*set), std::vector<std::string>());
}

TEST(QVCompletionSet, ObjectsOfOtherClassesAreNoCompletions) {
    const auto set = setWithData(
        NSKeyedArchiver::archivedDataWithRootArray({std::make_shared<const QVCompletionBehavior>()}));
    const LogRecorder log;
    EXPECT_TRUE(set->completions()->empty());
    EXPECT_EQ(log.messages().size(), 1u);
}

TEST(QVCompletionSet, ASingleObjectIsNoList) {
    const auto set =
        setWithData(NSKeyedArchiver::archivedDataWithRootObject(std::make_shared<const QVCompletion>()));
    const LogRecorder log;
    EXPECT_TRUE(set->completions()->empty());
    EXPECT_EQ(log.messages().size(), 1u);
}

TEST(QVCompletionSet, ArchivesCutOffAnywhereDoNoHarm) {
    const auto source = setWithStrings({u"one", u"two"});
    QVCompletionSet::Completions completions = *source->completions();
    const NSData whole = NSKeyedArchiver::archivedDataWithRootArray(
        std::vector<std::shared_ptr<const NSSecureCoding>>(completions.begin(), completions.end()));
    const LogRecorder log;
    for (std::size_t length = 0; length < whole.length(); ++length)
        EXPECT_TRUE(setWithData(NSData(whole.view().substr(0, length)))->completions()->empty()) << length;
    EXPECT_EQ(log.messages().size(), whole.length());
    EXPECT_EQ(setWithData(whole)->completions()->size(), 2u);
}

TEST(QVCompletionSet, ManyThreadsUnpackASetOnce) {
    const auto set = throughArchive(setWithStrings(Texts(200, u"item")));
    std::atomic<int> ready = 0;
    std::vector<std::shared_ptr<const QVCompletionSet::Completions>> results(4);
    std::vector<std::thread> threads;
    for (auto &result : results)
        threads.emplace_back([&] {
            for (++ready; ready != 4;)
                std::this_thread::yield();
            result = set->completions();
        });
    for (auto &thread : threads)
        thread.join();
    for (const auto &result : results) {
        EXPECT_EQ(result, results[0]);
        EXPECT_EQ(result->size(), 200u);
    }
}
