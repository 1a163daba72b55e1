#pragma once

#include <string>
#include <string_view>

namespace quorvane {

/// The text of a class or capture name without the characters that have no place in one: what is left is "*",
/// word characters, "." and "-". Shared by the two levels of selectors.
std::u16string QVCleanedClassText(std::u16string_view text);

} // namespace quorvane
