// SPDX-License-Identifier: Apache-2.0
#include <QApplication>
#include <QPalette>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <string_view>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

/// Shows the window at one SIGUSR1 and hides it at the next.
void toggleAtSignal(QWidget& window, int signals)
{
    auto* const notifier = new QSocketNotifier(signals, QSocketNotifier::Read, &window);
    QObject::connect(notifier, &QSocketNotifier::activated, &window, [&window, signals] {
        signalfd_siginfo info {};
        if (::read(signals, &info, sizeof info) == static_cast<ssize_t>(sizeof info))
            window.setVisible(!window.isVisible());
    });
}

} // namespace

/// A program with one hidden window. It says so when its loop has turned once, and then stays until a signal
/// ends it. With "--panel" the window is an empty white one as large as a panel, which SIGUSR1 shows and
/// hides.
int main(int argc, char** argv)
{
    const bool panel = argc > 1 && argv[1] == std::string_view("--panel");
    sigset_t toggle;
    sigemptyset(&toggle);
    sigaddset(&toggle, SIGUSR1);
    if (panel)
        sigprocmask(SIG_BLOCK, &toggle, nullptr);
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QWidget window(nullptr, panel ? Qt::Tool | Qt::FramelessWindowHint : Qt::Widget);
    if (panel) {
        window.setPalette(QPalette(Qt::white));
        window.setGeometry(100, 100, 760, 700);
        toggleAtSignal(window, ::signalfd(-1, &toggle, SFD_CLOEXEC));
    }
    QTimer::singleShot(0, [] {
        std::puts("ready");
        std::fflush(stdout);
    });
    return QApplication::exec();
}
