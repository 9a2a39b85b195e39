// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractButton>

namespace ostrel {

/// One tab of the strip: flat text, a red bar below the active one, a ring around the focused one.
class TabButton final : public QAbstractButton {
public:
    TabButton(const QString& title, const QString& hint, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
};

} // namespace ostrel
