#include "Host/QVPackageFolder.h"

#include "Host/QVCompletionsArchive.h"
#include "Host/QVFileReading.h"
#include "Host/QVPackageCache.h"
#include "Host/QVPackageError.h"
#include "Host/QVPackageManifest.h"
#include "Platform/Foundation/NSKeyedArchiver.h"
#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Quorvane/XML/QVXMLDocument.h"

#include <algorithm>

namespace quorvane {

namespace fs = std::filesystem;

namespace {

/// What stands in a folder, by name.
std::vector<fs::path> entriesOfFolder(const fs::path &folder, std::error_code &error) {
    std::vector<fs::path> entries;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        entries.push_back(at->path());
    std::sort(entries.begin(), entries.end());
    return entries;
}

bool isHidden(const fs::path &path) { return path.filename().native().starts_with('.'); }

/// Whether the name is taken; a link that leads nowhere is there too.
bool isThere(const fs::path &path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

bool isFolder(const fs::path &path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

std::shared_ptr<NSError> unreadable(const fs::path &path, const std::error_code &error) {
    return QVPackageError(QVPackageErrorUnreadable, QVStringForPath(path), {},
                          NSString::stringWithUTF8String(error.message()));
}

std::shared_ptr<QVXMLElement> topLevelElement(const QVXMLDocument &document) {
    for (const auto &child : document.rootElement()->children())
        if (auto element = std::dynamic_pointer_cast<QVXMLElement>(child))
            return element;
    return nullptr;
}

} // namespace

/// Reads the files of one package, each on its own.
struct QVPackageFolder::Reader {
    QVPackageFolder &package;
    const QVPackageCache *cache;
    Errors &errors;

    void tell(std::shared_ptr<NSError> error) { errors.push_back(std::move(error)); }

    /// Calls `read` with each file of a folder that ends so.
    template <typename Read> void forEachFile(const fs::path &folder, std::string_view extension, Read read) {
        if (!isThere(folder))
            return;
        std::error_code error;
        const auto entries = entriesOfFolder(folder, error);
        if (error)
            tell(unreadable(folder, error));
        for (const fs::path &file : entries)
            if (file.extension() == extension && !isHidden(file))
                read(file);
    }

    void read(const fs::path &folder) {
        forEachFile(folder / "Syntaxes", ".xml", [this](const fs::path &file) { readSyntax(file); });
        forEachFile(folder / "Completions", ".xml", [this](const fs::path &file) { readCompletions(file); });
        forEachFile(folder / "Themes", ".css", [this](const fs::path &file) { readTheme(file); });
    }

    std::shared_ptr<QVXMLDocument> documentOf(const NSData &data, const NSString &path) {
        std::shared_ptr<NSError> error;
        auto document = QVXMLDocument::initWithData(data, &error);
        if (!document)
            tell(QVPackageErrorForError(path, error));
        return document;
    }

    /// What the file's bytes were read into before; null where they were not.
    template <typename T> std::shared_ptr<T> archived(const NSData &data, QVPackageCache::Kind kind) {
        const NSData archive = cache ? cache->archiveForContents(data, kind) : NSData();
        return archive ? NSKeyedUnarchiver::unarchivedObjectOfClass<T>(archive) : nullptr;
    }
    void archive(const std::shared_ptr<const NSSecureCoding> &object, const NSData &data,
                 QVPackageCache::Kind kind) {
        cache->setArchive(NSKeyedArchiver::archivedDataWithRootObject(object), data, kind);
    }

    /// Whether the name is this file's to take.
    bool takeName(std::map<NSString, NSURL> &names, const NSString &name, std::u16string_view what,
                  const NSString &path) {
        const auto [entry, isNew] = names.emplace(name, NSURL::fileURLWithPath(path));
        if (!isNew)
            tell(QVPackageError(QVPackageErrorDuplicateName, path, {},
                                NSString::stringWithFormat(u"The %@ \"%@\" is already defined in %@",
                                                           NSString(what), name,
                                                           entry->second.lastPathComponent())));
        return isNew;
    }

    void readSyntax(const fs::path &file) {
        const NSString path = QVStringForPath(file);
        std::shared_ptr<NSError> error;
        const NSData data = QVContentsOfFile(file, limits::xmlDocumentBytes, &error);
        if (!data)
            return tell(std::move(error));
        auto syntax = archived<QVSyntax>(data, QVPackageCache::Syntax);
        if (!syntax || syntax->name().length() == 0 || !syntax->grammarData()) {
            syntax = syntaxFromXML(data, path);
            if (!syntax)
                return;
        }
        if (takeName(package._syntaxURLs, syntax->name(), u"syntax", path))
            package._syntaxes.emplace(syntax->name(), syntax);
    }

    std::shared_ptr<QVSyntax> syntaxFromXML(const NSData &data, const NSString &path) {
        const auto document = documentOf(data, path);
        if (!document)
            return nullptr;
        std::shared_ptr<NSError> error;
        auto syntax = QVSyntax::initWithDocument(*document, &error);
        if (error) {
            tell(QVPackageErrorForError(path, error, document.get()));
        } else if (!syntax) {
            const auto element = topLevelElement(*document);
            const bool isSyntax = element && element->name() == u"syntax";
            tell(QVPackageError(QVPackageErrorInvalidFile, path,
                                element ? QVPackageErrorPlace{static_cast<NSInteger>(element->lineNumber()),
                                                              static_cast<NSInteger>(element->columnNumber())}
                                        : QVPackageErrorPlace{1, 1},
                                isSyntax ? u"The syntax has no name" : u"Is no syntax"));
        } else if (cache) {
            // Of a copy: to archive a grammar connects it, and this one is to be connected at its first use.
            archive(syntax->copy(), data, QVPackageCache::Syntax);
        }
        return syntax;
    }

    void readCompletions(const fs::path &file) {
        const NSString path = QVStringForPath(file);
        std::shared_ptr<NSError> error;
        const NSData data = QVContentsOfFile(file, limits::xmlDocumentBytes, &error);
        if (!data)
            return tell(std::move(error));
        auto completions = archived<QVCompletionsArchive>(data, QVPackageCache::Completions);
        if (!completions) {
            completions = completionsFromXML(data, path);
            if (!completions)
                return;
        }
        for (const auto &[name, set] : completions->sets)
            if (takeName(package._completionSetURLs, name, u"completion set", path))
                package._completionSets.emplace(name, set);
        package._completionProviders.insert(package._completionProviders.end(),
                                            completions->providers.begin(), completions->providers.end());
    }

    void readTheme(const fs::path &file) {
        const NSString path = QVStringForPath(file);
        std::shared_ptr<NSError> error;
        // Looked at first, for the theme's own reader would wait for a pipe.
        if (!QVContentsOfFile(file, limits::themeBytes, &error))
            return tell(std::move(error));
        if (auto theme = QVTheme::themeWithContentsOfURL(NSURL::fileURLWithPath(path), &error))
            package._themes.push_back(std::move(theme));
        else
            tell(error ? QVPackageErrorForError(path, error)
                       : QVPackageError(QVPackageErrorInvalidFile, path, {}, u"Is no theme"));
    }

    std::shared_ptr<QVCompletionsArchive> completionsFromXML(const NSData &data, const NSString &path) {
        const auto document = documentOf(data, path);
        if (!document)
            return nullptr;
        auto completions = std::make_shared<QVCompletionsArchive>();
        std::shared_ptr<NSError> error;
        auto sets = QVCompletionSet::completionSetsWithDocument(*document, &completions->providers, &error);
        if (!sets) {
            tell(error ? QVPackageErrorForError(path, error)
                       : QVPackageError(QVPackageErrorInvalidFile, path, {}, u"Holds no completions"));
            return nullptr;
        }
        completions->sets = std::move(*sets);
        if (cache)
            archive(completions, data, QVPackageCache::Completions);
        return completions;
    }
};

std::shared_ptr<QVPackageFolder>
QVPackageFolder::initWithContentsOfURL(const NSURL &url, const QVPackageCache *cache, Errors *errors) {
    Errors unasked;
    Errors &told = errors ? *errors : unasked;
    const fs::path folder = url.path().UTF8String();
    const fs::path file = folder / "package.json";
    std::shared_ptr<NSError> error;
    std::optional<QVPackageManifest> manifest;
    if (const NSData data = QVContentsOfFile(file, limits::packageManifestBytes, &error))
        manifest = QVPackageManifest::manifestWithData(data, QVStringForPath(file), &error);
    if (!manifest) {
        told.push_back(std::move(error));
        return nullptr;
    }
    const std::shared_ptr<QVPackageFolder> package(new QVPackageFolder);
    package->_url = url;
    package->_identifier = std::move(manifest->identifier);
    package->_name = std::move(manifest->name);
    package->_version = std::move(manifest->version);
    Reader{*package, cache, told}.read(folder);
    return package;
}

std::vector<std::shared_ptr<QVPackageFolder>>
QVPackageFolder::packagesInFolders(const std::vector<NSURL> &folders, const QVPackageCache *cache,
                                   Errors *errors) {
    std::vector<std::shared_ptr<QVPackageFolder>> packages;
    for (const NSURL &url : folders) {
        const fs::path searched = url.path().UTF8String();
        std::error_code error;
        const auto entries = entriesOfFolder(searched, error);
        if (error && errors)
            errors->push_back(unreadable(searched, error));
        for (const fs::path &folder : entries) {
            if (isHidden(folder))
                continue;
            std::error_code linkError;
            if (fs::is_symlink(folder, linkError) && !fs::exists(folder, linkError)) {
                if (errors)
                    errors->push_back(unreadable(
                        folder,
                        linkError ? linkError : std::make_error_code(std::errc::no_such_file_or_directory)));
                continue;
            }
            if (!isFolder(folder) || !(isThere(folder / "package.json") || isThere(folder / "Syntaxes") ||
                                       exists(folder / "Completions") || isThere(folder / "Themes")))
                continue;
            if (auto package =
                    initWithContentsOfURL(NSURL::fileURLWithPath(QVStringForPath(folder)), cache, errors))
                packages.push_back(std::move(package));
        }
    }
    return packages;
}

NSURL QVPackageFolder::urlOfSyntax(const NSString &name) const {
    const auto found = _syntaxURLs.find(name);
    return found != _syntaxURLs.end() ? found->second : NSURL();
}

} // namespace quorvane
