// SPDX-License-Identifier: Apache-2.0
#include "janitor/JanitorSettingsView.h"

#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/PanelField.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "janitor/JanitorTab.h"
#include "janitor/JanitorViews.h"

#include <string>

namespace ostrel {

namespace {

constexpr int fieldWidth = 240;
constexpr int fieldHeight = 28;
constexpr int rowSpacing = 8;

/// A text and a button at the right edge, the same height with and without one.
void addRow(const JanitorColumn& column, const std::string& text, const ThemedColor& color, QWidget* button)
{
    auto* label = elidedLabel(utf16(text), 11, QFont::Normal, color);
    QWidget* row
        = button ? namedRow(text, { label, button }, column.width()) : viewRow({ label }, column.width());
    row->setFixedHeight(fieldHeight);
    column.add(row);
}

void addProtected(const JanitorColumn& column, const JanitorSection& section, JanitorTab& janitor)
{
    column.text(section.protectedTitle, 11, OstrelStyle::ink, 1, QFont::Medium);
    column.gap(4);
    for (const ProtectedRow& row : section.rows) {
        OstrelButton* button = row.locked
            ? nullptr
            : janitorButton(row.unprotect, [&janitor, name = row.name] { janitor.confirmUnprotect(name); });
        if (button)
            button->setObjectName(utf16("unprotect-" + row.name));
        addRow(column, row.text, row.locked ? OstrelStyle::muted : OstrelStyle::ink, button);
        column.gap(4);
    }
}

void addField(const JanitorColumn& column, const JanitorSection& section, JanitorTab& janitor)
{
    auto* field = new PanelField(utf16(section.placeholder), 11, fieldWidth, fieldHeight);
    field->setObjectName("protect-field");
    // Emptied before, since a press draws the section anew and keeps what is in the field.
    const auto protect = [&janitor, field] {
        const QString text = field->text();
        field->clear();
        if (!janitor.protectName(text.toStdString()))
            field->setText(text);
    };
    QObject::connect(field, &QLineEdit::returnPressed, field, protect);
    column.addNarrow(viewRow({ field, janitorButton(section.protect, protect) },
        fieldWidth + rowSpacing + section.protect.width, rowSpacing));
}

void addCaches(const JanitorColumn& column, const JanitorSection& section, JanitorTab& janitor)
{
    column.text(section.cachesTitle, 11, OstrelStyle::ink, 1, QFont::Medium);
    column.gap(4);
    column.text(section.picked, 11, OstrelStyle::muted, 2);
    column.gap(4);
    if (section.listCaches)
        column.addNarrow(janitorButton(*section.listCaches, [&janitor] { janitor.listCaches(); }));
    for (const CacheRow& row : section.caches) {
        OstrelButton* button = janitorButton(
            row.pick, [&janitor, name = row.name, picked = row.picked] { janitor.pickCache(name, picked); });
        button->setObjectName(utf16("cache-" + row.name));
        addRow(column, row.text, row.picked ? OstrelStyle::ink : OstrelStyle::muted, button);
        column.gap(4);
    }
}

} // namespace

QWidget* janitorSettingsView(JanitorTab& janitor, int width)
{
    const JanitorSection section = janitor.settingsSection();
    const JanitorColumn column(width);
    column.text(section.title, 12, OstrelStyle::ink, 1, QFont::DemiBold);
    column.text(section.note, 11, OstrelStyle::muted, 2);
    column.gap(4);
    addProtected(column, section, janitor);
    column.gap(4);
    addField(column, section, janitor);
    column.gap(8);
    addCaches(column, section, janitor);
    column.gap(6);
    column.addNarrow(janitorButton(section.openReceipts, [&janitor] { janitor.openReceipts(); }));
    return column.view();
}

} // namespace ostrel
