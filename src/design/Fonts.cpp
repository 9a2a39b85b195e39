// SPDX-License-Identifier: Apache-2.0
#include "design/Fonts.h"

#include "design/OstrelStyle.h"

#include <QFile>
#include <QFontDatabase>
#include <QResource>
#include <QStringList>
#include <QToolTip>

#include <algorithm>
#include <cstddef>

// Resources of a static library are linked in by being asked for, and only from outside a namespace.
static void initializeFontResources() { Q_INIT_RESOURCE(fonts); }

namespace ostrel {

namespace {

constexpr double tooltipSize = 11;

/// Where the glyphs come from that the family lacks. Both are lower than it, so a line keeps its height.
const QStringList& fallbackFamilies()
{
    static const QStringList families { "DejaVu Sans Mono", "DejaVu Sans" };
    return families;
}

/// The file's bytes, without a copy where they are compiled in.
QByteArray fontData(const QString& path)
{
    const QResource resource(path);
    if (resource.isValid() && resource.compressionAlgorithm() == QResource::NoCompression)
        return QByteArray::fromRawData(
            reinterpret_cast<const char*>(resource.data()), static_cast<qsizetype>(resource.size()));
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

const PlexFaces& bundledFaces()
{
    static const PlexFaces faces = [] {
        initializeFontResources();
        const PlexFaces registered = PlexFaces::registered(":/fonts");
        // Tooltips have a font of the desktop's own.
        QToolTip::setFont(registered.font(tooltipSize, QFont::Normal));
        return registered;
    }();
    return faces;
}

} // namespace

PlexFaces PlexFaces::registered(const QString& folder)
{
    PlexFaces faces;
    for (std::size_t at = 0; at < weights.size(); ++at) {
        const QByteArray data = fontData(folder + QString("/plex-mono-%1.ttf").arg(int { weights[at] }));
        const int id = data.isEmpty() ? -1 : QFontDatabase::addApplicationFontFromData(data);
        if (id >= 0)
            faces.families_[at] = QFontDatabase::applicationFontFamilies(id).value(0);
    }
    return faces;
}

QFont PlexFaces::font(double size, QFont::Weight weight) const
{
    std::size_t face = 0;
    while (face + 1 < weights.size() && weight >= weights[face + 1])
        ++face;
    const QString& family = families_[face];
    QFont font;
    if (family.isEmpty()) {
        font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        font.setWeight(weight);
    } else {
        font.setFamilies(QStringList(family) + fallbackFamilies());
        font.setWeight(weights[face]);
    }
    font.setPixelSize(std::max(1, qRound(size)));
    return font;
}

QFont plexMono(double size, QFont::Weight weight) { return bundledFaces().font(size, weight); }

void registerPlexFaces() { (void)bundledFaces(); }

namespace OstrelStyle {

QFont mono(double size, QFont::Weight weight) { return plexMono(std::max(size, smallestText), weight); }

} // namespace OstrelStyle

} // namespace ostrel
