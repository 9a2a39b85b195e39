// SPDX-License-Identifier: Apache-2.0
/// Command lines, a word a line: one with a word that nobody knows asks for nothing else, and addresses come
/// through as they were given.
#include "readings/Arguments.h"
#include "core/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> words;
    while (!text.empty()) {
        const auto end = text.find('\n');
        words.emplace_back(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
    const auto given
        = [&words](const std::string& word) { return std::ranges::find(words, word) != words.end(); };
    const ostrel::Route route = ostrel::parseArguments(words);
    bool sound = route == ostrel::parseArguments(words);
    for (const std::string& url : route.urls)
        sound = sound && given(url) && ostrel::lowered(url).starts_with("ostrel:");
    if (route.kind == ostrel::Route::Kind::usage)
        sound = sound && given(route.unknownArgument) && route.urls.empty()
            && ostrel::usageMessage(route.unknownArgument).ends_with('\n');
    if (route.snapshotPath)
        sound = sound && given(*route.snapshotPath);
    if (!sound)
        std::abort();
    return 0;
}
