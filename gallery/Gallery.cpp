// SPDX-License-Identifier: Apache-2.0
// Draws every colour, face, figure, mark, control and state of the design room, and the views that draw
// readings, onto sheets for people to look at: one PNG for each theme and scale. Off screen; the machine's
// own settings aren't read.
#include "Samples.h"
#include "Sheet.h"

#include <QApplication>
#include <QFileInfo>
#include <QTextStream>

#include <array>

int main(int count, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, arguments);
    const QStringList given = QApplication::arguments();
    if (given.size() != 2 || !QFileInfo(given.at(1)).isDir()) {
        QTextStream(stderr) << "usage: ostrel_gallery FOLDER\n";
        return 2;
    }
    using ostrel::ZOLThemePolicy::Mode;
    for (const Mode theme : ostrel::ZOLThemePolicy::modes) {
        for (const double ratio : { 1.0, 2.0 }) {
            ostrel::Sheet sheet(theme, ratio);
            ostrel::drawSamples(sheet);
            const QString file
                = QString("%1/gallery-%2%3.png")
                      .arg(given.at(1), theme == Mode::dark ? "dark" : "light", ratio > 1 ? "-2x" : "");
            if (!sheet.finished().save(file, "PNG", 0)) {
                QTextStream(stderr) << "can't write " << file << '\n';
                return 1;
            }
        }
    }
    return 0;
}
