// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UrlEvents.h"

#include <memory>
#include <string>

#include <QString>

namespace platform {

/// org.freedesktop.Application on the session bus, under the program's identifier and the path that belongs
/// to it: Activate asks to come forward, ActivateAction for an action by its name, Open brings addresses; of
/// one call the first 16 are taken. Texts of more than 4 KiB are dropped. Nobody is pushed off the name:
/// while another process has it, this one waits for its turn. Without a bus nothing ever comes.
class QtUrlEvents final : public UrlEvents {
public:
    /// Touches no bus yet. What comes runs through `queue`, which outlives this.
    QtUrlEvents(MainQueue& queue, const std::string& identifier);
    QtUrlEvents(const QtUrlEvents&) = delete;
    QtUrlEvents& operator=(const QtUrlEvents&) = delete;
    ~QtUrlEvents() override;

    /// Never waits for the bus to answer.
    void start(DesktopRequests handlers) override;
    void stop() override;

    /// Stops listening first, so that the other may have the name when it was here; a name that nobody has
    /// yet may still come within the second.
    bool handOver(const std::vector<std::string>& urls) override;

private:
    class Listener;

    MainQueue& queue_;
    QString name_;
    std::unique_ptr<Listener> listener_;
};

} // namespace platform
