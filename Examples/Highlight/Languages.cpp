#include "Languages.h"

#include "Host/QVPackageCache.h"
#include "Host/QVPackageFolder.h"
#include "Platform/Foundation/NSError.h"
#include "Platform/Foundation/NSURL.h"

#include <cstdio>
#include <filesystem>

using namespace quorvane;
namespace fs = std::filesystem;

namespace highlight {

std::string utf8(const NSString &string) { return string.UTF8String(); }

std::string textOfError(const NSError &error) {
    std::string text = utf8(error.localizedDescription());
    if (const NSString reason = error.localizedFailureReason())
        text += ": " + utf8(reason);
    if (const NSString suggestion = error.localizedRecoverySuggestion())
        text += ": " + utf8(suggestion);
    if (const auto line = error.integerForKey(u"line");
        line && error.localizedDescription().view().find(u'{') == std::u16string_view::npos)
        text += " {" + std::to_string(*line) + ", " +
                std::to_string(error.integerForKey(u"column").value_or(0)) + "}";
    if (const auto underlying = error.underlyingError())
        text += ": " + textOfError(*underlying);
    return text;
}

namespace {

void loadSyntax(const std::string &file, SyntaxFiles &files) {
    std::shared_ptr<NSError> error;
    const auto syntax =
        QVSyntax::initWithContentsOfURL(NSURL::fileURLWithPath(NSString::stringWithUTF8String(file)), &error);
    if (!syntax)
        throw Failure{file + ": " + (error ? textOfError(*error) : "no syntax with a name in it"), 1};
    if (error)
        std::fprintf(stderr, "quorvane-highlight: warning: %s: %s\n", file.c_str(),
                     textOfError(*error).c_str());
    QVSyntax::setSyntax(syntax, syntax->name());
    files[syntax->name()] = file;
}

void loadPackages(const std::string &folder, bool usesCache, SyntaxFiles &files) {
    std::error_code missing;
    if (!fs::is_directory(folder, missing))
        throw Failure{folder + ": no such folder of packages", 1};
    const QVPackageCache cache(usesCache ? QVPackageCache::defaultFolder() : NSURL());
    QVPackageFolder::Errors errors;
    const auto packages = QVPackageFolder::packagesInFolders(
        {NSURL::fileURLWithPath(NSString::stringWithUTF8String(folder))}, &cache, &errors);
    for (const auto &error : errors)
        std::fprintf(stderr, "quorvane-highlight: warning: %s\n",
                     utf8(error->localizedDescription()).c_str());
    QVLoadable::loadPackagesIntoSyntaxEngine({packages.begin(), packages.end()});
    // What another package had already is not taken.
    for (const auto &package : packages)
        for (const auto &[name, syntax] : package->syntaxes())
            if (QVSyntax::syntaxForName(name) == syntax)
                files[name] = utf8(package->urlOfSyntax(name).path());
}

} // namespace

std::string defaultPackages() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    const fs::path installed = program.parent_path() / ".." / "share" / "quorvane" / "Packages";
    return !error && fs::is_directory(installed, error) ? installed.string() : QUORVANE_SOURCE_PACKAGES;
}

std::string bundledThemes() { return defaultPackages() + "/Themes/Themes"; }

SyntaxFiles loadLanguages(const Arguments &arguments) {
    SyntaxFiles files;
    // Who tries a syntax file of their own need not have packages.
    if (!arguments.packages.empty() || arguments.syntaxFiles.empty())
        loadPackages(arguments.packages.empty() ? defaultPackages() : arguments.packages,
                     !arguments.withoutCache, files);
    for (const std::string &file : arguments.syntaxFiles)
        loadSyntax(file, files);
    return files;
}

std::shared_ptr<QVSyntax> syntaxForFile(const Arguments &arguments, const std::string &file,
                                        const NSString &text) {
    if (!arguments.syntax.empty()) {
        const auto syntax = QVSyntax::syntaxForName(NSString::stringWithUTF8String(arguments.syntax));
        if (!syntax)
            throw Failure{"unknown syntax: " + arguments.syntax, 2};
        return syntax;
    }
    const NSString name =
        file == "-" ? NSString() : NSString::stringWithUTF8String(fs::path(file).filename().string());
    const auto syntax = QVSyntax::suggestedSyntaxForString(text, name);
    if (!syntax)
        throw Failure{file + ": no syntax fits its name or content; name one with --syntax", 2};
    return syntax;
}

} // namespace highlight
