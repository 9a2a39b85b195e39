// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/OstrelStyle.h"
#include "design/ThemedColor.h"

#include <QFont>

#include <string_view>

class QVBoxLayout;

namespace ostrel {

class PanelBox;

/// A box as wide as a tab, added to the body, that takes lines of text. The body owns it. Main thread.
class LineBox {
public:
    explicit LineBox(QVBoxLayout& body);

    /// A line that breaks between words.
    void add(std::string_view text, double size, const ThemedColor& color,
        QFont::Weight weight = QFont::Normal) const;
    /// The small caption at its top.
    void title(std::string_view text) const { add(text, 8, OstrelStyle::muted, QFont::DemiBold); }

private:
    PanelBox* box_;
};

} // namespace ostrel
