#include "Host/QVPackageManifest.h"

#include "Host/QVPackageError.h"

#include <gmock/gmock.h>

using namespace quorvane;

namespace {

/// The error's text, or nothing with the manifest read.
std::string failure(std::string_view text) {
    std::shared_ptr<NSError> error;
    const auto manifest = QVPackageManifest::manifestWithData(NSData(text), u"p/package.json", &error);
    EXPECT_NE(manifest.has_value(), error != nullptr);
    return error ? error->localizedDescription().UTF8String() : "";
}

QVPackageManifest read(std::string_view text) {
    auto manifest = QVPackageManifest::manifestWithData(NSData(text), u"p/package.json");
    EXPECT_TRUE(manifest) << text;
    return manifest.value_or(QVPackageManifest());
}

} // namespace

TEST(QVPackageManifest, ReadsIdentifierNameAndVersion) {
    const auto manifest = read(R"({"identifier": "a.b", "name": "Über", "version": "1.0"})");
    EXPECT_EQ(manifest.identifier, u"a.b");
    EXPECT_EQ(manifest.name, u"Über");
    EXPECT_EQ(manifest.version, u"1.0");
}

TEST(QVPackageManifest, TheIdentifierStandsForAMissingName) {
    const auto manifest = read(R"({"identifier": "a.b"})");
    EXPECT_EQ(manifest.name, u"a.b");
    EXPECT_TRUE(manifest.version.isNull());
    EXPECT_EQ(read(R"({"identifier": "a.b", "name": ""})").name, u"a.b");
}

TEST(QVPackageManifest, OtherKeysAreLeftAloneWhateverTheyHold) {
    EXPECT_EQ(read(R"({"later": {"name": [1, null, {"version": 2}]}, "identifier": "a", "x": -1.5e3})").name,
              u"a");
}

TEST(QVPackageManifest, OfAKeyThatComesTwiceTheLastCounts) {
    EXPECT_EQ(read(R"({"identifier": 1, "identifier": "b"})").identifier, u"b");
    EXPECT_EQ(failure("{\"identifier\": \"b\",\n \"identifier\": 1}"),
              "p/package.json: {2, 16}: \"identifier\" must be a string, not a number");
}

TEST(QVPackageManifest, AWrongTypeIsAnErrorAtTheValue) {
    EXPECT_EQ(failure("{\n  \"identifier\": \"ü\", \"version\": 2\n}"),
              "p/package.json: {2, 33}: \"version\" must be a string, not a number");
    EXPECT_EQ(failure(R"({"identifier": ["a"]})"),
              "p/package.json: {1, 16}: \"identifier\" must be a string, not an array");
    EXPECT_EQ(failure(R"({"identifier": "a", "name": null})"),
              "p/package.json: {1, 29}: \"name\" must be a string, not null");
    EXPECT_EQ(failure(R"({"identifier": "a", "name": {}})"),
              "p/package.json: {1, 29}: \"name\" must be a string, not an object");
    EXPECT_EQ(failure(R"({"x": {"name": "in here"}, "y": "\"name\": ", "identifier": "a", "name": true})"),
              "p/package.json: {1, 74}: \"name\" must be a string, not a boolean");
}

TEST(QVPackageManifest, TheIdentifierMustBeThere) {
    EXPECT_EQ(failure("\n {\"name\": \"x\"}"), "p/package.json: {2, 2}: \"identifier\" is missing");
    EXPECT_EQ(failure(R"({"identifier": ""})"), "p/package.json: {1, 16}: \"identifier\" is empty");
}

TEST(QVPackageManifest, WhatIsNoObjectIsRefused) {
    EXPECT_EQ(failure("\n  [1]"), "p/package.json: {2, 3}: Is no JSON object");
    EXPECT_EQ(failure("\"identifier\""), "p/package.json: {1, 1}: Is no JSON object");
}

TEST(QVPackageManifest, WhatIsNoJSONIsToldWithItsPlace) {
    using testing::StartsWith;
    EXPECT_THAT(failure("{\n  \"identifier\": oops\n}"), StartsWith("p/package.json: {2, 17}: Is no JSON: "));
    EXPECT_THAT(failure(""), StartsWith("p/package.json: {1, 1}: Is no JSON: "));
    EXPECT_THAT(failure("{\"identifier\": \"a\"} x"), StartsWith("p/package.json: {1, 21}: Is no JSON: "));
    // Cut off: the place behind the last character.
    EXPECT_THAT(failure("{\"identifier\": \"a\""), StartsWith("p/package.json: {1, 19}: Is no JSON: "));
    EXPECT_THAT(failure("{\"identifier\": \"\xff\"}"), StartsWith("p/package.json: {1, 17}: Is no JSON: "));
    // A null character doesn't hide what follows it.
    EXPECT_EQ(failure(std::string("{\"identifier\": \"a\"}\n\0\": [1", 26)),
              "p/package.json: {2, 1}: Is no JSON: there is a null character");
    EXPECT_THAT(failure("{\"identifier\": 1e999}"), StartsWith("p/package.json: "));
}

TEST(QVPackageManifest, DeepNestingIsReadWithoutHarm) {
    const std::string deep = std::string(300000, '[') + std::string(300000, ']');
    EXPECT_EQ(read("{\"x\": " + deep + ", \"identifier\": \"a\"}").identifier, u"a");
    EXPECT_NE(failure(std::string(500000, '[')), "");
}

TEST(QVPackageManifest, TheErrorCarriesPathAndPlace) {
    std::shared_ptr<NSError> error;
    QVPackageManifest::manifestWithData(NSData("{\"identifier\":\n 1}"), u"p/package.json", &error);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), QVPackageErrorDomain);
    EXPECT_EQ(error->code(), QVPackageErrorInvalidManifest);
    EXPECT_EQ(error->stringForKey(QVPackageErrorPathKey), u"p/package.json");
    EXPECT_EQ(error->integerForKey(QVPackageErrorLineKey), 2);
    EXPECT_EQ(error->integerForKey(QVPackageErrorColumnKey), 2);
}
