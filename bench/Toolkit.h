// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QApplication>

#include <cstdlib>

/// The toolkit without a display: painting asks for it. Every call after the first does nothing.
inline void startToolkit()
{
    if (QCoreApplication::instance())
        return;
    static char name[] = "bench";
    static char* arguments[] = { name, nullptr };
    static int count = 1;
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // The process ends with it.
    new QApplication(count, arguments);
}
