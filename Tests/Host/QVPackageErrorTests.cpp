#include "Host/QVPackageError.h"

#include "Quorvane/QuorvaneErrors.h"

#include <gtest/gtest.h>

using namespace quorvane;

namespace {

std::string textFor(const std::shared_ptr<NSError> &error) {
    return QVPackageErrorForError(u"p/x.xml", error)->localizedDescription().UTF8String();
}

} // namespace

TEST(QVPackageError, PutsThePlaceOfADefinitionErrorInFront) {
    EXPECT_EQ(textFor(QVDefinitionError(u"Missing expression for scope it, {3, 14}")),
              "p/x.xml: {3, 14}: Missing expression for scope it");
    EXPECT_EQ(textFor(QVDefinitionError(u"Invalid capture number: a{2} {12, 3}")),
              "p/x.xml: {12, 3}: Invalid capture number: a{2}");
}

TEST(QVPackageError, TellsWhatIsBelowAndKeepsIt) {
    const auto below = NSError::errorWithDomain(u"Below", 7, {{NSLocalizedDescriptionKey, NSString(u"Why")}});
    const auto error = QVDefinitionError(u"Invalid regular expression for scope it, {3, 14}", below);
    EXPECT_EQ(textFor(error), "p/x.xml: {3, 14}: Invalid regular expression for scope it: Why");
    const auto told = QVPackageErrorForError(u"p/x.xml", error);
    EXPECT_EQ(told->underlyingError(), error);
    EXPECT_EQ(told->code(), QVPackageErrorInvalidFile);
    EXPECT_EQ(told->integerForKey(QVPackageErrorLineKey), 3);
    EXPECT_EQ(told->integerForKey(QVPackageErrorColumnKey), 14);
}

TEST(QVPackageError, TakesThePlaceOfAReadersErrorFromItsUserInfo) {
    EXPECT_EQ(textFor(NSError::errorWithDomain(u"XML", 76,
                                               {{NSLocalizedDescriptionKey, NSString(u"Tag mismatch")},
                                                {u"line", NSInteger(3)},
                                                {u"column", NSInteger(12)}})),
              "p/x.xml: {3, 12}: Tag mismatch");
}

TEST(QVPackageError, TakesThePlaceOfAThemesErrorFromItsReason) {
    EXPECT_EQ(textFor(NSError::errorWithDomain(
                  u"Theme", 1001,
                  {{NSLocalizedDescriptionKey, NSString(u"Parse error")},
                   {u"NSLocalizedFailureReason", NSString(u"Missing property value at line 4, column 9")}})),
              "p/x.xml: {4, 9}: Parse error: Missing property value");
}

TEST(QVPackageError, WhatHasNoPlaceIsToldWithoutOne) {
    for (const char16_t *const text :
         {u"Just so", u"Ends with {}", u"Ends with {1}", u"Ends with {1, }", u"Ends with {, 2}",
          u"Ends with {a, 2}", u"}", u"", u"At line 1, column 2 it breaks", u"{1,2}", u"column 2"})
        EXPECT_EQ(textFor(QVDefinitionError(text)), "p/x.xml: " + NSString(text).UTF8String());
}

TEST(QVPackageError, AFileThatCanNotBeReadSaysSo) {
    const auto error = QVPackageErrorForError(
        u"p/x.xml",
        NSError::errorWithDomain(NSPOSIXErrorDomain, 13, {{NSLocalizedDescriptionKey, NSString(u"No")}}));
    EXPECT_EQ(error->code(), QVPackageErrorUnreadable);
    EXPECT_FALSE(error->integerForKey(QVPackageErrorLineKey));
}
