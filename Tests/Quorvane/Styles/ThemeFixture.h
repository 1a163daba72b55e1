#pragma once

#include "Quorvane/Styles/QVTheme.h"
#include "Quorvane/Styles/QVThemeBuilder.h"

#include <gtest/gtest.h>

namespace quorvane::test {

/// A theme file's text as a theme; it must be a good one.
inline std::shared_ptr<QVTheme> themeOf(const NSString &text) {
    auto theme = QVThemeBuilder::init()->parseString(text);
    EXPECT_TRUE(theme);
    return theme;
}

} // namespace quorvane::test
