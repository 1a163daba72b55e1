#include "Tests/Support/Printing.h"

#include <gtest/gtest.h>

using namespace quorvane;

TEST(NSStringPaths, EachPathHasItsLastComponentItsExtensionAndTheRest) {
    struct {
        const char16_t *path;
        const char16_t *lastPathComponent;
        const char16_t *pathExtension;
        const char16_t *withoutExtension;
    } const rows[] = {
        {u"/a/scratch.tiff", u"scratch.tiff", u"tiff", u"/a/scratch"},
        {u"/a/scratch", u"scratch", u"", u"/a/scratch"},
        {u"/a.b/scratch", u"scratch", u"", u"/a.b/scratch"},
        {u"/a/", u"a", u"", u"/a"},
        {u"pack.age///", u"pack.age", u"age", u"pack"},
        {u"x.tar.gz", u"x.tar.gz", u"gz", u"x.tar"},
        {u"scratch..tiff", u"scratch..tiff", u"tiff", u"scratch."},
        {u".hidden", u".hidden", u"", u".hidden"},
        {u"/a/.hidden", u".hidden", u"", u"/a/.hidden"},
        {u".hidden.txt", u".hidden.txt", u"txt", u".hidden"},
        {u"dot.", u"dot.", u"", u"dot."},
        {u"/", u"/", u"", u"/"},
        {u"///", u"/", u"", u"/"},
        {u"", u"", u"", u""},
    };
    for (const auto &row : rows) {
        const NSString path(row.path);
        EXPECT_EQ(path.lastPathComponent(), row.lastPathComponent) << path.UTF8String();
        EXPECT_EQ(path.pathExtension(), row.pathExtension) << path.UTF8String();
        EXPECT_EQ(path.stringByDeletingPathExtension(), row.withoutExtension) << path.UTF8String();
    }
}

TEST(NSStringPaths, NullHasNoParts) {
    EXPECT_TRUE(NSString().lastPathComponent().isNull());
    EXPECT_TRUE(NSString().pathExtension().isNull());
    EXPECT_TRUE(NSString().stringByDeletingPathExtension().isNull());
}
