// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QString>

namespace platform {

void QtPasteboard::setText(std::string_view text)
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return;
    QGuiApplication::clipboard()->setText(
        QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

} // namespace platform
