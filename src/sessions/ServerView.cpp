// SPDX-License-Identifier: Apache-2.0
#include "sessions/ServerView.h"

#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/PanelField.h"
#include "design/controls/PanelTextArea.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "sessions/RemoteServer.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QVBoxLayout>

#include <functional>
#include <string>
#include <utility>

namespace ostrel {

namespace {

constexpr int fieldHeight = 30;
constexpr int taskHeight = 76;
constexpr int rowSpacing = 8;
constexpr int smallGap = 8;
constexpr int gap = 12;

OstrelButton* serverButton(const ServerButton& words, std::function<void()> handler, int height = fieldHeight)
{
    auto* button = new OstrelButton(utf16(words.title), words.width, std::move(handler), height);
    button->setActive(words.active);
    button->setEnabled(words.enabled);
    button->setObjectName(utf16(words.identifier));
    return ostrelTip(button, utf16(words.tooltip));
}

void addText(QVBoxLayout& body, const std::string& text, double size, const ThemedColor& color, int width)
{
    body.addWidget(wrappingLabel(utf16(text), size, QFont::Normal, color, width));
}

/// Makes the fields of the tab. Each tells the server of every edit, and closes the start without a drawing,
/// which would take the field's keyboard and caret.
class Fields {
public:
    Fields(RemoteServer& server, bool enabled, OstrelButton& start)
        : server_(server)
        , enabled_(enabled)
        , start_(&start)
    {
    }

    [[nodiscard]] QWidget* line(const ServerField& words, int width) const
    {
        auto* field = new PanelField(utf16(words.placeholder), 11, width, fieldHeight);
        field->setText(utf16(words.text));
        QObject::connect(field, &QLineEdit::textChanged, field,
            [edited = edited(words.identifier)](const QString& text) { edited(text); });
        return prepared(field, words);
    }

    [[nodiscard]] QWidget* lines(const ServerField& words, int width) const
    {
        auto* area = new PanelTextArea(utf16(words.placeholder), 11, width, taskHeight);
        area->setPlainText(utf16(words.text));
        QObject::connect(area, &QPlainTextEdit::textChanged, area,
            [area, edited = edited(words.identifier)] { edited(area->toPlainText()); });
        return prepared(area, words);
    }

private:
    [[nodiscard]] std::function<void(const QString&)> edited(const std::string& identifier) const
    {
        return [&server = server_, start = start_, identifier](const QString& text) {
            if (server.controlTextDidChange(identifier, text.toStdString()) && start)
                start->setEnabled(false);
        };
    }

    template <typename Field>
    [[nodiscard]] QWidget* prepared(Field* field, const ServerField& words) const
    {
        field->setObjectName(utf16(words.identifier));
        field->setEnabled(enabled_);
        return field;
    }

    RemoteServer& server_;
    bool enabled_;
    QPointer<OstrelButton> start_;
};

QWidget* profileRow(const ServerBody& words, RemoteServer& server, int width)
{
    auto* row = new QWidget;
    row->setFixedWidth(width);
    auto* across = new QHBoxLayout(row);
    across->setContentsMargins(0, 0, 0, 0);
    across->setSpacing(rowSpacing);
    for (const ServerButton& profile : words.profiles)
        across->addWidget(serverButton(
            profile, [&server, name = profile.identifier] { server.selectServerProfile(name); }));
    across->addStretch(1);
    return row;
}

} // namespace

void renderServer(QVBoxLayout& body, RemoteServer& server, int width)
{
    const ServerBody words = serverBody(server.state());
    auto* start = serverButton(words.start, [&server] { server.startServerTask(); });
    const Fields fields(server, words.fieldsEnabled, *start);
    body.addWidget(wrappingLabel(utf16(words.title), 24, QFont::Medium, OstrelStyle::ink, width));
    body.addSpacing(smallGap);
    addText(body, words.note, 11, OstrelStyle::muted, width);
    body.addSpacing(gap);
    body.addWidget(viewRow({ fields.line(words.alias, width - words.check.width - rowSpacing),
                               serverButton(words.check, [&server] { server.checkServer(); }) },
        width, rowSpacing));
    if (!words.health.empty()) {
        body.addSpacing(smallGap);
        addText(body, words.health, 11, OstrelStyle::ink, width);
    }
    body.addSpacing(gap);
    body.addWidget(separator(width));
    body.addSpacing(gap);
    body.addWidget(fields.line(words.repo, width));
    body.addSpacing(smallGap);
    body.addWidget(fields.lines(words.task, width));
    body.addSpacing(gap);
    body.addWidget(profileRow(words, server, width));
    body.addSpacing(smallGap);
    auto* profile = wrappingLabel(utf16(words.profileLine), 11, QFont::Normal, OstrelStyle::ink, width);
    profile->setObjectName("server-profile");
    body.addWidget(profile);
    body.addSpacing(gap);
    body.addWidget(
        viewRow({ serverButton(words.preview, [&server] { server.previewServerTask(); }), start, nullptr },
            width, rowSpacing));
    body.addSpacing(gap);
    addText(body, words.status, 11, OstrelStyle::ink, width);
    body.addSpacing(gap);
    addText(body, words.foot, 10, OstrelStyle::muted, width);
    body.addSpacing(smallGap);
}

} // namespace ostrel
