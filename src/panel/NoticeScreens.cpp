// SPDX-License-Identifier: Apache-2.0
#include "panel/NoticeScreens.h"

#include "design/OstrelStyle.h"
#include "design/Utf8.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/TabLayout.h"
#include "design/controls/ZOLShellLabel.h"
#include "panel/PanelSize.h"

#include <QVBoxLayout>

#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace ostrel {

namespace {

constexpr int spacing = 8;
constexpr int retryWidth = 160;

void addTitle(QVBoxLayout& body, std::string_view text)
{
    body.addWidget(wrappingLabel(utf16(text), 16, QFont::DemiBold, OstrelStyle::ink, contentWidth));
    body.addSpacing(spacing);
}

void addText(QVBoxLayout& body, std::string_view text, const ThemedColor& color = OstrelStyle::muted)
{
    body.addWidget(wrappingLabel(utf16(text), 11, QFont::Normal, color, contentWidth));
}

void addRetry(QVBoxLayout& body, std::function<void()> retry)
{
    body.addSpacing(spacing);
    body.addWidget(ostrelTip(new OstrelButton("retry snapshot", retryWidth, std::move(retry)),
                       "read the process snapshot again; nothing is stopped or changed"),
        0, Qt::AlignLeft);
    body.addSpacing(spacing);
}

} // namespace

void renderNotice(
    QVBoxLayout& body, BodyScreen screen, const std::string& backendState, std::function<void()> retry)
{
    switch (screen) {
    case BodyScreen::tab:
        return;
    case BodyScreen::loading:
        addTitle(body, "Reading this Mac…");
        return addText(
            body, "Memory, process and session counts will appear when the local snapshot completes.");
    case BodyScreen::error:
        addTitle(body, "Snapshot unavailable");
        addText(body, backendState);
        break;
    case BodyScreen::empty:
        addTitle(body, "No snapshot yet");
        addText(body, "Refresh to collect memory, process and session readings.");
        break;
    case BodyScreen::stale:
        addText(body, fmt::format("Showing the last successful reading. {}", backendState), OstrelStyle::red);
        break;
    }
    addRetry(body, std::move(retry));
}

} // namespace ostrel
