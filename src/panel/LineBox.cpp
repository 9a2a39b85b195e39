// SPDX-License-Identifier: Apache-2.0
#include "panel/LineBox.h"

#include "design/Utf8.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/PanelSize.h"

#include <QVBoxLayout>

namespace ostrel {

LineBox::LineBox(QVBoxLayout& body)
    : box_(new PanelBox(contentWidth))
{
    body.addWidget(box_);
}

void LineBox::add(std::string_view text, double size, const ThemedColor& color, QFont::Weight weight) const
{
    box_->add(wrappingLabel(utf16(text), size, weight, color, box_->contentWidth()));
}

} // namespace ostrel
