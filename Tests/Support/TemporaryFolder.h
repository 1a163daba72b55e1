#pragma once

#include "Platform/Foundation/NSURL.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace quorvane::test {

/// A folder of its own that goes with the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string path = (std::filesystem::temp_directory_path() / "quorvane-XXXXXX").string();
        EXPECT_NE(mkdtemp(path.data()), nullptr);
        _path = path;
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(_path, error);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::filesystem::path &path() const { return _path; }
    NSURL url(const std::string &name = "") const {
        const auto path = name.empty() ? _path : _path / name;
        return NSURL::fileURLWithPath(NSString::stringWithUTF8String(path.string()));
    }
    /// Writes a file with the folders above it.
    std::filesystem::path write(const std::string &name, std::string_view contents) const {
        const auto path = _path / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << contents;
        return path;
    }

private:
    std::filesystem::path _path;
};

} // namespace quorvane::test
