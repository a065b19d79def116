// Feeds the files of the folders that it is given to a target, where no fuzzer is linked in.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    int files = 0;
    for (int k = 1; k < argc; ++k) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[k])) {
            std::cerr << entry.path().filename().string() << '\n'; // the last one named is the one that failed
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++files;
        }
    }
    return files > 0 ? 0 : 1;
}
