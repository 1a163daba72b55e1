// Manifests of packages: any bytes give a manifest that names the package, or an error with a place.
#include "Fuzz/FuzzTarget.h"

#include "Host/QVPackageError.h"
#include "Host/QVPackageManifest.h"

using namespace quorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    std::shared_ptr<NSError> error;
    const auto manifest = QVPackageManifest::manifestWithData(
        NSData(std::vector<std::uint8_t>(data, data + size)), u"package.json", &error);
    fuzz::require(manifest.has_value() == (error == nullptr));
    if (manifest) {
        fuzz::require(manifest->identifier.length() != 0 && manifest->name.length() != 0);
        return 0;
    }
    fuzz::require(error->localizedDescription().hasPrefix(u"package.json: {"));
    const auto line = error->integerForKey(QVPackageErrorLineKey);
    const auto column = error->integerForKey(QVPackageErrorColumnKey);
    fuzz::require(line && *line >= 1 && column && *column >= 1);
    return 0;
}
