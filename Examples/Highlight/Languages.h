#pragma once

#include "Arguments.h"

#include "Quorvane/Syntaxes/QVSyntax.h"

#include <map>

namespace quorvane {
class NSError;
}

namespace highlight {

/// Something that the user must know: one line for the standard error stream, and the program's exit code.
struct Failure {
    std::string message;
    /// 1 where a file is at fault, 2 where the command line is.
    int exitCode;
};

/// The file that each syntax was read from, by the syntax's name.
using SyntaxFiles = std::map<quorvane::NSString, std::string>;

/// Reads the packages and syntax files that the arguments name and registers their syntaxes. Warnings go to
/// the standard error stream. Throws `Failure`.
SyntaxFiles loadLanguages(const Arguments &arguments);

/// The syntax that the arguments name, or that the file's name and text tell. Throws `Failure`.
std::shared_ptr<quorvane::QVSyntax> syntaxForFile(const Arguments &arguments, const std::string &file,
                                                  const quorvane::NSString &text);

/// The packages of an installed program, else those of the source tree that it was built from.
std::string defaultPackages();
/// The folder of the themes that come with them.
std::string bundledThemes();

/// Everything that an error says, the cause behind it, on one line.
std::string textOfError(const quorvane::NSError &error);

/// Folders, files and text in and out of the engine's strings.
std::string utf8(const quorvane::NSString &string);

} // namespace highlight
