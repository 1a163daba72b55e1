// Runs a fuzz target over the files of the folders that are named, as an ordinary test.
#include "Fuzz/FuzzTarget.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

int main(int argc, char **argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[i])) {
            if (!entry.is_regular_file())
                continue;
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
            // Said before, so that the file that breaks the reader is the last one that is named.
            std::cout << entry.path().filename().string() << " (" << bytes.size() << " bytes)" << std::endl;
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
            ++count;
        }
    }
    std::cout << count << " seeds\n";
    return count > 0 ? 0 : 1;
}
