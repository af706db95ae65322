// Runs a fuzz target over files and folders without libFuzzer: how the seed corpus and
// every kept crasher are replayed as ordinary tests.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size);
// Targets that need set-up (a GUI application, say) define this, as libFuzzer allows.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* Argc, char*** Argv);

namespace {

int RunFile(const std::filesystem::path& File)
{
    std::ifstream In(File, std::ios::binary);
    const std::vector<char> Bytes((std::istreambuf_iterator<char>(In)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(Bytes.data()), Bytes.size());
    return 1;
}

} // namespace

int main(int argc, char* argv[])
{
    if (LLVMFuzzerInitialize)
        LLVMFuzzerInitialize(&argc, &argv);
    int Files = 0;
    for (int I = 1; I < argc; ++I) {
        const std::filesystem::path Path(argv[I]);
        std::error_code Error;
        if (std::filesystem::is_directory(Path, Error)) {
            for (const auto& Entry : std::filesystem::recursive_directory_iterator(Path, Error))
                if (Entry.is_regular_file())
                    Files += RunFile(Entry.path());
        } else if (std::filesystem::is_regular_file(Path, Error)) {
            Files += RunFile(Path);
        }
    }
    std::printf("replayed %d files\n", Files);
    return 0;
}
