// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

namespace platform {

/// An item's side of org.kde.StatusNotifierWatcher: finds the watcher, learns what kind of tray it serves,
/// and registers the item with each one that comes. It never waits for the bus. Main thread.
class StatusNotifierLink final : public QObject {
    Q_OBJECT
public:
    enum class Presence { unknown, absent, present };

    /// `service` is the item's name on the bus. `changed` is called when one of the answers below changes.
    StatusNotifierLink(const QDBusConnection& bus, QString service, std::function<void()> changed);

    /// Whether the item can be found under its name: while it can, it is registered with every watcher.
    void setOffered(bool offered);

    /// Unknown until the bus has answered; absent for good without a bus, and from its end on, which isn't
    /// told as a change.
    [[nodiscard]] Presence presence() const { return bus_.isConnected() ? presence_ : Presence::absent; }
    /// The watcher's trays write the label beside the icon. Known before the item is registered.
    [[nodiscard]] bool showsLabels() const { return showsLabels_; }
    /// The watcher took the item, lists it, and doesn't say that nobody shows it.
    [[nodiscard]] bool lists() const { return lists_ && bus_.isConnected(); }

private:
    Q_SLOT void watcherTold(const QDBusMessage& message);
    void look();
    void registerItem();
    void askList();
    void takeLists(bool lists);
    void call(const QDBusMessage& message, const std::function<void(const QDBusMessage&)>& answered);

    QDBusConnection bus_;
    QString service_;
    std::function<void()> changed_;
    QDBusServiceWatcher watcher_;
    Presence presence_ = Presence::unknown;
    bool offered_ = false;
    bool showsLabels_ = false;
    bool lists_ = false;
    unsigned round_ = 0; ///< answers to an earlier round of questions are about a watcher that has gone
};

} // namespace platform
