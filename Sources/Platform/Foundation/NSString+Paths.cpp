#include "Platform/Foundation/NSString.h"

namespace quorvane {

namespace {

/// The path without trailing slashes; of slashes alone one remains.
std::u16string_view withoutTrailingSlashes(std::u16string_view path) {
    while (path.size() > 1 && path.back() == u'/')
        path.remove_suffix(1);
    return path;
}

std::u16string_view lastComponent(std::u16string_view path) {
    path = withoutTrailingSlashes(path);
    const std::size_t slash = path.rfind(u'/');
    return slash == path.npos || path.size() == 1 ? path : path.substr(slash + 1);
}

/// Where in the component the dot of its extension stands; a dot that comes first hides a file and starts no
/// extension, and a dot that comes last has none behind it.
std::size_t extensionDot(std::u16string_view component) {
    const std::size_t dot = component.rfind(u'.');
    return dot == 0 || dot == component.size() - 1 ? component.npos : dot;
}

} // namespace

NSString NSString::lastPathComponent() const {
    return isNull() ? NSString() : NSString(lastComponent(view()));
}

NSString NSString::pathExtension() const {
    if (isNull())
        return {};
    const std::u16string_view component = lastComponent(view());
    const std::size_t dot = extensionDot(component);
    return dot == component.npos ? NSString(u"") : NSString(component.substr(dot + 1));
}

NSString NSString::stringByDeletingPathExtension() const {
    if (isNull())
        return {};
    const std::u16string_view path = withoutTrailingSlashes(view());
    const std::u16string_view component = lastComponent(path);
    const std::size_t dot = extensionDot(component);
    return NSString(
        path.substr(0, dot == component.npos ? path.size() : path.size() - component.size() + dot));
}

} // namespace quorvane
