#pragma once

#include <string>
#include <vector>

/// The examples of the pages under Documentation, for the tests that hold them to what the engine does.
namespace quorvane::test {

/// A block between fences: the word behind the opening fence, the text, and the last line before it that is
/// not blank.
struct PageExample {
    std::string kind;
    std::string text;
    std::string lead;
};

/// A page by its name; throws `std::runtime_error` where it can't be read.
std::string textOfPage(const std::string &name);

/// All blocks of a page, in order.
std::vector<PageExample> examplesOfPage(const std::string &name);

/// The words that the tables of a page explain: what stands between back-ticks in their first column. Each
/// once, sorted.
std::vector<std::string> wordsOfTables(const std::string &name);

} // namespace quorvane::test
