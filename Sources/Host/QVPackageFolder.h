#pragma once

#include "Platform/Foundation/NSURL.h"
#include "Quorvane/Packages/QVPackage.h"

namespace quorvane {

class NSError;
class QVPackageCache;

/// A package as it stands in a folder: `package.json`, and the files of `Syntaxes/*.xml`, `Completions/*.xml`
/// and `Themes/*.css` in the order of their names. All is read when the package is made; hand it to
/// `QVLoadable` to load it. `Documentation/PackageFolder.md` tells the format.
///
/// What is wrong with one file keeps that file out and nothing else; a folder without a good `package.json`
/// is no package. A scope whose pattern does not compile is told and its syntax comes all the same. Links are
/// followed. Hidden files, and those that end otherwise, are passed over.
///
/// Not to be made under the package lock. Immutable afterwards.
class QVPackageFolder final : public QVPackage {
public:
    using Errors = std::vector<std::shared_ptr<NSError>>;

    /// Reads one package. Null, with an error among the others, where the folder is none. The errors
    /// (`QVPackageErrorDomain`) are appended in the order in which they were met. With a cache, what was read
    /// before comes from its archives, with grammars still packed, and what is new goes there, unless
    /// something was wrong with it.
    static std::shared_ptr<QVPackageFolder>
    initWithContentsOfURL(const NSURL &url, const QVPackageCache *cache = nullptr, Errors *errors = nullptr);
    /// The packages in some folders of packages: those of each folder by name, folder by folder. What is no
    /// folder in them is passed over, and so is a folder that looks like no package at all. A search folder
    /// that is missing or can't be read is an error.
    static std::vector<std::shared_ptr<QVPackageFolder>>
    packagesInFolders(const std::vector<NSURL> &folders, const QVPackageCache *cache = nullptr,
                      Errors *errors = nullptr);

    /// The folder.
    const NSURL &url() const { return _url; }
    /// For people.
    const NSString &name() const { return _name; }
    /// Null where the package tells none.
    const NSString &version() const { return _version; }
    /// The file that a syntax of this package was read from; null for a name it has not.
    NSURL urlOfSyntax(const NSString &name) const;

    NSString identifier() const override { return _identifier; }
    std::map<NSString, std::shared_ptr<QVSyntax>> syntaxes() const override { return _syntaxes; }
    std::map<NSString, std::shared_ptr<QVCompletionSet>> completionSets() const override {
        return _completionSets;
    }
    std::vector<std::shared_ptr<QVCompletionProvider>> completionProviders() const override {
        return _completionProviders;
    }
    std::vector<std::shared_ptr<QVTheme>> themes() const override { return _themes; }

private:
    struct Reader;
    QVPackageFolder() = default;

    NSURL _url;
    NSString _identifier;
    NSString _name;
    NSString _version;
    std::map<NSString, std::shared_ptr<QVSyntax>> _syntaxes;
    std::map<NSString, NSURL> _syntaxURLs;
    std::map<NSString, std::shared_ptr<QVCompletionSet>> _completionSets;
    std::map<NSString, NSURL> _completionSetURLs;
    std::vector<std::shared_ptr<QVCompletionProvider>> _completionProviders;
    std::vector<std::shared_ptr<QVTheme>> _themes;
};

} // namespace quorvane
