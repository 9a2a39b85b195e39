// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLineEdit>

namespace ostrel {

/// A line of text to type, in the panel's face and colours. It says what it is for by its placeholder. Main
/// thread.
class PanelField final : public QLineEdit {
public:
    /// Size in points.
    PanelField(const QString& placeholder, double size, int width, int height);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
};

} // namespace ostrel
