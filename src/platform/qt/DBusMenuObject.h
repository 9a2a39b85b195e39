// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/qt/DBusMenuModel.h"

#include <QDBusVirtualObject>

#include <functional>

namespace platform {

/// com.canonical.dbusmenu for one menu. The menu is built anew each time a host is about to show it. Main
/// thread.
class DBusMenuObject final : public QDBusVirtualObject {
public:
    static constexpr const char* interface = "com.canonical.dbusmenu";

    /// Actions run through `queue`, never inside the bus's own handler. Signals leave from `path`.
    DBusMenuObject(MainQueue& queue, QString path);

    void setBuilder(std::function<Menu()> build);

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    /// True when something changed.
    bool rebuild(const QDBusConnection* connection);
    [[nodiscard]] QDBusMessage answer(const QDBusMessage& message, const QDBusConnection& connection);
    [[nodiscard]] QDBusMessage answerProperties(const QDBusMessage& message) const;
    void happened(int id, const QString& event);

    MainQueue& queue_;
    QString path_;
    std::function<Menu()> build_;
    DBusMenuModel model_;
};

} // namespace platform
