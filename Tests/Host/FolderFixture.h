#pragma once

#include "Host/QVPackageFolder.h"
#include "Platform/Foundation/NSError.h"
#include "Tests/Support/SyntaxText.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace quorvane::test {

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
