#pragma once

#include "Platform/Foundation/NSError.h"

namespace quorvane {

class QVXMLDocument;

/// What is wrong with a package folder. The description is one line for people that begins with the file:
/// "Packages/C/Syntaxes/c.xml: {3, 14}: Missing expression for scope it"; line and column, counted from 1,
/// stand in it where the fault has a place.
inline constexpr const char16_t *QVPackageErrorDomain = u"QVPackageErrorDomain";

enum QVPackageErrorCode : NSInteger {
    /// A folder or file can't be read, or is none.
    QVPackageErrorUnreadable = 1,
    /// `package.json` is missing, is no JSON or says something that can't be used.
    QVPackageErrorInvalidManifest = 2,
    /// A file of the package is no XML or theme, or one of its definitions is no good.
    QVPackageErrorInvalidFile = 3,
    /// Two files of one package define something of the same name; the second one is left out.
    QVPackageErrorDuplicateName = 4,
};

/// User info keys beside the description: the file, and the place in it where there is one.
inline constexpr const char16_t *QVPackageErrorPathKey = u"path";
inline constexpr const char16_t *QVPackageErrorLineKey = u"line";
inline constexpr const char16_t *QVPackageErrorColumnKey = u"column";

/// A place in a file, counted from 1; line 0 stands for none.
struct QVPackageErrorPlace {
    NSInteger line = 0;
    NSInteger column = 0;
};

/// An error about a file.
std::shared_ptr<NSError> QVPackageError(QVPackageErrorCode code, const NSString &path,
                                        QVPackageErrorPlace place, std::u16string_view message,
                                        std::shared_ptr<NSError> underlyingError = nullptr);

/// The same for what the engine says about the file: the place comes from the error's user info or from the
/// end of its text, and what is below the error is told behind it. Of a single expression the engine names
/// the scope alone; the document that the file was read into tells where that is, where it has only one such
/// scope.
std::shared_ptr<NSError> QVPackageErrorForError(const NSString &path, const std::shared_ptr<NSError> &error,
                                                const QVXMLDocument *document = nullptr);

} // namespace quorvane
