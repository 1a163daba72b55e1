// The languages that come with the engine, on any text: a tree that holds together, the same with remembered
// searches and without.
#include "Fuzz/ParseChecks.h"

#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Syntaxes/QVSyntax.h"

#include <filesystem>
#include <vector>

using namespace quorvane;

namespace {

/// Searching afresh behind every region takes time that grows with the square of a line's length: longer
/// texts would find nothing but that.
constexpr std::size_t longestText = 4096;
constexpr NSUInteger maximumLineLength = 10000;

/// Which language a seed is for must not change when one more comes to the packages, so the order of those
/// that have seeds is written down; the others follow.
constexpr const char16_t *languages[] = {u"json", u"c", u"css", u"html", u"javascript"};

/// All languages of the packages are registered, since some stand inside others.
std::vector<std::shared_ptr<QVSyntax>> loadSyntaxes() {
    fuzz::silenceLog();
    for (const auto &entry : std::filesystem::recursive_directory_iterator(QUORVANE_SOURCE_PACKAGES)) {
        if (entry.path().extension() != ".xml" || entry.path().parent_path().filename() != "Syntaxes")
            continue;
        const auto syntax = QVSyntax::initWithContentsOfURL(
            NSURL::fileURLWithPath(NSString::stringWithUTF8String(entry.path().string())));
        fuzz::require(syntax != nullptr);
        QVSyntax::setSyntax(syntax, syntax->name());
    }
    auto others = QVSyntax::allSyntaxes();
    std::vector<std::shared_ptr<QVSyntax>> syntaxes;
    for (const char16_t *const language : languages) {
        syntaxes.push_back(QVSyntax::syntaxForName(language));
        others.erase(language);
    }
    for (const auto &[name, syntax] : others)
        syntaxes.push_back(syntax);
    return syntaxes;
}

} // namespace

/// The first byte is the language, counted from "@" in the seeds, with its highest bit for text in UTF-16.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const std::vector<std::shared_ptr<QVSyntax>> syntaxes = loadSyntaxes();
    if (size == 0)
        return 0;
    const std::shared_ptr<QVSyntax> &syntax = syntaxes[(data[0] & 0x1F) % syntaxes.size()];
    if (!syntax)
        return 0;
    const std::u16string text = fuzz::textOfBytes(data + 1, size - 1, (data[0] & 0x80) != 0);
    fuzz::requireSameTreeBothWays(syntax, std::u16string_view(text).substr(0, longestText),
                                  maximumLineLength);
    return 0;
}
