// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

class QWidget;

namespace ostrel {

/// Where the keyboard was in a tree of views that is about to be built anew. A control is known again by its
/// kind and its accessible name, and among those of the same name by its place.
struct FocusMemory {
    QString kind;
    QString name;
    int place = 0;

    /// Nothing while no control in the tree has the keyboard.
    [[nodiscard]] static std::optional<FocusMemory> of(const QWidget& tree);
    /// Gives the keyboard to the same control of the new tree; false when there is none.
    [[nodiscard]] bool restore(const QWidget& tree) const;
};

} // namespace ostrel
