// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "views/AppBench.h"

#include "design/OstrelStyle.h"
#include "design/Paint.h"
#include "design/controls/OstrelButton.h"
#include "design/controls/ZOLShellLabel.h"

#include "support/QtEnvironment.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

/// The views of that kind in a tree, in their order; the toolkit's own search doesn't know our kinds.
template <typename View>
std::vector<View*> all(const QWidget& root)
{
    std::vector<View*> found;
    for (QWidget* view : root.findChildren<QWidget*>())
        if (auto* one = dynamic_cast<View*>(view))
            found.push_back(one);
    return found;
}

inline void sendKey(
    QWidget& view, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {})
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(&view, &event);
}

/// The open panel with a snapshot on one of its tabs, and scripts that answer by a word of their command line
/// or, without an answer, with silence.
struct OpenTab : AppBench {
    using Answers = std::map<std::string, std::string>;

    explicit OpenTab(
        ostrel::OstrelMode mode, const std::string& snapshot = snapshotText(3), Answers given = {})
        : answers(std::move(given))
    {
        kernel.reading = { .swapTotalBytes = 4096 * mb,
            .swapUsedBytes = 1536 * mb,
            .load1 = 2.5,
            .activeProcessorCount = 4,
            .pressureLevel = 1,
            .physicalMemoryBytes = 15872 * mb,
            .usedBytes = 11776 * mb,
            .freeBytes = 2048 * mb };
        workspace.setReduceMotion(true);
        for (const char* name : { "session_bridge", "ostrel_remote" })
            bundle.resources.emplace(std::string("collectors/") + name + ".py", name);
        children.whileRunning = [this] {
            for (const std::string& word : children.requests.back().arguments)
                if (const auto found = answers.find(word); found != answers.end())
                    return answer(found->second);
        };
        start();
        fetch(snapshot);
        if (mode != delegate.frame().mode())
            delegate.frame().switchMode(mode);
        settle();
    }

    void settle()
    {
        time.advance(platform::Seconds(0.01));
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        // What the deleted ones stood on is painted in a turn of its own.
        QCoreApplication::processEvents();
    }

    /// Lets all that runs come to its end.
    void work()
    {
        settleBackground();
        settle();
    }

    /// The next tick, in which the processor was that busy.
    void tick(std::uint32_t cpu)
    {
        kernel.ticks->user += cpu;
        kernel.ticks->idle += 100 - cpu;
        time.advance(delegate.tick().nativeInterval());
    }

    [[nodiscard]] QWidget& page() { return *root().findChild<QScrollArea*>()->widget(); }
    [[nodiscard]] QScrollBar& scrollBar() { return *root().findChild<QScrollArea*>()->verticalScrollBar(); }
    [[nodiscard]] QWidget* keyboard() { return root().window()->focusWidget(); }

    /// The view of the tab with that identifier.
    template <typename View = QWidget>
    [[nodiscard]] View& named(const char* identifier)
    {
        return *page().findChild<View*>(identifier);
    }

    /// The tab's button of that identifier, name or caption; null without one.
    [[nodiscard]] ostrel::OstrelButton* control(const QString& name)
    {
        for (auto* one : all<ostrel::OstrelButton>(page()))
            if (one->objectName() == name || one->accessibleName() == name || one->caption() == name)
                return one;
        return nullptr;
    }
    void press(const QString& name)
    {
        ostrel::OstrelButton* const found = control(name);
        ASSERT_TRUE(found) << name.toStdString();
        found->click();
        settle();
    }
    /// The captions on the tab, with a mark of those that are on or off.
    [[nodiscard]] QStringList captions()
    {
        QStringList captions;
        for (const auto* one : all<ostrel::OstrelButton>(page()))
            captions.push_back(
                one->caption() + (one->isActive() ? " (on)" : "") + (one->isEnabled() ? "" : " (off)"));
        return captions;
    }

    /// What the tab says, in its order.
    [[nodiscard]] QStringList said()
    {
        QStringList texts;
        for (const QLabel* label : page().findChildren<QLabel*>())
            texts.push_back(label->text());
        return texts;
    }
    /// Expects labels that begin so one after the other, from where the first is found; gives the place
    /// behind.
    qsizetype expectSaid(const QStringList& beginnings)
    {
        const QStringList texts = said();
        qsizetype at = 0;
        while (at < texts.size() && !texts[at].startsWith(beginnings.front()))
            ++at;
        for (const QString& beginning : beginnings) {
            EXPECT_TRUE(at < texts.size() && texts[at].startsWith(beginning))
                << beginning.toStdString() << " at " << at << " in\n"
                << texts.join("\n").toStdString();
            ++at;
        }
        return at;
    }
    /// The same where others may stand between them.
    void expectInOrder(const QStringList& beginnings)
    {
        const QStringList texts = said();
        auto at = texts.begin();
        for (const QString& beginning : beginnings) {
            at = std::find_if(at, texts.end(), [&](const QString& one) { return one.startsWith(beginning); });
            ASSERT_NE(at++, texts.end()) << beginning.toStdString() << " in\n"
                                         << texts.join("\n").toStdString();
        }
    }
    /// The colours of the labels with that text.
    [[nodiscard]] std::vector<QColor> colors(const QString& text)
    {
        std::vector<QColor> found;
        for (const auto* label : all<ostrel::ZOLShellLabel>(page()))
            if (label->text() == text)
                found.push_back(label->palette().color(QPalette::WindowText));
        return found;
    }

    void expectWithinTheTab()
    {
        EXPECT_EQ(page().width(), 728);
        for (const QWidget* view : page().findChildren<QWidget*>()) {
            const QRect place(view->mapTo(&page(), QPoint()), view->size());
            EXPECT_TRUE(place.isEmpty() || page().rect().contains(place))
                << view->accessibleName().left(40).toStdString() << place.left() << " " << place.right();
        }
    }

    static constexpr std::uint64_t mb = 1048576;
    Answers answers;
};
