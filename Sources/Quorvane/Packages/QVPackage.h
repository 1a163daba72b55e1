#pragma once

#include "Platform/Foundation/NSString.h"

#include <map>
#include <memory>
#include <vector>

namespace quorvane {

class QVCompletionProvider;
class QVCompletionSet;
class QVStyle;
class QVSyntax;
class QVTheme;

/// A unit in which language support and themes arrive. Hosts make packages, from folders or otherwise, and
/// hand them to `QVLoadable`; this is what loading and unloading ask them. Each answer stays the same for as
/// long as the package is loaded. Asked under the package lock, on the thread that loads; so no operation may
/// use a syntax's grammar or `QVLoadable::performBlockWithPackageLock`.
class QV_EXPORT QVPackage {
public:
    virtual ~QVPackage() = default;

    /// Unique among the loaded packages; the second one of a name is refused.
    virtual NSString identifier() const = 0;
    /// The package's syntaxes by name; one under an empty name is passed over.
    virtual std::map<NSString, std::shared_ptr<QVSyntax>> syntaxes() const { return {}; }
    /// The package's completion sets by name; one under an empty name is passed over.
    virtual std::map<NSString, std::shared_ptr<QVCompletionSet>> completionSets() const { return {}; }
    /// Providers beside those of the syntaxes themselves; each is added to the syntaxes that it names.
    virtual std::vector<std::shared_ptr<QVCompletionProvider>> completionProviders() const { return {}; }
    /// Styles that belong to no theme.
    virtual std::vector<std::shared_ptr<QVStyle>> styles() const { return {}; }
    virtual std::vector<std::shared_ptr<QVTheme>> themes() const { return {}; }
};

} // namespace quorvane
