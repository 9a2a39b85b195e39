// SPDX-License-Identifier: Apache-2.0
#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <cstdio>

/// A program with one hidden window. It says so when its loop has turned once, and then stays until a signal
/// ends it.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const QWidget window;
    QTimer::singleShot(0, [] {
        std::puts("ready");
        std::fflush(stdout);
    });
    return QApplication::exec();
}
