#pragma once

#include "Host/QVPackageFolder.h"
#include "Platform/Foundation/NSError.h"
#include "Tests/Support/SyntaxText.h"

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

inline const std::string smallManifest = R"({"identifier": "test.small", "name": "Small", "version": "1.2"})";

/// What errors say, without the path of the folder.
inline std::vector<std::string> textsOf(const QVPackageFolder::Errors &errors,
                                        const TemporaryFolder &folder) {
    std::vector<std::string> texts;
    for (const auto &error : errors) {
        std::string text = error->localizedDescription().UTF8String();
        const std::string prefix = folder.path().string() + "/";
        for (std::size_t at; (at = text.find(prefix)) != std::string::npos;)
            text.erase(at, prefix.size());
        texts.push_back(std::move(text));
    }
    return texts;
}

template <typename Map> std::vector<std::string> keysOf(const Map &map) {
    std::vector<std::string> keys;
    for (const auto &[key, value] : map)
        keys.push_back(key.UTF8String());
    return keys;
}

} // namespace quorvane::test
