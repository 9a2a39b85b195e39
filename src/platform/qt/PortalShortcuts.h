// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/HotKeyCenter.h"

#include <functional>
#include <optional>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariant>

namespace platform {

/// One shortcut that the desktop's portal keeps for the program, by org.freedesktop.portal.GlobalShortcuts.
/// The desktop asks the user and decides which key it is to be; the combination is only a wish. Nothing here
/// waits. A portal that comes, or comes again, is asked anew. Main thread.
class PortalShortcuts final : public QObject {
    Q_OBJECT
public:
    struct Told {
        std::function<void()> pressed;
        std::function<void(const HotKeyStanding&)> stands;
        std::function<void(HotKeyRefusal)> refused;
    };

    /// `bus` is a connection of its own: its first call tells the portal who we are.
    PortalShortcuts(const QDBusConnection& bus, Told told);

    /// Wishes for a combination, in a session of its own: what is bound in a session can't be changed.
    void bind(const HotKey& hotKey);
    /// Ends the session. What the desktop keeps of it is the user's.
    void unbind();

private:
    using Answered = void (PortalShortcuts::*)(const QVariantMap& results);

    Q_SLOT void responded(const QDBusMessage& message);
    Q_SLOT void activated(const QDBusMessage& message);
    Q_SLOT void shortcutsChanged(const QDBusMessage& message);
    Q_SLOT void sessionClosed(const QDBusMessage& message);

    void ownerChanged(const QString& owner);
    void lookForPortal();
    void createSession();
    void bindShortcut(const QVariantMap& results);
    void bound(const QVariantMap& results);
    /// Makes a request of the portal, whose answer comes to `answered` when the user has decided.
    void request(const char* member, QVariantList arguments, QVariantMap options, Answered answered);
    void forgetRequest();
    void endSession();
    void fail(HotKeyRefusal refusal);
    void tellBound(const QVariant& shortcuts);

    QDBusConnection bus_;
    Told told_;
    QDBusServiceWatcher watcher_;
    QString owner_; ///< the portal's own name on the bus, once it is known
    std::optional<HotKey> wish_;
    QString session_; ///< empty without one
    QString request_; ///< that is being answered
    Answered answered_ = nullptr;
    unsigned count_ = 0; ///< of requests, for names of their own
    unsigned round_ = 0; ///< answers to an earlier wish are void
};

} // namespace platform
