// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/ForkedProcess.h"

#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>
#include <xcb/xcb.h>

/// An X display of the test's own, without a window manager. It ends with this object, or with the test's
/// process.
class PrivateDisplay {
public:
    using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

    PrivateDisplay()
    {
        int ready[2] = { -1, -1 };
        if (::pipe(ready) != 0)
            throw std::runtime_error("no pipe");
        server_.emplace([&] {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::dup2(ready[1], STDOUT_FILENO);
            // It grumbles about the keyboard tables.
            ::close(STDERR_FILENO);
            ::open("/dev/null", O_WRONLY);
            ::execlp("Xvfb", "Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp",
                "-noreset", nullptr);
        });
        ::close(ready[1]);
        char next = 0;
        while (::read(ready[0], &next, 1) == 1 && next != '\n')
            name_ += next;
        ::close(ready[0]);
        if (name_ == ":")
            throw std::runtime_error("Xvfb didn't start");
    }

    /// One more program at the display.
    [[nodiscard]] Connection connect() const
    {
        return { xcb_connect(name_.c_str(), nullptr), &xcb_disconnect };
    }

private:
    std::string name_ = ":";
    std::optional<ForkedProcess> server_;
};

/// Waits until the display has done all that this connection asked before, and told this connection of all
/// that happened before.
inline void roundTrip(xcb_connection_t* connection)
{
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}
