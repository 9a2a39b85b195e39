// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/StatusItem.h"
#include "platform/qt/BusObject.h"

#include <QDBusConnection>

#include <functional>
#include <string>

namespace platform {

/// org.kde.StatusNotifierItem for one item. Main thread.
class StatusNotifierObject final : public BusObject {
public:
    static constexpr const char* interface = "org.kde.StatusNotifierItem";
    static constexpr const char* path = "/StatusNotifierItem";
    static constexpr const char* menuPath = "/MenuBar";

    /// A press as a host tells it: the pointer's place in pixels, which are (0, 0) where the host has none.
    struct Press {
        int x = 0;
        int y = 0;
        bool secondary = false;
    };

    /// `iconFolder` holds the icon theme that has the faces' icon names, and an empty icon named
    /// "{id}-blank". `pressed` is called inside the bus's own handler.
    StatusNotifierObject(QDBusConnection bus, const QString& id, const QString& title,
        const QString& iconFolder, std::function<void(const Press&)> pressed);

    /// Takes the face in and tells the hosts of each part that is different.
    void setFace(const StatusItemFace& face);
    /// Whether the hosts write the label beside the icon; the others get everything in one picture.
    void setLabelled(bool labelled);
    /// Whether hosts can find the item, so that signals reach somebody.
    void setOffered(bool offered) { offered_ = offered; }

    [[nodiscard]] QString introspect(const QString& path) const override;

private:
    [[nodiscard]] std::optional<QDBusMessage> answer(
        const QDBusMessage& message, const QString& call, const QDBusConnection& connection) override;
    /// Draws the pictures for a host that is about to be given them.
    [[nodiscard]] QVariantMap properties(const QString& wanted) override;

    /// What the present host shows of the face.
    struct Shown {
        std::string iconName;
        std::string pictureKey;
        std::string label;
        std::string guide;
        std::string toolTip;
        std::string help;

        bool operator==(const Shown&) const = default;
    };

    [[nodiscard]] const StatusItemPicture* picture() const;
    void describe();
    void tell(const char* signal, const QVariantList& arguments = {}) const;

    QDBusConnection bus_;
    std::function<void(const Press&)> pressed_;
    std::string blankIcon_; ///< names an empty icon
    StatusItemFace face_;
    Shown shown_;
    bool labelled_ = false;
    bool offered_ = false;
    bool picturesStale_ = false; ///< not drawn since they changed: not every host asks for them
    QVariantMap properties_; ///< as the bus asks for them, most often for one of them after each tick
};

} // namespace platform
