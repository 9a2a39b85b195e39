// SPDX-License-Identifier: Apache-2.0
#include "app/Application.h"

#include "core/Version.h"
#include "design/Utf8.h"
#include "platform/qt/DisplayProbe.h"
#include "platform/qt/QtTerminationSignals.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>

#include <QApplication>
#include <QByteArray>
#include <QEvent>
#include <QString>

namespace ostrel {

namespace {

void choosePlatform()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    const std::string platform = platform::chooseQtPlatform();
    // Behind it the one that always starts: the toolkit ends the process when none of those named does.
    qputenv("QT_QPA_PLATFORM", QByteArray::fromStdString(platform + ";offscreen"));
    if (platform == "offscreen")
        std::fputs("ostrel: no display answers; the panel can't be seen\n", stderr);
}

} // namespace

int runApplication(
    int& argc, char** argv, const LaunchWish& wish, RealPlatform& platform, AppDelegate& delegate)
{
    // A child that ends before it has read its input must not take the instrument with it.
    std::signal(SIGPIPE, SIG_IGN);
    // A starter that ignored its children leaves that to us, and the kernel would then keep no exit status.
    std::signal(SIGCHLD, SIG_DFL);
    // Before the toolkit starts its threads: a signal goes to any thread that doesn't keep it back.
    platform::QtTerminationSignals::keepBack();
    choosePlatform();
    // Our arguments are not the toolkit's: it would end the process at a "-platform" that it can't load.
    int ownArguments = std::min(argc, 1);
    QApplication application(ownArguments, argv);
    // The toolkit takes over the user's locale; figures in files and on the wire keep their point.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName("ostrel");
    QApplication::setApplicationDisplayName("OSTREL");
    QApplication::setApplicationVersion(utf16(appVersion));
    QApplication::setDesktopFileName(utf16(appIdentifier));
    QApplication::setQuitOnLastWindowClosed(false);
    const platform::QtTerminationSignals signals([] { QApplication::quit(); });
    platform.mainQueue().attach();
    int code = 0;
    if (delegate.applicationDidFinishLaunching(wish)) {
        code = QApplication::exec();
        delegate.applicationWillTerminate();
        // No loop turns any more that would drop what was put off.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    platform.mainQueue().detach();
    return code;
}

} // namespace ostrel
