// Runs a fuzz entry point outside libFuzzer: every file named on the command
// line, and every file inside a folder named there, in name order, is handed to
// LLVMFuzzerTestOneInput once. A crash, a sanitizer report or an abort of the
// entry's own checks fails the run; so does finding no input at all.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) __attribute__((weak));

namespace {
namespace fs = std::filesystem;

std::vector<fs::path> inputsOf(const fs::path &path)
{
    std::vector<fs::path> files;
    if (fs::is_directory(path)) {
        for (const fs::directory_entry &entry : fs::directory_iterator(path)) {
            if (entry.is_regular_file()) {
                files.push_back(entry.path());
            }
        }
        std::sort(files.begin(), files.end());
    } else if (fs::is_regular_file(path)) {
        files.push_back(path);
    }
    return files;
}
} // namespace

int main(int argc, char **argv)
{
    if (LLVMFuzzerInitialize) {
        LLVMFuzzerInitialize(&argc, &argv);
    }
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path &file : inputsOf(argv[i])) {
            std::ifstream in(file, std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
            std::printf("replaying %s (%zu bytes)\n", file.c_str(), bytes.size());
            std::fflush(stdout);
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
            ++count;
        }
    }
    std::printf("replayed %zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
