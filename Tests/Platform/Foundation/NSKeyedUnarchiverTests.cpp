#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Platform/Foundation/QVLimits.h"
#include "Platform/Foundation/QVPropertyListWriter.h"
#include "Tests/Support/ArchiveFixtures.h"
#include "Tests/Support/Printing.h"
#include "Tests/Support/PropertyLists.h"

#include <gtest/gtest.h>

// Archives that no writer of ours makes.

using namespace quorvane;
using namespace quorvane::test;

using Entry = QVPropertyListWriter::Entry;
using Value = QVPropertyListWriter::Value;

namespace {

/// Puts an archive together from a list of objects, of which index 0 is the null that it always starts with.
class RawArchive {
public:
    QVPropertyListWriter writer;
    std::vector<Value> objects;
    std::uint64_t root = 1;
    const char16_t *archiver = u"NSKeyedArchiver";
    NSInteger version = 100000;

    RawArchive() { objects.push_back(writer.addString(u"$null")); }

    Value string(const char16_t *text) { return writer.addString(text); }
    Value uid(std::uint64_t index) { return writer.addUID(index); }
    Value uids(std::initializer_list<std::uint64_t> indexes) {
        std::vector<Value> values;
        for (const auto index : indexes)
            values.push_back(uid(index));
        return writer.addArray(values);
    }
    Value dictionary(std::vector<std::pair<const char16_t *, Value>> fields) {
        std::vector<Entry> entries;
        for (const auto &[key, value] : fields)
            entries.push_back({string(key), value});
        return writer.addDictionary(entries);
    }
    /// The description of a class, as an object.
    Value classNamed(const char16_t *name) {
        const Value names[] = {string(name), string(u"NSObject")};
        return dictionary({{u"$classname", string(name)}, {u"$classes", writer.addArray(names)}});
    }
    NSData data() {
        return writer.dataWithTop(dictionary({{u"$version", writer.addInteger(version)},
                                              {u"$archiver", string(archiver)},
                                              {u"$top", dictionary({{u"root", uid(root)}})},
                                              {u"$objects", writer.addArray(objects)}}));
    }
};

/// The problem that reading this archive as a node ends with; null when it ends well.
NSString problemOf(const NSData &data) {
    std::shared_ptr<NSError> error;
    const auto node = NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(data, &error);
    EXPECT_EQ(node == nullptr, error != nullptr);
    if (!error)
        return {};
    EXPECT_EQ(error->domain(), NSCocoaErrorDomain);
    EXPECT_EQ(error->code(), 4864);
    const std::u16string text(error->localizedDescription().view());
    const std::u16string prefix = u"The archive can’t be read: ";
    EXPECT_TRUE(text.starts_with(prefix));
    return NSString(text.substr(prefix.size()));
}

constexpr const char16_t *noArchive = u"it is no keyed archive.";
constexpr const char16_t *badRoot = u"its root can't be read.";
constexpr const char16_t *badReference = u"it refers to an object that it doesn't hold.";

} // namespace

TEST(NSKeyedUnarchiver, AnArchivePutTogetherByHandIsRead) {
    RawArchive archive;
    archive.objects = {archive.objects[0],
                       archive.dictionary({{u"$class", archive.uid(2)}, {u"name", archive.uid(3)}}),
                       archive.classNamed(u"Node"), archive.string(u"by hand")};
    const auto node = NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(archive.data());
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->name, u"by hand");
}

TEST(NSKeyedUnarchiver, DataThatIsNoArchiveIsAnError) {
    EXPECT_EQ(problemOf(NSData()), u"it is not a binary property list.");
    EXPECT_EQ(problemOf(NSData(std::string_view("<a/>"))), u"it is not a binary property list.");
    EXPECT_EQ(problemOf(RawPropertyList{{"\xA0"}}.data()), noArchive);
    EXPECT_EQ(problemOf(RawPropertyList{{"\xD0"}}.data()), noArchive);
    EXPECT_EQ(problemOf(RawPropertyList{{"\x51x"}}.data()), noArchive);
}

TEST(NSKeyedUnarchiver, ItsErrorIsNotAskedForByEveryone) {
    EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(NSData()), nullptr);
    EXPECT_FALSE(NSKeyedUnarchiver::unarchivedArray(Node::codingClass(), NSData()));
}

TEST(NSKeyedUnarchiver, ADamagedFrameIsAnError) {
    RawArchive archive;
    archive.objects.push_back(archive.string(u"x"));
    archive.archiver = u"Other";
    EXPECT_EQ(problemOf(archive.data()), noArchive);
    archive.archiver = u"NSKeyedArchiver";
    archive.version = 100001;
    EXPECT_EQ(problemOf(archive.data()), u"it is of another version.");
    archive.version = 100000;
    archive.root = 2;
    EXPECT_EQ(problemOf(archive.data()), badReference);
    archive.objects.clear();
    EXPECT_EQ(problemOf(archive.data()), noArchive);
    archive.objects = {archive.writer.addBool(true)};
    EXPECT_EQ(problemOf(archive.data()), noArchive);
}

TEST(NSKeyedUnarchiver, ARootThatIsNoObjectIsAnError) {
    const auto problemOfRoot = [](auto makeRoot) {
        RawArchive archive;
        archive.objects.push_back(makeRoot(archive));
        return problemOf(archive.data());
    };
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) { return archive.string(u"text"); }), badRoot);
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) { return archive.writer.addInteger(1); }), badRoot);
    // Without a class, with a class that is no reference, and with one that describes none.
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) { return archive.dictionary({}); }), badRoot);
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) {
                  return archive.dictionary({{u"$class", archive.string(u"Node")}});
              }),
              badRoot);
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) {
                  return archive.dictionary({{u"$class", archive.uid(0)}});
              }),
              badRoot);
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) {
                  return archive.dictionary({{u"$class", archive.uid(1)}});
              }),
              badRoot);
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) {
                  archive.objects.push_back(archive.classNamed(u"Unknown"));
                  archive.root = 2;
                  return archive.dictionary({{u"$class", archive.uid(1)}});
              }),
              badRoot);
    constexpr const char16_t *noClass = u"one of its objects has no class.";
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) { return archive.uids({0}); }), noClass);
    EXPECT_EQ(problemOfRoot([](RawArchive &archive) { return archive.uid(0); }), noClass);
}

TEST(NSKeyedUnarchiver, AReferenceToNoObjectIsAnErrorWhereverItStands) {
    for (const bool isInList : {false, true}) {
        RawArchive archive;
        const Value bad = isInList ? archive.uids({0, 99}) : archive.uid(99);
        archive.objects.push_back(archive.dictionary({{u"$class", archive.uid(2)}, {u"unread", bad}}));
        archive.objects.push_back(archive.classNamed(u"Node"));
        EXPECT_EQ(problemOf(archive.data()), badReference);
    }
}

TEST(NSKeyedUnarchiver, AListThatHoldsItselfReadsAsNothing) {
    RawArchive archive;
    archive.objects = {archive.objects[0],
                       archive.dictionary({{u"$class", archive.uid(2)}, {u"children", archive.uid(3)}}),
                       archive.classNamed(u"Node"),
                       archive.dictionary({{u"$class", archive.uid(4)}, {u"NS.objects", archive.uids({3})}}),
                       archive.classNamed(u"NSArray")};
    const auto node = NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(archive.data());
    ASSERT_NE(node, nullptr);
    EXPECT_TRUE(node->children.empty());
}

TEST(NSKeyedUnarchiver, ADamagedListReadsAsNothing) {
    const auto childCountOf = [](auto makeFields) -> std::optional<std::size_t> {
        RawArchive archive;
        archive.objects = {
            archive.objects[0],
            archive.dictionary({{u"$class", archive.uid(2)}, {u"attachments", archive.uid(3)}}),
            archive.classNamed(u"Node"),
            makeFields(archive),
            archive.classNamed(u"NSArray"),
            archive.dictionary({{u"$class", archive.uid(6)}, {u"name", archive.uid(7)}}),
            archive.classNamed(u"Interned"),
            archive.string(u"x")};
        const auto node = NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(archive.data());
        return node && node->hadAttachments ? std::optional(node->attachments.size()) : std::nullopt;
    };
    const auto list = [](RawArchive &archive, Value objects) {
        return archive.dictionary({{u"$class", archive.uid(4)}, {u"NS.objects", objects}});
    };
    EXPECT_EQ(childCountOf([&](RawArchive &archive) { return list(archive, archive.uids({5, 5})); }), 2u);
    // With the null object, a text and a class among them, values that are no references, no list at all.
    EXPECT_EQ(childCountOf([&](RawArchive &archive) {
                  return list(archive, archive.uids({5, 0}));
              }),
              std::nullopt);
    EXPECT_EQ(childCountOf([&](RawArchive &archive) {
                  return list(archive, archive.uids({7, 5}));
              }),
              std::nullopt);
    EXPECT_EQ(childCountOf([&](RawArchive &archive) { return list(archive, archive.uids({6})); }),
              std::nullopt);
    EXPECT_EQ(childCountOf([&](RawArchive &archive) {
                  const Value values[] = {archive.string(u"x")};
                  return list(archive, archive.writer.addArray(values));
              }),
              std::nullopt);
    EXPECT_EQ(childCountOf([&](RawArchive &archive) { return list(archive, archive.string(u"x")); }),
              std::nullopt);
    EXPECT_EQ(childCountOf([&](RawArchive &archive) {
                  return archive.dictionary({{u"$class", archive.uid(4)}});
              }),
              std::nullopt);
}

TEST(NSKeyedUnarchiver, AListThatManyObjectsNameIsChargedEveryTime) {
    // Each of many nodes names the same long list of one text, which must not be read a thousand times.
    constexpr std::size_t length = 100000;
    constexpr std::size_t nodes = limits::archiveReferences / length + 2;
    RawArchive archive;
    const Value name = archive.uid(1);
    std::vector<Value> entries(length, name);
    const Value list =
        archive.dictionary({{u"$class", archive.uid(2)}, {u"NS.objects", archive.writer.addArray(entries)}});
    std::vector<Value> children;
    for (std::size_t index = 0; index < nodes; ++index)
        children.push_back(archive.uid(7 + index));
    archive.objects = {archive.objects[0],
                       archive.dictionary({{u"$class", archive.uid(4)}, {u"name", archive.uid(5)}}),
                       archive.classNamed(u"NSArray"),
                       list,
                       archive.classNamed(u"Interned"),
                       archive.string(u"x"),
                       archive.dictionary({{u"$class", archive.uid(2)},
                                           {u"NS.objects", archive.writer.addArray(children)}})};
    for (std::size_t index = 0; index < nodes; ++index)
        archive.objects.push_back(
            archive.dictionary({{u"$class", archive.uid(7 + nodes)}, {u"attachments", archive.uid(3)}}));
    archive.objects.push_back(archive.classNamed(u"Node"));
    archive.root = 6;
    std::shared_ptr<NSError> error;
    EXPECT_FALSE(NSKeyedUnarchiver::unarchivedArray(Node::codingClass(), archive.data(), &error));
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->localizedDescription(), u"The archive can’t be read: it holds too many values.");
}

TEST(NSKeyedUnarchiver, AnObjectHasAsManyFieldsAsTheLimitAndNoMore) {
    const auto problemOfFields = [](std::size_t count) {
        RawArchive archive;
        std::vector<Entry> entries{{archive.string(u"$class"), archive.uid(2)}};
        while (entries.size() < count)
            entries.push_back(
                {archive.writer.addString(NSString::stringWithFormat(u"field %ld", entries.size())),
                 archive.writer.addInteger(1)});
        archive.objects.push_back(archive.writer.addDictionary(entries));
        archive.objects.push_back(archive.classNamed(u"Node"));
        return problemOf(archive.data());
    };
    EXPECT_EQ(problemOfFields(limits::archiveFields), NSString());
    EXPECT_EQ(problemOfFields(limits::archiveFields + 1), u"one of its objects has too many fields.");
}

TEST(NSKeyedUnarchiver, DictionariesOfUnequalHalvesReadAsNothing) {
    class Holder final : public NSSecureCoding {
    public:
        std::optional<std::map<NSString, NSString>> values;
        static const NSCodingClass &codingClass() {
            static constexpr NSCodingClass description{
                u"Holder", nullptr,
                []() -> std::shared_ptr<NSSecureCoding> { return std::make_shared<Holder>(); }};
            return description;
        }
        const NSCodingClass &classForCoder() const override { return codingClass(); }
        void encodeWithCoder(NSCoder &) const override {}
        std::shared_ptr<NSSecureCoding> initWithCoder(NSCoder &coder,
                                                      std::shared_ptr<NSSecureCoding> self) override {
            values = coder.decodeStringDictionary(u"values");
            return self;
        }
    };
    const auto read = [](std::initializer_list<std::uint64_t> keys,
                         std::initializer_list<std::uint64_t> values) {
        RawArchive archive;
        archive.objects = {archive.objects[0],
                           archive.dictionary({{u"$class", archive.uid(2)}, {u"values", archive.uid(3)}}),
                           archive.classNamed(u"Holder"),
                           archive.dictionary({{u"$class", archive.uid(4)},
                                               {u"NS.keys", archive.uids(keys)},
                                               {u"NS.objects", archive.uids(values)}}),
                           archive.classNamed(u"NSMutableDictionary"),
                           archive.string(u"a"),
                           archive.string(u"b")};
        return NSKeyedUnarchiver::unarchivedObjectOfClass<Holder>(archive.data())->values;
    };
    EXPECT_EQ(read({5, 6}, {6, 5}), (std::map<NSString, NSString>{{u"a", u"b"}, {u"b", u"a"}}));
    EXPECT_FALSE(read({5, 6}, {5}));
    EXPECT_FALSE(read({5}, {5, 6}));
    EXPECT_FALSE(read({0}, {5}));
    EXPECT_FALSE(read({5}, {2}));
}

TEST(NSKeyedUnarchiver, NoDamageOfOneByteDoesHarm) {
    const auto root = Node::make(u"root", {Node::make(u"\u4E2D"), Node::make(u"child")});
    root->attachments = {Interned::named(u"a")};
    root->children[0]->back = root;
    const NSData data = NSKeyedArchiver::archivedDataWithRootObject(root);
    std::size_t failures = 0;
    // Damage can make nodes own each other in a circle, which nobody else would untie.
    std::vector<std::weak_ptr<Node>> nodes;
    Node::notedNodes = &nodes;
    for (std::size_t index = 0; index < data.length(); ++index)
        for (const std::uint8_t value : {0x00, 0x01, 0x7F, 0x80, 0xD0, 0xA1, 0xFF}) {
            std::vector<std::uint8_t> bytes(data.bytes().begin(), data.bytes().end());
            bytes[index] = value;
            std::shared_ptr<NSError> error;
            const auto copy = NSKeyedUnarchiver::unarchivedObjectOfClass<Node>(bytes, &error);
            EXPECT_EQ(copy == nullptr, error != nullptr);
            failures += error != nullptr;
        }
    Node::notedNodes = nullptr;
    for (const auto &noted : nodes) {
        if (const auto node = noted.lock()) {
            node->children.clear();
            node->attachments.clear();
            node->single = nullptr;
        }
    }
    EXPECT_GT(failures, data.length());
}

TEST(NSKeyedUnarchiver, NoPartOfAnArchiveIsAnArchive) {
    const NSData data =
        NSKeyedArchiver::archivedDataWithRootObject(Node::make(u"root", {Node::make(u"child")}));
    for (std::size_t length = 0; length < data.length(); ++length)
        EXPECT_FALSE(problemOf(NSData(data.view().substr(0, length))).isNull()) << length;
}
