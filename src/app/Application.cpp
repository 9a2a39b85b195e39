// SPDX-License-Identifier: Apache-2.0
#include "app/Application.h"

#include "app/SelfTest.h"
#include "app/StandardStreams.h"
#include "core/Version.h"
#include "design/Utf8.h"
#include "platform/qt/DisplayProbe.h"
#include "platform/qt/QtTerminationSignals.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <QApplication>
#include <QByteArray>
#include <QEvent>
#include <QString>

namespace ostrel {

namespace {

AppDelegate* running = nullptr; ///< while its loop turns

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

/// The toolkit's application object, by our name.
class Toolkit {
public:
    // Our arguments are not the toolkit's: it would end the process at a "-platform" that it can't load.
    Toolkit(int argc, char** argv)
        : ownArguments_(std::min(argc, 1))
        , application_(ownArguments_, argv)
    {
        // The toolkit takes over the user's locale; figures in files and on the wire keep their point.
        std::setlocale(LC_NUMERIC, "C");
        QApplication::setApplicationName("ostrel");
        QApplication::setApplicationDisplayName("OSTREL");
        QApplication::setApplicationVersion(utf16(appVersion));
        QApplication::setDesktopFileName(utf16(appIdentifier));
        QApplication::setQuitOnLastWindowClosed(false);
    }

private:
    int ownArguments_;
    QApplication application_;
};

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
    // The toolkit ends the process by itself when its display goes.
    std::atexit([] {
        if (running)
            running->processWillExit();
    });
    choosePlatform();
    const Toolkit toolkit(argc, argv);
    const platform::QtTerminationSignals signals([] { QApplication::quit(); });
    platform.mainQueue().attach();
    int code = 0;
    if (delegate.applicationDidFinishLaunching(wish)) {
        running = &delegate;
        code = QApplication::exec();
        running = nullptr;
        delegate.applicationWillTerminate();
        // No loop turns any more that would drop what was put off.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    platform.mainQueue().detach();
    return code;
}

int runSelfTest(int& argc, char** argv, const std::optional<std::string>& snapshotPath,
    RealPlatform& platform, AppDelegate& delegate)
{
    // A child that ends before it has read its input must not take the check with it.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
    // Whatever display there is, nothing comes on it.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const Toolkit toolkit(argc, argv);
    platform.mainQueue().attach();
    std::string failure;
    {
        SelfTest test({ .app = delegate,
            .environment = delegate.services().children.environment(),
            .print = [](std::string_view line) { say(stdout, line); } });
        failure = test.run(snapshotPath);
    }
    platform.mainQueue().detach();
    if (failure.empty())
        return 0;
    say(stderr, "self-test failed: " + failure + "\n");
    return 1;
}

} // namespace ostrel
