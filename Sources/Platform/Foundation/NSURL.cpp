#include "Platform/Foundation/NSURL.h"

namespace quorvane {

NSURL NSURL::fileURLWithPath(NSString path) {
    NSURL url;
    url._path = std::move(path);
    return url;
}

NSURL NSURL::URLByAppendingPathComponent(const NSString &component) const {
    const bool needsSlash = !_path.hasSuffix(u"/") && _path.length() != 0;
    return fileURLWithPath(
        _path.stringByAppendingString(needsSlash ? u"/" : u"").stringByAppendingString(component));
}

NSString NSURL::description() const { return NSString::stringWithFormat(u"file://%@", _path); }

} // namespace quorvane
