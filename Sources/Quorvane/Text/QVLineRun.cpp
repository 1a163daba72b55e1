#include "Quorvane/Text/QVLineRun.h"

#include "Quorvane/Text/QVLineRunArray.h"

namespace quorvane {

QVLineRunString QVLineRunString::initWithString(const NSString &string) {
    QVLineRunString result;
    if (string)
        result._units = std::u16string(string.view());
    return result;
}

void QVLineRunString::replaceCharactersInRange(NSRange range, QVTextReader withString) {
    if (!_units)
        return;
    const std::size_t location = std::min<NSUInteger>(range.location, _units->size());
    const std::size_t length = std::min<NSUInteger>(range.length, _units->size() - location);
    const NSUInteger added = withString.length();
    _units->replace(location, length, added, u'\0');
    withString.getCharacters(_units->data() + location, {0, added});
}

std::optional<std::u16string_view> QVLineRun::string() const {
    if (_string == nullptr || !_string->hasString())
        return std::nullopt;
    return _string->string();
}

QVLineRun QVLineRun::nextRun() const { return _array ? _array->runBehind(*this) : QVLineRun(); }

QVLineRun QVLineRun::previousRun() const { return _array ? _array->runBefore(*this) : QVLineRun(); }

NSString QVLineRun::description() const {
    static constexpr const char16_t *names[] = {u"none", u"CR", u"LF", u"CRLF"};
    return NSString::stringWithFormat(u"<%@: %p %@ range=%@>", u"QVLineRun", static_cast<const void *>(this),
                                      names[_flags & 3], _range);
}

} // namespace quorvane
