#pragma once

#include "Platform/Foundation/NSData.h"

#include <filesystem>

namespace quorvane {

class NSError;
class NSString;

/// The path as the engine's strings have it; bytes that are no UTF-8 become U+FFFD.
NSString QVStringForPath(const std::filesystem::path &path);

/// A whole file's bytes, links followed. Null with an error about the file where it can't be read, is no file
/// (reading a pipe could wait for ever) or has more bytes than the limit.
NSData QVContentsOfFile(const std::filesystem::path &path, std::size_t limit,
                        std::shared_ptr<NSError> *error);

} // namespace quorvane
