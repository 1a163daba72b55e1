// Edits of a text in the languages that come with the engine: behind each one the tree is the one of a fresh
// parse, and what changed lies in the answered range.
#include "Fuzz/FuzzTarget.h"
#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Laws/ReparseLaw.h"

#include <cstdio>
#include <filesystem>

using namespace quorvane;

namespace {

constexpr std::size_t longestText = 2048;
constexpr int mostEdits = 24;

/// Which language a seed is for must not change when one more comes to the packages.
constexpr const char16_t *languages[] = {u"json", u"c", u"css", u"html", u"javascript"};

/// All languages of the packages are registered, since some stand inside others.
void loadSyntaxes() {
    fuzz::silenceLog();
    for (const auto &entry : std::filesystem::recursive_directory_iterator(QUORVANE_SOURCE_PACKAGES)) {
        if (entry.path().extension() != ".xml" || entry.path().parent_path().filename() != "Syntaxes")
            continue;
        const auto syntax = QVSyntax::initWithContentsOfURL(
            NSURL::fileURLWithPath(NSString::stringWithUTF8String(entry.path().string())));
        fuzz::require(syntax != nullptr);
        QVSyntax::setSyntax(syntax, syntax->name());
    }
}

/// An edit takes four bytes and its text: where, in 256th of the text; how much goes; how much comes, from
/// elsewhere in the text if that is odd, else from the bytes.
class Edits {
public:
    Edits(const std::uint8_t *data, std::size_t size) : _data(data), _end(data + size) {}
    bool isAtEnd() const { return _data == _end; }

    test::Edit next(std::u16string_view text) {
        const NSUInteger location = text.size() * byte() / 255;
        const NSUInteger shift = byte() % 8;
        const NSUInteger place = std::min<NSUInteger>(text.size(), location + shift);
        const NSUInteger goes = std::min<NSUInteger>(text.size() - place, byte());
        const std::size_t comes = byte();
        if (comes & 1) {
            const NSUInteger from = text.size() * byte() / 255;
            return {{place, goes}, std::u16string(text.substr(from, comes / 2))};
        }
        std::string typed;
        for (std::size_t count = comes / 2 % 8; count != 0 && !isAtEnd(); --count)
            typed.push_back(static_cast<char>(byte()));
        const auto *const bytes = reinterpret_cast<const std::uint8_t *>(typed.data());
        return {{place, goes}, fuzz::textOfBytes(bytes, typed.size(), false)};
    }

private:
    std::size_t byte() { return isAtEnd() ? 0 : *_data++; }

    const std::uint8_t *_data;
    const std::uint8_t *_end;
};

} // namespace

/// The first byte is the language, counted from "@" in the seeds; a NUL ends the text, and edits follow.
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const bool loaded = (loadSyntaxes(), true);
    if (size == 0 || !loaded)
        return 0;
    const auto syntax = QVSyntax::syntaxForName(languages[(data[0] & 0x1F) % std::size(languages)]);
    if (!syntax)
        return 0;
    const std::uint8_t *const end = std::find(data + 1, data + size, 0);
    std::u16string text = fuzz::textOfBytes(data + 1, static_cast<std::size_t>(end - data - 1), false);
    text.resize(std::min(text.size(), longestText));
    test::ReparseLaw law(syntax, std::move(text), 10000);
    Edits edits(end, static_cast<std::size_t>(data + size - end));
    for (int count = 0; count < mostEdits && !edits.isAtEnd(); ++count) {
        const std::string problem = law.problemOfEdit(edits.next(law.text()));
        if (!problem.empty()) {
            std::fprintf(stderr, "%s\n", problem.c_str());
            std::abort();
        }
    }
    return 0;
}
