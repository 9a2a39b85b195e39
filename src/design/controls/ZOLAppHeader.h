// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "design/ZOLAppMark.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <optional>

namespace ostrel {

class ShellRow;
class ZOLAppMarkView;
class ZOLPinButton;
class ZOLShellButton;
class ZOLShellLabel;

/// The head of an application's panel: its mark on a plate, its name, and what works on the panel as a whole.
/// Where room is short the version gives way first. Main thread.
class ZOLAppHeader final : public QWidget {
public:
    struct Content {
        ZOLAppMark mark = ZOLAppMark::family;
        QString name;
        std::optional<QString> status; ///< a line below the name
        std::optional<QString> version;
        std::function<void()> onSettings; ///< the button exists only with it
        ZOLPinButton* pin = nullptr; ///< the header takes it over
        std::function<void()> onClose; ///< the button exists only with it
    };

    /// Width in points.
    ZOLAppHeader(const Content& content, int width, QWidget* parent = nullptr);

    /// Absent once it is replaced.
    [[nodiscard]] ZOLAppMarkView* markView() const { return markView_; }
    [[nodiscard]] ZOLShellLabel* nameLabel() const { return nameLabel_; }
    [[nodiscard]] ZOLShellLabel* statusLabel() const { return statusLabel_; }
    [[nodiscard]] ZOLShellLabel* versionLabel() const { return versionLabel_; }
    [[nodiscard]] ZOLShellButton* settingsButton() const { return settingsButton_; }
    [[nodiscard]] ZOLPinButton* pinButton() const { return pinButton_; }
    [[nodiscard]] ZOLShellButton* closeButton() const { return closeButton_; }

    /// Does nothing on a header that was built without a status, and so with the version.
    void setStatus(const QString& text);
    void setVersion(const QString& text);

    /// Puts another view in the mark's place, at its size and on a plate. Once.
    void replaceMark(QWidget* view);

private:
    [[nodiscard]] QWidget* words(const Content& content);

    ShellRow* row_;
    ZOLAppMarkView* markView_ = nullptr;
    ZOLShellLabel* nameLabel_ = nullptr;
    ZOLShellLabel* statusLabel_ = nullptr;
    ZOLShellLabel* versionLabel_ = nullptr;
    ZOLShellButton* settingsButton_ = nullptr;
    ZOLPinButton* pinButton_ = nullptr;
    ZOLShellButton* closeButton_ = nullptr;
};

} // namespace ostrel
