// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <string_view>

namespace ostrel {

/// Our UTF-8 text as the toolkit's; bytes that aren't valid become U+FFFD.
[[nodiscard]] inline QString utf16(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace ostrel
