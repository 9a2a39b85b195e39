// SPDX-License-Identifier: Apache-2.0
// Draws the program's icon: its mark on the light plate that the panel's header stands it on, so that it
// shows on a dark launcher too. Into a folder go an icon theme's hicolor/SIZExSIZE/apps/NAME.png and the same
// as hicolor/scalable/apps/NAME.svg. Off screen; the machine's own settings aren't read.
#include "core/Version.h"
#include "design/Paint.h"
#include "design/Utf8.h"
#include "design/ZOLAppMark.h"
#include "design/ZOLAppMarkView.h"
#include "design/ZOLAppShellStyle.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QSaveFile>
#include <QTextStream>

#include <array>
#include <span>
#include <string>

#include <fmt/format.h>

namespace {

using namespace ostrel;

constexpr std::array sizes { 16, 22, 24, 32, 48, 64, 128, 256, 512 };
/// In units of the mark: what the plate leaves free at each edge, and its corners, round about the mark's
/// own.
constexpr double plateMargin = 1;
constexpr double plateRadius = 12;
constexpr int shadesOfOne = 255;

QImage icon(int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double scale = size / ZOLAppMarks::canvas;
    const double margin = plateMargin * scale;
    fillRounded(painter, QRectF(image.rect()).adjusted(margin, margin, -margin, -margin), plateRadius * scale,
        ZOLAppShellStyle::plate);
    ZOLAppMarkView::draw(painter, ZOLAppMark::ostrel, image.rect(), false);
    return image;
}

std::string pathText(std::span<const ZOLAppMarkCommand> commands)
{
    std::string text;
    for (const auto& [kind, x, y, x1, y1, x2, y2] : commands) {
        text += text.empty() ? "" : " ";
        switch (kind) {
        case ZOLAppMarkCommand::Kind::move:
            text += fmt::format("M {} {}", x, y);
            break;
        case ZOLAppMarkCommand::Kind::line:
            text += fmt::format("L {} {}", x, y);
            break;
        case ZOLAppMarkCommand::Kind::curve:
            text += fmt::format("C {} {} {} {} {} {}", x1, y1, x2, y2, x, y);
            break;
        case ZOLAppMarkCommand::Kind::close:
            text += "Z";
            break;
        }
    }
    return text;
}

std::string hex(const Color& color)
{
    const auto shade = [](double part) { return static_cast<int>(part * shadesOfOne + 0.5); };
    return fmt::format("#{:02x}{:02x}{:02x}", shade(color.red), shade(color.green), shade(color.blue));
}

std::string drawing()
{
    constexpr double side = ZOLAppMarks::canvas - 2 * plateMargin;
    return fmt::format(R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- SPDX-License-Identifier: Apache-2.0 -->
<svg xmlns="http://www.w3.org/2000/svg" width="{0}" height="{0}" viewBox="0 0 {0} {0}">
  <rect x="{1}" y="{1}" width="{2}" height="{2}" rx="{3}" fill="{4}"/>
  <g fill="none" stroke="{5}" stroke-width="{6}" stroke-miterlimit="4">
    <path d="{7}"/>
    <path d="{8}"/>
  </g>
  <path fill="{9}" d="{10}"/>
</svg>
)",
        ZOLAppMarks::canvas, plateMargin, side, plateRadius, hex(ZOLAppShellStyle::plate),
        hex(ZOLAppMarkView::ink), ZOLAppMarks::strokeWidth, pathText(ZOLAppMarks::square()),
        pathText(ZOLAppMarks::glyph(ZOLAppMark::ostrel)), hex(ZOLAppMarkView::signal),
        pathText(ZOLAppMarks::signal()));
}

/// Whether the file was written, its folder made where it was missing.
template <typename Write>
bool store(const QString& folder, const QString& name, Write write)
{
    QSaveFile file(folder + "/" + name);
    return QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) && write(file) && file.commit();
}

} // namespace

int main(int count, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(count, arguments);
    const QStringList given = QApplication::arguments();
    if (given.size() != 2) {
        QTextStream(stderr) << "usage: ostrel_icons FOLDER\n";
        return 2;
    }
    const QString name = utf16(appIdentifier);
    const QString folder = given.at(1) + "/hicolor/%1/apps";
    bool stored = store(folder.arg("scalable"), name + ".svg",
        [](QSaveFile& file) { return file.write(QByteArray::fromStdString(drawing())) > 0; });
    for (const int size : sizes)
        stored = stored
            && store(folder.arg(QString("%1x%1").arg(size)), name + ".png",
                [size](QSaveFile& file) { return icon(size).save(&file, "PNG", 0); });
    if (!stored)
        QTextStream(stderr) << "can't write below " << given.at(1) << '\n';
    return stored ? 0 : 1;
}
