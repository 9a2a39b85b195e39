// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFont>
#include <QString>

#include <array>

namespace ostrel {

/// The faces of the bundled monospaced family, lightest first. A family is empty where its file couldn't be
/// loaded.
class PlexFaces {
public:
    static constexpr std::array weights { QFont::Normal, QFont::Medium, QFont::DemiBold };

    /// Registers the files "plex-mono-{weight}.ttf" of a folder, for this process only. A missing or broken
    /// file is passed over. Main thread, with an application object.
    [[nodiscard]] static PlexFaces registered(const QString& folder);

    /// The heaviest face not above the weight, in logical pixels; the system's monospaced font where that
    /// face is missing.
    [[nodiscard]] QFont font(double size, QFont::Weight weight) const;

private:
    std::array<QString, weights.size()> families_;
};

/// The bundled family at that size in points. Registers its faces first. Main thread, with an application
/// object.
[[nodiscard]] QFont plexMono(double size, QFont::Weight weight = QFont::Normal);

/// Registers the bundled files once, and gives tooltips the family's face. It reads the system's font
/// settings, which takes as long as all the rest of a start in the background and costs a megabyte: only for
/// what is about to be drawn. Main thread, with an application object.
void registerPlexFaces();

namespace OstrelStyle {

/// The same, never below ten points: nothing in the panel is smaller.
[[nodiscard]] QFont mono(double size, QFont::Weight weight = QFont::Normal);

} // namespace OstrelStyle

} // namespace ostrel
