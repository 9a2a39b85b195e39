// SPDX-License-Identifier: Apache-2.0
/// Command lines, a word a line: one with a word that nobody knows asks for nothing else, and addresses come
/// through as they were given.
#include "readings/Arguments.h"
#include "core/Text.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace ostrel;

void runOn(std::string_view text)
{
    std::vector<std::string> words;
    while (!text.empty()) {
        const auto end = text.find('\n');
        words.emplace_back(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
    const auto given
        = [&words](const std::string& word) { return std::ranges::find(words, word) != words.end(); };
    const Route route = parseArguments(words);
    check(route == parseArguments(words));
    for (const std::string& url : route.urls)
        check(given(url) && lowered(url).starts_with("ostrel:"));
    if (route.kind == Route::Kind::usage)
        check(given(route.unknownArgument) && route.urls.empty()
            && usageMessage(route.unknownArgument).ends_with('\n'));
    check(!route.snapshotPath || given(*route.snapshotPath));
}
