// Gives a fuzz target the files of a folder, where there is no libFuzzer.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/target.h"

int main(int argc, char** argv)
{
    int files = 0;
    for (int i = 1; i < argc; ++i)
        for (const auto& entry : std::filesystem::directory_iterator{argv[i]}) {
            std::ifstream file{entry.path(), std::ios::binary};
            const std::vector<char> bytes{std::istreambuf_iterator<char>{file},
                                          {}};
            LLVMFuzzerTestOneInput(
                reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++files;
        }
    printf("%d files\n", files);
    return files > 0 ? 0 : 1;
}
