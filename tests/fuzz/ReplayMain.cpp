// Tries each file of the folders that are named: what the fuzzer's main function does, with inputs
// that are there.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/fuzz/Fuzz.h"

int main(int argc, char** argv) {
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        for (auto const& entry : std::filesystem::directory_iterator(argv[i])) {
            std::fprintf(stderr, "%s\n", entry.path().c_str());  // the last one, if it ends here
            std::ifstream file(entry.path(), std::ios::binary);
            std::string const input((std::istreambuf_iterator<char>(file)),
                                    std::istreambuf_iterator<char>());
            // Of its own size exactly, so that a sanitizer sees what reads beyond its end.
            std::vector<std::uint8_t> const bytes(input.begin(), input.end());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
