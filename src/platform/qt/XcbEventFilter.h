// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include <QAbstractNativeEventFilter>
#include <xcb/xcb.h>

namespace platform {

/// The toolkit's own connection to the X display; null without one, and before the application object.
[[nodiscard]] xcb_connection_t* toolkitXConnection();

/// Shows each event of that connection to `see` before the toolkit does, for as long as this lives.
class XcbEventFilter final : public QAbstractNativeEventFilter {
public:
    explicit XcbEventFilter(std::function<void(const xcb_generic_event_t&)> see);

    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;

private:
    std::function<void(const xcb_generic_event_t&)> see_;
};

} // namespace platform
