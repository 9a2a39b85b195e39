// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/DistributedNotificationCenter.h"
#include "platform/MainQueue.h"

#include <memory>
#include <string>
#include <vector>

#include <QDBusMessage>
#include <QObject>

namespace platform {

/// Messages as one signal on the session bus: Posted(name, dictionary of texts) from /dev/quent/ostrel.
/// Needs neither a bus nor an application object before it is asked for something.
class QtDistributedNotificationCenter final : public QObject, public DistributedNotificationCenter {
    Q_OBJECT
public:
    /// What is received runs through `queue`, which outlives this.
    explicit QtDistributedNotificationCenter(MainQueue& queue);

    /// Works without an event loop: the message has left the process on return.
    void post(const std::string& name, const UserInfo& userInfo) override;
    /// Wants the application object.
    [[nodiscard]] std::unique_ptr<Observation> observe(
        const std::string& name, std::function<void(const UserInfo&)> received) override;

private:
    struct Observer;

    Q_SLOT void posted(const QDBusMessage& message);

    MainQueue& queue_;
    std::vector<std::weak_ptr<const Observer>> observers_;
};

} // namespace platform
