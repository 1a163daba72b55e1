#include "Host/QVPackageError.h"

#include "Quorvane/XML/QVXMLDocument.h"

#include <charconv>

namespace quorvane {

namespace {

/// A number in front of where a text ends by now, taken from it; negative where there is none.
NSInteger takeNumber(std::string_view &text) {
    const std::size_t start = text.find_last_not_of("0123456789") + 1;
    NSInteger number = -1;
    std::from_chars(text.data() + start, text.data() + text.size(), number);
    text = text.substr(0, start);
    return number;
}

bool takeEnd(std::string_view &text, std::string_view end) {
    if (!text.ends_with(end))
        return false;
    text.remove_suffix(end.size());
    return true;
}

/// Takes the place from a text's end, in either way in which the engine's errors tell it: "..., {3, 14}" or
/// "... at line 3, column 14".
QVPackageErrorPlace takePlaceFromEnd(std::string &text) {
    std::string_view rest = text;
    const bool isBraced = takeEnd(rest, "}");
    QVPackageErrorPlace place;
    place.column = takeNumber(rest);
    if (place.column < 0 || !takeEnd(rest, isBraced ? ", " : ", column "))
        return {};
    place.line = takeNumber(rest);
    if (place.line < 0 || !takeEnd(rest, isBraced ? "{" : " at line "))
        return {};
    text.resize(rest.size());
    while (text.ends_with(' ') || text.ends_with(','))
        text.pop_back();
    return place;
}

/// All that an error says, with what is below it, on one line.
std::string textOfError(const NSError &error, QVPackageErrorPlace &place) {
    std::string text = error.localizedDescription().UTF8String();
    if (const NSString reason = error.stringForKey(u"NSLocalizedFailureReason"))
        text += ": " + reason.UTF8String();
    const QVPackageErrorPlace told = takePlaceFromEnd(text);
    if (const auto line = error.integerForKey(u"line"))
        place = {*line, error.integerForKey(u"column").value_or(0)};
    else if (told.line != 0)
        place = told;
    if (const NSString suggestion = error.localizedRecoverySuggestion())
        text += ": " + suggestion.UTF8String();
    if (const auto underlying = error.underlyingError()) {
        // The place in the file is the upper error's; one below counts in a pattern or the like.
        QVPackageErrorPlace below;
        const std::string more = textOfError(*underlying, below);
        text += ": " + more;
        if (place.line == 0)
            place = below;
    }
    return text;
}

void addScopesNamed(const NSString &name, const QVXMLElement &element,
                    std::vector<QVPackageErrorPlace> &places) {
    if (element.name() == u"scope" && element.valueForAttribute(u"name") == name)
        places.push_back(
            {static_cast<NSInteger>(element.lineNumber()), static_cast<NSInteger>(element.columnNumber())});
    for (const auto &child : element.children())
        if (const auto *const below = dynamic_cast<const QVXMLElement *>(child.get()))
            addScopesNamed(name, *below, places);
}

/// The place of the scope that a text ends with the name of, where there is just one.
QVPackageErrorPlace placeOfScope(const NSError &error, const QVXMLDocument &document) {
    std::string text = error.localizedDescription().UTF8String();
    takePlaceFromEnd(text);
    constexpr std::string_view before = "Invalid regular expression for scope ";
    if (!text.starts_with(before))
        return {};
    std::vector<QVPackageErrorPlace> places;
    addScopesNamed(NSString::stringWithUTF8String(text.substr(before.size())), *document.rootElement(),
                   places);
    return places.size() == 1 ? places[0] : QVPackageErrorPlace();
}

} // namespace

std::shared_ptr<NSError> QVPackageError(QVPackageErrorCode code, const NSString &path,
                                        QVPackageErrorPlace place, std::u16string_view message,
                                        std::shared_ptr<NSError> underlyingError) {
    std::u16string text(path.view());
    text += u": ";
    NSErrorUserInfo userInfo{{QVPackageErrorPathKey, path}};
    if (place.line != 0) {
        text += NSString::stringWithFormat(u"{%ld, %ld}: ", place.line, place.column).view();
        userInfo.emplace(QVPackageErrorLineKey, place.line);
        userInfo.emplace(QVPackageErrorColumnKey, place.column);
    }
    text += message;
    userInfo.emplace(NSLocalizedDescriptionKey, NSString(std::move(text)));
    if (underlyingError)
        userInfo.emplace(NSUnderlyingErrorKey, std::move(underlyingError));
    return NSError::errorWithDomain(QVPackageErrorDomain, code, std::move(userInfo));
}

std::shared_ptr<NSError> QVPackageErrorForError(const NSString &path, const std::shared_ptr<NSError> &error,
                                                const QVXMLDocument *document) {
    QVPackageErrorPlace place;
    const std::string text = textOfError(*error, place);
    if (place.line == 0 && document != nullptr)
        place = placeOfScope(*error, *document);
    const bool isUnreadable = error->domain() == NSPOSIXErrorDomain;
    return QVPackageError(isUnreadable ? QVPackageErrorUnreadable : QVPackageErrorInvalidFile, path, place,
                          NSString::stringWithUTF8String(text), error);
}

} // namespace quorvane
