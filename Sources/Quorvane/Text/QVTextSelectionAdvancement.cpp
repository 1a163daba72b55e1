#include "Quorvane/Text/QVTextSelectionAdvancement.h"

namespace quorvane {

namespace {

constexpr const char16_t *advancementType = u"{QVTextSelectionAdvancement=dd}";

} // namespace

std::shared_ptr<const NSValue> valueWithQVTextSelectionAdvancement(QVTextSelectionAdvancement advancement) {
    return NSValue::valueWithBytes(advancement, advancementType);
}

QVTextSelectionAdvancement QVTextSelectionAdvancementValue(const NSValue *value) {
    return (value ? value->getValue<QVTextSelectionAdvancement>(advancementType) : std::nullopt)
        .value_or(QVTextSelectionAdvancementNone);
}

} // namespace quorvane
