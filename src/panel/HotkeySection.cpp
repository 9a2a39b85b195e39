// SPDX-License-Identifier: Apache-2.0
#include "panel/HotkeySection.h"

#include "bar/HotkeyController.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/PanelSize.h"
#include "panel/SettingsViews.h"

#include <QVBoxLayout>

#include <string>
#include <vector>

namespace ostrel {

namespace {

constexpr const char* fieldIdentifier = "hotkey-field";
constexpr int fieldWidth = 216;
constexpr int defaultWidth = 140;
constexpr int choiceWidth = 78;
constexpr int spacing = 8;

ZOLShellLabel* line(std::string_view text, const ThemedColor& color)
{
    return wrappingLabel(utf16(text), 11, QFont::Normal, color, contentWidth);
}

/// The panel takes the keys. Who came to the field by the keyboard goes on from there afterwards.
void record(HotkeyController& hotkeys, const QWidget& field)
{
    const bool byKeyboard = field.hasFocus();
    const QWidget* const window = field.window();
    hotkeys.recordHotkey();
    QWidget* const next = byKeyboard ? window->findChild<QWidget*>(fieldIdentifier) : nullptr;
    if (next)
        next->setFocus();
}

} // namespace

void renderHotkeySection(QVBoxLayout& body, HotkeyController& hotkeys)
{
    const HotkeyText::Section words = hotkeys.section();
    OstrelButton* const field = settingsButton({ .identifier = fieldIdentifier,
                                                   .title = words.field,
                                                   .tip = std::string(HotkeyText::fieldTip),
                                                   .width = fieldWidth,
                                                   .active = words.recording },
        {});
    field->setHandler([&hotkeys, field] { record(hotkeys, *field); });
    field->setAccessibleName(utf16(words.fieldLabel));
    OstrelButton* const reset = settingsButton({ .identifier = "hotkey-default",
                                                   .title = std::string(HotkeyText::defaultTitle),
                                                   .tip = std::string(HotkeyText::defaultTip),
                                                   .width = defaultWidth },
        [&hotkeys] { hotkeys.resetHotkey(); });
    body.addWidget(settingsRow({ field, reset }, spacing));

    ZOLShellLabel* const state = line(words.line, words.recording ? OstrelStyle::red : OstrelStyle::ink);
    state->setObjectName("hotkey-line");
    body.addWidget(state);
    if (!words.error.empty()) {
        ZOLShellLabel* const error = line(words.error, OstrelStyle::red);
        error->setObjectName("hotkey-conflict");
        body.addWidget(error);
    }

    std::vector<QWidget*> choices;
    for (const HotkeyText::Choice& choice : words.choices) {
        OstrelButton* const button = settingsButton({ .identifier = choice.identifier,
                                                        .title = choice.title,
                                                        .tip = choice.tip,
                                                        .width = choiceWidth,
                                                        .active = choice.active },
            [&hotkeys, identifier = choice.identifier] { hotkeys.pickHotkey(identifier); });
        button->setAccessibleName(utf16(choice.accessibilityLabel));
        choices.push_back(button);
    }
    body.addWidget(settingsRow(choices, spacing));
    body.addWidget(line(HotkeyText::note, OstrelStyle::muted));
}

} // namespace ostrel
