// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/MainQueue.h"
#include "platform/qt/BusObject.h"
#include "platform/qt/DBusMenuModel.h"

#include <functional>

namespace platform {

/// com.canonical.dbusmenu for one menu. The menu is built anew each time a host is about to show it. Main
/// thread.
class DBusMenuObject final : public BusObject {
public:
    static constexpr const char* interface = "com.canonical.dbusmenu";

    /// Actions run through `queue`, never inside the bus's own handler. Signals leave from `path`.
    DBusMenuObject(MainQueue& queue, QString path);

    void setBuilder(std::function<Menu()> build);

    [[nodiscard]] QString introspect(const QString& path) const override;

private:
    [[nodiscard]] std::optional<QDBusMessage> answer(
        const QDBusMessage& message, const QString& call, const QDBusConnection& connection) override;
    [[nodiscard]] QVariantMap properties(const QString& wanted) override;
    /// True when something changed.
    bool rebuild(const QDBusConnection* connection);
    void happened(int id, const QString& event);

    MainQueue& queue_;
    QString path_;
    std::function<Menu()> build_;
    DBusMenuModel model_;
};

} // namespace platform
