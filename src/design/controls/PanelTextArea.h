// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPlainTextEdit>

namespace ostrel {

/// Lines of text to type, in the panel's face and colours; plain text only. It says what it is for by its
/// placeholder. The tabulator leaves it. Main thread.
class PanelTextArea final : public QPlainTextEdit {
public:
    /// Size in points.
    PanelTextArea(const QString& placeholder, double size, int width, int height);

protected:
    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void paintGround();
};

} // namespace ostrel
