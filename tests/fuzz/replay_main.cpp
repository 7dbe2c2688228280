// SPDX-License-Identifier: GPL-3.0-or-later
// Runs a fuzz target over the files of the folders on the command line, so that ordinary builds check every seed and
// every input that once failed.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

void replay(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::printf("%s\n", path.string().c_str());
    std::fflush(stdout); // the last line then names the input that crashed
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char *argv[])
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[i])) {
            if (!entry.is_regular_file())
                continue;
            replay(entry.path());
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
