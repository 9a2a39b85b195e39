// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariant>

namespace platform {

/// One setting that the desktop portal knows.
struct PortalKey {
    QString group;
    QString name;
};

/// Some settings of the desktop, asked of org.freedesktop.portal.Settings on the session bus, and their
/// changes. It never waits for the portal: a call is given up after a second. A portal that comes, or comes
/// again, is asked anew; what was told before stands until it answers. Main thread.
class PortalSettings final : public QObject {
    Q_OBJECT
public:
    /// `told` gets the key's place in `keys` and its value, which isn't valid where the portal has none.
    PortalSettings(const QDBusConnection& bus, std::vector<PortalKey> keys,
        std::function<void(std::size_t, const QVariant&)> told);

private:
    enum class Start { wanted, unwanted };

    Q_SLOT void settingChanged(const QDBusMessage& message);
    void askAll(Start start);
    void ask(std::size_t place, const char* member, Start start);

    QDBusConnection bus_;
    std::vector<PortalKey> keys_;
    std::function<void(std::size_t, const QVariant&)> told_;
    QDBusServiceWatcher watcher_;
    QString owner_; ///< the portal's own name on the bus, once it is known
    unsigned round_ = 0; ///< answers to an earlier round of questions come from a portal that is gone
};

} // namespace platform
