// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bar/BarArtist.h"

#include <string_view>

namespace ostrel {

/// Draws for the bar with the bundled faces. Main thread, with an application object; so are its pictures.
class BarPainter final : public BarArtist {
public:
    BarPainter();

    [[nodiscard]] double titleWidth(std::string_view title) const override;
    [[nodiscard]] Picture markPicture() const override { return mark_; }
    [[nodiscard]] Picture valuePicture(const BarValues& values) const override;

private:
    Picture mark_;
};

} // namespace ostrel
