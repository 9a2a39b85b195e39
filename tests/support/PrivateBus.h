// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/ForkedProcess.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <optional>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

/// A message bus of the test's own, with a socket in a temporary folder and no services to start. It ends
/// with this object, or with the test's process.
class PrivateBus {
public:
    PrivateBus()
    {
        folder_.write("bus.conf",
            "<busconfig><type>session</type><listen>unix:path=" + folder_.path()
                + "/socket</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                  "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>");
        const std::string config = "--config-file=" + folder_.path() + "/bus.conf";
        int ready[2] = { -1, -1 };
        if (::pipe(ready) != 0)
            throw std::runtime_error("no pipe");
        daemon_.emplace([&] {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::dup2(ready[1], STDOUT_FILENO);
            // It grumbles about the limits of a container.
            ::close(STDERR_FILENO);
            ::open("/dev/null", O_WRONLY);
            ::execlp("dbus-daemon", "dbus-daemon", config.c_str(), "--nofork", "--nosyslog",
                "--print-address=1", nullptr);
        });
        ::close(ready[1]);
        char next = 0;
        while (::read(ready[0], &next, 1) == 1 && next != '\n')
            address_ += next;
        ::close(ready[0]);
        if (address_.empty())
            throw std::runtime_error("dbus-daemon didn't start");
    }

    [[nodiscard]] const std::string& address() const { return address_; }

private:
    TemporaryFolder folder_;
    std::string address_;
    std::optional<ForkedProcess> daemon_;
};
