#pragma once

#include "Platform/Foundation/NSString.h"

#include <map>

namespace quorvane {

class QVSyntax;

/// A unit in which language support arrives. Hosts make packages, from folders or otherwise, and hand them to
/// the engine; this is what the engine asks them. Called under the package lock, from the thread that loads.
class QV_EXPORT QVPackage {
public:
    virtual ~QVPackage() = default;

    /// Unique among the loaded packages.
    virtual NSString identifier() const = 0;
    /// The package's syntaxes by name.
    virtual std::map<NSString, std::shared_ptr<QVSyntax>> syntaxes() const { return {}; }
};

} // namespace quorvane
