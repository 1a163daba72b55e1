#pragma once

#include "Platform/Foundation/NSData.h"
#include "Platform/Foundation/NSString.h"

#include <optional>

namespace quorvane {

class NSError;

/// What a package's `package.json` says: an object with the texts "identifier", "name" and "version". The
/// identifier must be there; without a name the identifier stands for it, and the version is null where there
/// is none. Other keys are left alone, so that packages can hold what other programs or later versions read.
struct QVPackageManifest {
    NSString identifier;
    NSString name;
    NSString version;

    /// Empty with an error, which names the path and the place, where the bytes are no JSON, no object, or a
    /// known key has a value of another type.
    static std::optional<QVPackageManifest> manifestWithData(const NSData &data, const NSString &path,
                                                             std::shared_ptr<NSError> *error = nullptr);
};

} // namespace quorvane
