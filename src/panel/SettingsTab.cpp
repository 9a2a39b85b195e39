// SPDX-License-Identifier: Apache-2.0
#include "panel/SettingsTab.h"

#include "automations/AutomationsSettingsView.h"
#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "janitor/JanitorSettingsView.h"
#include "panel/BarPreviewRow.h"
#include "panel/HotkeySection.h"
#include "panel/PanelSize.h"
#include "panel/SettingsText.h"
#include "panel/SettingsViews.h"

#include <QVBoxLayout>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

constexpr int spacing = 12;
constexpr int rowSpacing = 8;
constexpr int modeSpacing = 6;

/// Stacks the sections.
class Stack {
public:
    Stack(QVBoxLayout& body, const PanelState& state, const SettingsServices& services)
        : body_(body)
        , state_(state)
        , services_(services)
    {
    }

    void menuBar(LiveRegistry& live) const
    {
        const std::string title = services_.bar.title();
        const std::string hotkey = state_.settings.hotkeyLabel();
        const BarSettings bar { state_.settings.barDisplayMode, state_.settings.barParts, title, hotkey };
        heading("menu bar");
        note(SettingsText::barNote(hotkey), 12);
        std::vector<QWidget*> modes;
        for (const SettingsButton& words : SettingsText::barModes(bar))
            modes.push_back(drawing(words, [item = &services_.bar](const std::string& identifier) {
                if (const auto mode = barDisplayMode(identifier))
                    item->setBarMode(*mode);
            }));
        row(modes, modeSpacing);
        body_.addWidget(barPreviewRow(SettingsText::barPreview(bar), live));
        if (services_.bar.hiddenConfirmPending())
            question(hotkey);
        std::vector<QWidget*> parts;
        for (const SettingsButton& words : SettingsText::barParts(bar))
            parts.push_back(drawing(words, [item = &services_.bar](const std::string& identifier) {
                if (const auto part = barPart(identifier))
                    item->toggleBarPart(*part);
            }));
        row(parts, rowSpacing);
        note(SettingsText::carried(bar), 11);
        rule();
    }

    void panel() const
    {
        heading("panel");
        note(SettingsText::panelNote, 12);
        ThemeSwitch* const theme = &services_.theme;
        std::vector<QWidget*> views { button(SettingsText::pin(theme->pinned()),
            [theme](const std::string&) { theme->setPinned(!theme->pinned()); }) };
        const auto mode = theme->dark() ? ZOLThemePolicy::Mode::dark : ZOLThemePolicy::Mode::light;
        for (const SettingsButton& words : SettingsText::themes(mode))
            views.push_back(
                button(words, [theme](const std::string& identifier) { theme->selectTheme(identifier); }));
        row(views, rowSpacing);
        rule();
    }

    void hotkey() const
    {
        heading("hotkey");
        renderHotkeySection(body_, services_.hotkeys);
        rule();
    }

    void refreshAndMotion() const
    {
        heading("refresh & motion");
        NativeTick* const tick = &services_.tick;
        std::vector<QWidget*> profiles;
        for (const SettingsButton& words : SettingsText::refresh(tick->nativeInterval()))
            profiles.push_back(
                drawing(words, [tick](const std::string& identifier) { tick->setRefresh(identifier); }));
        row(profiles, rowSpacing);
        note(SettingsText::refreshNote(tick->nativeInterval(), tick->panelInterval()), 11);
        HintController* const hints = &services_.hints;
        row({ button(SettingsText::motion(state_.settings.motionEnabled),
                  [toggle = services_.toggleMotion](const std::string&) { toggle(); }),
                button(SettingsText::hints(state_.settings.hintsEnabled),
                    [hints](const std::string&) { hints->toggleHints(); }),
                button(SettingsText::preview(), [hints](const std::string&) { hints->previewCompanion(); }) },
            rowSpacing);
        note(SettingsText::hintsNote, 11);
        rule();
    }

    void hintHistory() const
    {
        heading("hint history · local");
        const auto rows = SettingsText::hintHistory(services_.hints.hintPolicy().receipts);
        if (rows.empty())
            body_.addWidget(fixedLabel(
                utf16(SettingsText::noHints), 11, QFont::Normal, OstrelStyle::muted, contentWidth));
        for (const auto& [at, state] : rows)
            body_.addWidget(kvRow(utf16(at), utf16(state), contentWidth));
        note(SettingsText::hintHistoryNote, 10);
    }

    void footer() const
    {
        heading(SettingsText::footerTitle());
        note(SettingsText::footerNote, 11);
    }

    void rule() const { body_.addWidget(separator(contentWidth)); }

private:
    template <typename Call>
    [[nodiscard]] static QWidget* button(const SettingsButton& words, Call call)
    {
        return settingsButton(
            words, [call = std::move(call), identifier = words.identifier] { call(identifier); });
    }

    /// The same for what doesn't draw the panel anew by itself.
    template <typename Call>
    [[nodiscard]] QWidget* drawing(const SettingsButton& words, Call call) const
    {
        return button(
            words, [call = std::move(call), render = services_.renderBody](const std::string& identifier) {
                call(identifier);
                render();
            });
    }

    void question(const std::string& hotkey) const
    {
        body_.addWidget(wrappingLabel(
            utf16(SettingsText::hiddenQuestion(hotkey)), 11, QFont::Medium, OstrelStyle::red, contentWidth));
        const auto [confirm, keep] = SettingsText::hiddenAnswers(hotkey);
        BarItem* const item = &services_.bar;
        row({ button(confirm, [item](const std::string&) { item->confirmHiddenBar(); }),
                button(keep, [item](const std::string&) { item->cancelHiddenBar(); }) },
            rowSpacing);
    }

    void heading(std::string_view title) const { body_.addWidget(section(utf16(title), contentWidth)); }

    void note(std::string_view text, double size) const
    {
        body_.addWidget(wrappingLabel(utf16(text), size, QFont::Normal, OstrelStyle::muted, contentWidth));
    }

    void row(const std::vector<QWidget*>& views, int between) const
    {
        body_.addWidget(settingsRow(views, between));
    }

    QVBoxLayout& body_;
    const PanelState& state_;
    const SettingsServices& services_;
};

} // namespace

void renderSettings(QVBoxLayout& body, const PanelState& state, const SettingsServices& services,
    AutomationsTab& automations, JanitorTab& janitor, LiveRegistry& live)
{
    body.setSpacing(spacing);
    const Stack stack(body, state, services);
    stack.menuBar(live);
    stack.panel();
    stack.hotkey();
    renderAutomationsSettings(body, automations, contentWidth);
    body.addSpacing(spacing);
    body.addWidget(janitorSettingsView(janitor, contentWidth));
    stack.rule();
    stack.refreshAndMotion();
    stack.hintHistory();
    stack.footer();
}

} // namespace ostrel
