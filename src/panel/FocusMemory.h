// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <optional>

class QWidget;

namespace ostrel {

/// Where the keyboard was in a tree of views that is about to be built anew, and what was typed there. A
/// control is known again by its kind and its identifier, or, where it has none, by its accessible name;
/// among several of those, by its place.
struct FocusMemory {
    /// A text field's content.
    struct Typed {
        QString text;
        int cursor = 0;
    };

    QString kind;
    QString identifier;
    QString name;
    int place = 0;
    std::optional<Typed> typed;

    /// Nothing while no control in the tree has the keyboard.
    [[nodiscard]] static std::optional<FocusMemory> of(const QWidget& tree);
    /// Gives the keyboard to the same control of the new tree; false when there is none, or it can't be used
    /// now.
    [[nodiscard]] bool restore(const QWidget& tree) const;

private:
    [[nodiscard]] bool means(const QWidget& view) const;
};

} // namespace ostrel
