#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// Stands in for a fuzzing engine: runs a target on files, or on all files of folders, and with `--mutations COUNT` on
// that many damaged forms of each, the same in every run. With ZELVAR_FUZZ_KEEP set, the file "fuzz-input" of the
// working directory holds the input that ran last: the one that brought the process down.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

namespace {

using Random = std::mt19937;

constexpr char const *kLastInput = "fuzz-input";

std::string ReadFile(std::filesystem::path const &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::filesystem::path> FilesOf(std::filesystem::path const &place) {
    std::vector<std::filesystem::path> files;
    if (std::filesystem::is_directory(place)) {
        for (auto const &entry : std::filesystem::recursive_directory_iterator(place)) {
            if (entry.is_regular_file())
                files.push_back(entry.path());
        }
    } else if (std::filesystem::exists(place)) {
        files.push_back(place);
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// One to four damages: bytes changed, cut out, doubled, or taken from another seed.
std::string Damaged(std::string text, std::string const &other, Random &random) {
    auto const below = [&random](std::size_t bound) { return bound == 0 ? 0 : random() % bound; };
    for (auto damages = 1 + below(4); damages > 0; --damages) {
        std::size_t const at = below(text.size() + 1);
        switch (below(6)) {
        case 0:
            if (at < text.size())
                text[at] = static_cast<char>(below(256));
            break;
        case 1:
            if (at < text.size())
                text[at] = static_cast<char>(static_cast<unsigned char>(text[at]) ^ (1U << below(8)));
            break;
        case 2:
            text.erase(at, below(16));
            break;
        case 3:
            text.insert(at, text.substr(at, below(32)));
            break;
        case 4: {
            std::size_t const from = below(other.size());
            text.insert(at, other.substr(from, below(64)));
            break;
        }
        default:
            text.resize(at);
        }
    }
    return text;
}

void Run(std::string const &input) {
    // A copy of exactly that size, so that a read behind its end is seen.
    std::vector<std::uint8_t> const bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

} // namespace

int main(int argc, char **argv) {
    unsigned long mutations = 0;
    std::vector<std::string> seeds;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--mutations" && i + 1 < argc) {
            mutations = std::strtoul(argv[++i], nullptr, 10);
            continue;
        }
        for (auto const &file : FilesOf(argv[i]))
            seeds.push_back(ReadFile(file));
    }
    if (seeds.empty()) {
        std::fprintf(stderr, "no seeds\n");
        return 2;
    }
    Random random(1); // NOLINT(cert-msc51-cpp): the same inputs in every run
    Run({});
    for (std::string const &seed : seeds) {
        Run(seed);
        for (unsigned long i = 0; i < mutations; ++i) {
            std::string const input = Damaged(seed, seeds[random() % seeds.size()], random);
            if (std::getenv("ZELVAR_FUZZ_KEEP") != nullptr)
                std::ofstream(kLastInput, std::ios::binary) << input;
            Run(input);
        }
    }
    std::printf("%zu seeds, %lu damaged forms of each\n", seeds.size(), mutations);
    return 0;
}
