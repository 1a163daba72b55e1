#include "Inspection.h"
#include "Languages.h"

#include "Quorvane/Syntaxes/QVSyntax.h"

#include <algorithm>
#include <filesystem>

using namespace quorvane;
namespace fs = std::filesystem;

namespace highlight {

namespace {

struct Entry {
    std::string name;
    std::string description;
    std::string file;
};

std::string textOfEntries(const char *heading, const std::vector<Entry> &entries) {
    std::size_t nameWidth = 0;
    std::size_t descriptionWidth = 0;
    for (const Entry &entry : entries) {
        nameWidth = std::max(nameWidth, entry.name.size());
        descriptionWidth = std::max(descriptionWidth, entry.description.size());
    }
    const auto padded = [](std::string text, std::size_t width) {
        text.resize(std::max(text.size(), width), ' ');
        return text;
    };
    std::string text = std::string(heading) + ":\n";
    for (const Entry &entry : entries)
        text += "  " + padded(entry.name, nameWidth) + "  " + padded(entry.description, descriptionWidth) +
                "  " + entry.file + "\n";
    return text;
}

Entry entryOfTheme(const QVTheme &theme) {
    const bool isDark = theme.interfaceStyle() == QVThemeInterfaceStyleDark;
    return {utf8(theme.name()), utf8(theme.displayName()) + (isDark ? " (dark)" : " (light)"),
            utf8(theme.URL().path())};
}

} // namespace

std::string listText(const SyntaxFiles &files) {
    std::vector<Entry> syntaxes;
    for (const auto &[name, syntax] : QVSyntax::allSyntaxes()) {
        const auto file = files.find(name);
        syntaxes.push_back({utf8(name),
                            (syntax->displayName() ? utf8(syntax->displayName()) : utf8(name)) +
                                (syntax->isSubsyntaxOnly() ? " (embedded only)" : ""),
                            file != files.end() ? file->second : std::string()});
    }

    std::vector<Entry> themes;
    for (const auto &theme : QVTheme::allThemes())
        themes.push_back(entryOfTheme(*theme));
    // Those that come with the program are there whatever packages are taken.
    std::error_code error;
    for (const auto &file : fs::directory_iterator(bundledThemes(), error)) {
        const std::string name = file.path().stem().string();
        const bool isKnown =
            std::any_of(themes.begin(), themes.end(), [&](const Entry &entry) { return entry.name == name; });
        if (file.path().extension() == ".css" && !isKnown)
            themes.push_back(entryOfTheme(*themeNamed(name)));
    }
    std::stable_sort(themes.begin(), themes.end(),
                     [](const Entry &a, const Entry &b) { return a.name < b.name; });
    return textOfEntries("syntaxes", syntaxes) + textOfEntries("themes", themes);
}

} // namespace highlight
