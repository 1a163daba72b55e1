#include "Quorvane/Styles/QVThemeStyleNames.h"

namespace quorvane {

const std::shared_ptr<const QVSimpleSelector> &QVThemeStyleName::interned() const {
    using Selector = std::shared_ptr<const QVSimpleSelector>;
    // Kept for the process's life, as the interned selector is.
    const auto *made = new Selector(QVSimpleSelector::simpleSelectorWithString(_text ? _text : NSString()));
    const Selector *expected = nullptr;
    if (_selector.compare_exchange_strong(expected, made, std::memory_order_acq_rel))
        return *made;
    delete made;
    return *expected;
}

} // namespace quorvane
