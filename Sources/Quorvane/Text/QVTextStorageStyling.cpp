#include "Quorvane/Text/QVTextStorageStyling.h"

#include "Quorvane/Parsers/QVParse.h"

#include <boost/unordered/unordered_flat_map.hpp>

namespace quorvane {

QVStyling::QVStyling(NSUInteger length, const NSAttributes &defaultAttributes,
                     const std::shared_ptr<QVSyntax> &syntax)
    : attributes(std::make_shared<QVMutableRLEArray<NSAttributes>>()),
      syntaxes(std::make_shared<QVMutableRLEArray<std::shared_ptr<QVSyntax>>>()) {
    attributes->replaceObjectsInRange({0, 0}, defaultAttributes, length);
    fonts.replaceObjectsInRange({0, 0}, nullptr, length);
    syntaxes->replaceObjectsInRange({0, 0}, syntax, length);
}

namespace {

/// Dictionaries put together from two. A language has few kinds of text, so that all stretches of a kind can
/// share one dictionary, which later compares by its pointer.
class AttributeMerger {
public:
    const NSAttributes &merge(const NSAttributes &base, const NSAttributes &added) {
        // What the keys point to is kept by the entry.
        const Key key{base.begin(), added.begin()};
        const auto found = _entries.find(key);
        if (found != _entries.end())
            return found->second.merged;
        return _entries.emplace(key, Entry{base, added, base.attributesByAddingAttributes(added)})
            .first->second.merged;
    }

private:
    struct Key {
        const NSAttribute *base;
        const NSAttribute *added;
        friend bool operator==(const Key &, const Key &) = default;
        friend std::size_t hash_value(const Key &key) {
            const std::hash<const void *> hash;
            return hash(key.base) * 31 + hash(key.added);
        }
    };
    struct Entry {
        NSAttributes base;
        NSAttributes added;
        NSAttributes merged;
    };
    boost::unordered_flat_map<Key, Entry> _entries;
};

} // namespace

std::shared_ptr<QVStyling> QVStylingForRange(const QVParse &parse, NSRange range,
                                             const QVStylingDefaults &defaults) {
    const auto styling =
        std::make_shared<QVStyling>(range.length, defaults.highlightingAttributes, parse.syntax());
    AttributeMerger merger;
    parse.enumerateAttributesInRange(
        range, defaults.textAttributes,
        [&](const NSAttributes &attributes, NSRange piece, const std::shared_ptr<QVSyntax> &syntax,
            std::uint64_t flags, bool &) {
            if (piece.length == 0)
                return;
            const NSRange slots{piece.location - range.location, piece.length};
            const bool resets = (flags & (QVAttributeFlagsRegionDefault | QVAttributeFlagsReset)) != 0;
            if (resets)
                styling->syntaxes->replaceObjectsInRange(slots, syntax, slots.length);
            // What stands at the piece's start counts for all of it: pieces come from the outside in, so that
            // what lies under one is of one kind.
            const NSAttributes base =
                resets ? defaults.highlightingAttributes : styling->attributes->objectAtIndex(slots.location);
            styling->attributes->replaceObjectsInRange(slots, merger.merge(base, attributes), slots.length);
            if (const NSAttributeValue *const font = attributes.valueForKey(NSFontAttributeName))
                if (const auto *const object = std::get_if<NSAttributeValue::Object>(font))
                    if (auto held = std::dynamic_pointer_cast<const CTFont>(*object))
                        styling->fonts.replaceObjectsInRange(slots, std::move(held), slots.length);
        });
    return styling;
}

} // namespace quorvane
