// SPDX-License-Identifier: Apache-2.0
/// The seeds of each fuzzing target, and the same few thousand spoilt ones at each run. script/fuzz goes on
/// from there. An input that ends the program is left beside it, to be made a seed.
#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#define OSTREL_FUZZ_TARGET(name) extern "C" int fuzz_##name(const std::uint8_t* data, std::size_t size);
#include "targets.inc"
#undef OSTREL_FUZZ_TARGET

namespace {

struct Target {
    const char* name;
    int (*run)(const std::uint8_t* data, std::size_t size);
};

void PrintTo(const Target& target, std::ostream* out) { *out << target.name; }

#define OSTREL_FUZZ_TARGET(name) Target { #name, &fuzz_##name },
constexpr Target targets[] {
#include "targets.inc"
};
#undef OSTREL_FUZZ_TARGET

constexpr int spoiltInputs = 1500;
/// These make and answer calls of a real bus.
constexpr int spoiltCalls = 60;

std::string present; ///< the input at work

void keepInput(int signal)
{
    const int file = ::open("found", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (::write(file, present.data(), present.size()) < 0)
        ::_exit(1);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

std::vector<std::string> seedsOf(const std::string& name)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(OSTREL_FUZZ_CORPUS "/" + name))
        files.push_back(entry.path());
    std::ranges::sort(files);
    std::vector<std::string> seeds;
    for (const auto& path : files) {
        std::ifstream file(path, std::ios::binary);
        seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    return seeds;
}

/// A choice below `end`, the same on all machines, which the library's distributions aren't.
std::size_t below(std::mt19937& chance, std::size_t end) { return end == 0 ? 0 : chance() % end; }

std::string spoilt(std::mt19937& chance, const std::vector<std::string>& seeds)
{
    using namespace std::string_literals;
    static const std::array odd { "\0"s, "\xff"s, "\xed\xa0\x80"s, "\n"s, "\""s, "\\"s, "-"s, "1e999"s,
        "null"s, "[]"s, "{}"s, "%"s, "="s, ","s, std::string(300, '9'), std::string(200, '['),
        std::string(5000, 'x') };
    std::string text = seeds[below(chance, seeds.size())];
    for (std::size_t times = 1 + below(chance, 4); times > 0; --times) {
        const std::size_t at = below(chance, text.size() + 1);
        const std::size_t length = below(chance, 40);
        switch (below(chance, 6)) {
        case 0:
            text.erase(at);
            break;
        case 1:
            text.erase(at, length);
            break;
        case 2:
            text.insert(at, text.substr(at, length));
            break;
        case 3:
            text.insert(at, odd[below(chance, odd.size())]);
            break;
        case 4:
            if (at < text.size())
                text[at] = static_cast<char>(chance() & 0xffU);
            break;
        default:
            text.insert(at, seeds[below(chance, seeds.size())].substr(0, length));
        }
    }
    return text;
}

class FuzzTarget : public testing::TestWithParam<Target> { };

TEST_P(FuzzTarget, StandsItsSeedsAndSpoiltOnes)
{
    const auto [name, run] = GetParam();
    std::vector<std::string> inputs = seedsOf(name);
    ASSERT_FALSE(inputs.empty());
    const auto seeds = inputs;
    const bool calls = std::string_view(name) == "bus" || std::string_view(name) == "desktop";
    std::mt19937 chance;
    inputs.emplace_back();
    for (int n = 0; n < (calls ? spoiltCalls : spoiltInputs); ++n)
        inputs.push_back(spoilt(chance, seeds));
    std::signal(SIGABRT, keepInput);
    for (std::string& input : inputs) {
        present = std::move(input);
        // A copy without room behind it, so that a sanitizer sees a step too far.
        const std::vector<std::uint8_t> bytes(present.begin(), present.end());
        EXPECT_EQ(run(bytes.data(), bytes.size()), 0);
    }
    std::signal(SIGABRT, SIG_DFL);
}

INSTANTIATE_TEST_SUITE_P(All, FuzzTarget, testing::ValuesIn(targets),
    [](const auto& about) { return std::string(about.param.name); });

} // namespace
