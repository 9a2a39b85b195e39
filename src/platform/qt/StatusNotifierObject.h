// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Geometry.h"
#include "platform/MainQueue.h"
#include "platform/StatusItem.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>

#include <functional>
#include <optional>

namespace platform {

/// org.kde.StatusNotifierItem for one item. Main thread.
class StatusNotifierObject final : public QDBusVirtualObject {
public:
    static constexpr const char* interface = "org.kde.StatusNotifierItem";
    static constexpr const char* path = "/StatusNotifierItem";
    static constexpr const char* menuPath = "/MenuBar";

    /// Presses run through `queue`, never inside the bus's own handler.
    StatusNotifierObject(MainQueue& queue, QDBusConnection bus, const QString& id, const QString& title);

    /// Takes the face in and tells the hosts of each part that is different.
    void setFace(const StatusItemFace& face);
    void setPressHandler(std::function<void(const StatusItemPress&)> handler);

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    /// Brings `properties_` up to the present face.
    void describeFace(const StatusItemFace& before);
    void tell(const char* signal, const QVariantList& arguments = {}) const;

    MainQueue& queue_;
    QDBusConnection bus_;
    StatusItemFace face_;
    QVariantMap properties_; ///< as the bus asks for them, most often for one of them after each tick
    std::function<void(const StatusItemPress&)> pressed_;
};

/// A place that a host tells in pixels, from the top left of the primary screen, as a global point.
[[nodiscard]] Point globalPoint(int x, int y);

} // namespace platform
