#include "Quorvane/Selectors/QVSimpleSelector.h"

#include "Platform/Foundation/QVWordCharacters.h"
#include "Quorvane/Selectors/QVClassText.h"
#include "Quorvane/Selectors/QVSelectable.h"

#include <mutex>
#include <unordered_map>

namespace quorvane {

namespace {

/// The process's selectors by their sorted text. Never destroyed: scopes and matches point into it up to the
/// very end.
struct InternTable {
    std::mutex lock;
    std::unordered_map<NSString, std::shared_ptr<const QVSimpleSelector>> selectors;
};

InternTable &internTable() {
    static InternTable *const table = [] {
        auto *made = new InternTable;
        made->selectors.emplace(u"*", QVSimpleSelector::universalSelector());
        return made;
    }();
    return *table;
}

/// Numbers class names in the order in which they come up.
std::uint32_t numberOfClass(const NSString &name) {
    struct Numbers {
        std::mutex lock;
        std::unordered_map<NSString, std::uint32_t> numbers;
    };
    static Numbers *const table = new Numbers;
    const std::lock_guard guard(table->lock);
    return table->numbers.emplace(name, static_cast<std::uint32_t>(table->numbers.size())).first->second;
}

std::vector<NSString> sortedParts(const NSString &text) {
    std::vector<NSString> parts = text.componentsSeparatedByString(u".");
    // Stable, so that names which differ in case alone keep their places and the key depends on nothing else.
    std::stable_sort(parts.begin(), parts.end(), [](const NSString &a, const NSString &b) {
        return a.caseInsensitiveCompare(b) == NSOrderedAscending;
    });
    return parts;
}

} // namespace

std::u16string QVCleanedClassText(std::u16string_view text) {
    std::u16string cleaned;
    cleaned.reserve(text.size());
    for (std::size_t index = 0; index < text.size();) {
        const std::size_t start = index;
        const char32_t character = QVNextCharacter(text, index);
        if (QVIsWordCharacter(character) || character == U'*' || character == U'.' || character == U'-')
            cleaned.append(text.substr(start, index - start));
    }
    return cleaned;
}

const std::shared_ptr<const QVSimpleSelector> &QVSimpleSelector::universalSelector() {
    static const auto *const universal =
        new std::shared_ptr<const QVSimpleSelector>(std::shared_ptr<QVSimpleSelector>(new QVSimpleSelector));
    return *universal;
}

std::shared_ptr<const QVSimpleSelector>
QVSimpleSelector::initWithString(NSString string, const std::vector<NSString> &classes) {
    const std::shared_ptr<QVSimpleSelector> selector(new QVSimpleSelector);
    selector->_string = std::move(string);
    selector->setClasses({classes.begin(), classes.end()});
    return selector;
}

std::shared_ptr<const QVSimpleSelector> QVSimpleSelector::simpleSelectorWithString(const NSString &string) {
    if (!string)
        return nullptr;
    NSString text = QVCleanedClassText(string);
    const std::vector<NSString> parts = sortedParts(text);
    // One class, the common case, is its own key.
    const NSString key = parts.size() == 1 ? text : NSString::componentsJoinedByString(parts, u".");

    InternTable &table = internTable();
    const std::lock_guard guard(table.lock);
    auto &entry = table.selectors[key];
    if (!entry)
        entry = initWithString(std::move(text), parts);
    return entry;
}

std::vector<std::shared_ptr<const QVSimpleSelector>>
QVSimpleSelector::simpleSelectorsJoinedByString(const NSString &string) {
    std::vector<std::shared_ptr<const QVSimpleSelector>> selectors;
    // Blanks around a piece need no trimming of their own: they are no part of any class name.
    for (const NSString &piece : string.componentsSeparatedByString(u","))
        selectors.push_back(simpleSelectorWithString(piece));
    return selectors;
}

void QVSimpleSelector::setClasses(std::set<NSString> classes) {
    _classes = std::move(classes);
    _empty = _classes.empty();
    _universal = _classes.contains(u"*");
    _classNumbers.reserve(_classes.size());
    for (const NSString &name : _classes)
        _classNumbers.push_back(numberOfClass(name));
    std::sort(_classNumbers.begin(), _classNumbers.end());
    for (const std::uint32_t number : _classNumbers)
        _classMask |= std::uint64_t(1) << (number % 64);
}

NSComparisonResult QVSimpleSelector::compare(const QVSimpleSelector *other) const {
    const NSUInteger theirs = other ? other->specificity() : 0;
    return specificity() < theirs   ? NSOrderedAscending
           : specificity() > theirs ? NSOrderedDescending
                                    : NSOrderedSame;
}

bool QVSimpleSelector::matchesClasses(const std::set<NSString> &classes) const {
    return _empty || _universal ||
           std::includes(classes.begin(), classes.end(), _classes.begin(), _classes.end());
}

bool QVSimpleSelector::matchesClass(const NSString &name) const {
    return _empty || _universal || _classes.contains(name);
}

void QVSimpleSelector::walkTreeStartingAtSelectable(
    QVSelectable *selectable, std::span<const std::shared_ptr<const QVSimpleSelector>> withSelectors,
    QVBlock<void(QVSelectable *node, bool &stop)> usingBlock) {
    walkTreeRecursivelyStartingAtSelectable(selectable, withSelectors, usingBlock);
}

bool QVSimpleSelector::walkTreeRecursivelyStartingAtSelectable(
    QVSelectable *selectable, std::span<const std::shared_ptr<const QVSimpleSelector>> withSelectors,
    QVBlock<void(QVSelectable *node, bool &stop)> usingBlock) {
    if (selectable == nullptr || !usingBlock)
        return true;
    if (const QVSimpleSelector *own = selectable->selector()) {
        const auto matches = [own](const auto &pattern) { return pattern && pattern->matchesSelector(own); };
        if (std::any_of(withSelectors.begin(), withSelectors.end(), matches)) {
            bool stop = false;
            usingBlock(selectable, stop);
            if (stop)
                return false;
        }
    }
    if (!selectable->offersSelectableChildren())
        return true;
    bool goesOn = true;
    selectable->enumerateSelectableChildrenUsingBlock([&](QVSelectable *child, bool &stop) {
        goesOn = walkTreeRecursivelyStartingAtSelectable(child, withSelectors, usingBlock);
        stop = !goesOn;
    });
    return goesOn;
}

std::shared_ptr<const QVSimpleSelector> QVSimpleSelector::copy() const {
    return std::static_pointer_cast<const QVSimpleSelector>(shared_from_this());
}

bool QVSimpleSelector::isEqual(const NSObject *other) const {
    const auto *selector = dynamic_cast<const QVSimpleSelector *>(other);
    return selector != nullptr && selector->_string == _string;
}

NSString QVSimpleSelector::description() const {
    const std::vector<NSString> names(_classes.begin(), _classes.end());
    return NSString::stringWithFormat(u"<%@: %p : classes=(%@)>", className(),
                                      static_cast<const void *>(this),
                                      NSString::componentsJoinedByString(names, u", "));
}

const NSCodingClass &QVSimpleSelector::codingClass() {
    static const NSCodingClass codingClass{u"QVSimpleSelector", nullptr,
                                           +[]() -> std::shared_ptr<NSSecureCoding> {
                                               return std::shared_ptr<QVSimpleSelector>(new QVSimpleSelector);
                                           }};
    return codingClass;
}

void QVSimpleSelector::encodeWithCoder(NSCoder &coder) const {
    coder.encodeStringSet(_classes, u"classes");
    coder.encodeString(_string, u"string");
}

std::shared_ptr<NSSecureCoding> QVSimpleSelector::initWithCoder(NSCoder &coder,
                                                                std::shared_ptr<NSSecureCoding> self) {
    NSString text = coder.decodeString(u"string");
    if (!text)
        return nullptr;
    InternTable &table = internTable();
    const std::lock_guard guard(table.lock);
    // The archived text itself is the key here, not its sorted form.
    auto &entry = table.selectors[text];
    if (!entry) {
        _string = std::move(text);
        setClasses(coder.decodeStringSet(u"classes").value_or(std::set<NSString>()));
        entry = std::shared_ptr<const QVSimpleSelector>(self, this);
    }
    return std::const_pointer_cast<QVSimpleSelector>(entry);
}

} // namespace quorvane
