// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLayout>

#include <memory>
#include <vector>

namespace ostrel {

/// A row of views, each at its own height in the vertical middle. Views that stretch share the room that is
/// left. Where room is short, those of the least resistance give way first, down to nothing, and among equals
/// the widest: they are expected to elide. Hidden views take no room. Main thread.
class ShellRow final : public QLayout {
public:
    /// Of a view that never gives way.
    static constexpr int required = 1000;

    /// Spacing in points.
    ShellRow(QWidget* owner, int spacing);
    ~ShellRow() override;

    void add(QWidget* view, int resistance = required);
    /// Puts a view where another was, which is deleted. Nothing happens if the other isn't in the row.
    void replace(QWidget* old, QWidget* view);

    void addItem(QLayoutItem* item) override;
    [[nodiscard]] int count() const override;
    [[nodiscard]] QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    struct Part {
        std::unique_ptr<QLayoutItem> item;
        int resistance = required;
    };

    [[nodiscard]] std::vector<int> widthsIn(int room) const;
    [[nodiscard]] QSize around(QSize content) const;

    std::vector<Part> parts_;
};

} // namespace ostrel
