#include "Quorvane/Parsers/QVAttributeCache.h"

#include "Quorvane/Matches/QVMatch.h"
#include "Quorvane/Parsers/QVSyntaxHighlighting.h"
#include "Quorvane/Scopes/QVCapture.h"
#include "Quorvane/Scopes/QVScope.h"
#include "Quorvane/Styles/QVStyle+TextAttributes.h"
#include "Quorvane/Symbols/QVLexicalClass.h"

namespace quorvane {

namespace {

constexpr std::size_t firstSlots = 256;

/// Adds what a scope or a capture says of its text.
template <typename Node>
void resolve(const Node &node, NSMutableAttributes &attributes, const NSAttributes &defaultAttributes) {
    if (const auto style = node.resolvedStyle())
        QVStyleApplyTextAttributes(*style, attributes, defaultAttributes);
}

template <typename Node> NSAttributes resolved(const Node &node, const NSAttributes &defaultAttributes) {
    NSMutableAttributes attributes;
    if (node.lexicalClass())
        attributes.set(QVLexicalClassAttributeName, node.lexicalClass());
    resolve(node, attributes, defaultAttributes);
    return attributes.attributes();
}

} // namespace

void QVParseResolveStyleAttributesForMatch(const QVMatch *match, NSMutableAttributes &attributes,
                                           const NSAttributes &defaultAttributes) {
    const QVSelectable *const matchedOn = match ? match->matchedOn() : nullptr;
    if (const auto *const scope = dynamic_cast<const QVScope *>(matchedOn))
        resolve(*scope, attributes, defaultAttributes);
    else if (const auto *const capture = dynamic_cast<const QVCapture *>(matchedOn))
        resolve(*capture, attributes, defaultAttributes);
}

QVAttributeCache::QVAttributeCache(NSAttributes defaultAttributes)
    : _defaultAttributes(std::move(defaultAttributes)), _generation(QVStyleList::generation()),
      _slots(firstSlots) {}

bool QVAttributeCache::isCurrent() const { return _generation == QVStyleList::generation(); }

const NSAttributes *QVAttributeCache::attributesForNewScope(const QVScope *scope) {
    return remember(scope, resolved(*scope, _defaultAttributes));
}

const NSAttributes *QVAttributeCache::attributesForNewCapture(const QVCapture *capture) {
    return remember(capture,
                    capture->resolvedStyle() ? resolved(*capture, _defaultAttributes) : NSAttributes());
}

const NSAttributes *QVAttributeCache::remember(const void *key, const NSAttributes &attributes) {
    if (++_count * 2 > _slots.size()) {
        std::vector<Slot> slots(_slots.size() * 2);
        slots.swap(_slots);
        for (const Slot &slot : slots)
            if (slot.key != nullptr)
                *slotForKey(slot.key) = slot;
    }
    const NSAttributes *const kept = attributes.empty() ? nullptr : &_attributes.emplace_back(attributes);
    *slotForKey(key) = {key, kept};
    return kept;
}

} // namespace quorvane
