// What a cache kept of a package's files: whatever an entry holds, the package comes out whole, with nothing
// told. The first byte says which file's entry the others are, and whether their check sum is put right, so
// that they reach the archive's reader.
#include "Fuzz/FuzzTarget.h"

#include "Host/QVPackageCache.h"
#include "Host/QVPackageFolder.h"
#include "Quorvane/Completions/QVCompletionSet.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <filesystem>
#include <fstream>

using namespace quorvane;
namespace fs = std::filesystem;

namespace {

const std::string syntaxText =
    "<syntax name=\"a\"><scopes><scope name=\"b\"><expression>c</expression></scope></scopes></syntax>";
const std::string completionsText =
    "<completions><set name=\"a\"><completion string=\"b\"/></set></completions>";

/// A package and its cache, which go when the process ends.
struct Place {
    fs::path folder;
    Place() {
        std::string path = (fs::temp_directory_path() / "quorvane-XXXXXX").string();
        fuzz::require(mkdtemp(path.data()) != nullptr);
        folder = path;
        write("package/package.json", "{\"identifier\": \"a\"}");
        write("package/Syntaxes/a.xml", syntaxText);
        write("package/Completions/a.xml", completionsText);
        fs::create_directories(folder / "cache");
    }
    ~Place() {
        std::error_code error;
        fs::remove_all(folder, error);
    }
    void write(const std::string &name, std::string_view bytes) const {
        fs::create_directories((folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary | std::ios::trunc) << bytes;
    }
    NSURL url(const char *name) const {
        return NSURL::fileURLWithPath(NSString::stringWithUTF8String((folder / name).string()));
    }
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::silenceLog();
    if (size == 0)
        return 0;
    static const Place place;
    const QVPackageCache cache(place.url("cache"), "engine");
    const bool ofSyntax = (data[0] & 1) != 0;
    const NSData contents(ofSyntax ? syntaxText : completionsText);
    const auto kind = ofSyntax ? QVPackageCache::Syntax : QVPackageCache::Completions;
    const NSData bytes(std::vector<std::uint8_t>(data + 1, data + size));
    fs::remove_all(place.folder / "cache");
    fuzz::require(cache.setArchive(bytes, contents, kind));
    if ((data[0] & 2) != 0)
        for (const auto &entry : fs::directory_iterator(place.folder / "cache"))
            std::ofstream(entry.path(), std::ios::binary | std::ios::trunc) << bytes.view();

    QVPackageFolder::Errors errors;
    const auto package = QVPackageFolder::initWithContentsOfURL(place.url("package"), &cache, &errors);
    fuzz::require(package != nullptr && errors.empty());
    for (const auto &[name, syntax] : package->syntaxes())
        syntax->grammar();
    for (const auto &[name, set] : package->completionSets())
        set->completions();
    return 0;
}
