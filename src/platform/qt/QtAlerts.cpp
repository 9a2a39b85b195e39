// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/QtAlerts.h"

#include "platform/qt/WindowActivation.h"
#include "platform/qt/WindowHints.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include <QApplication>
#include <QCursor>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QPolygonF>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextBoundaryFinder>
#include <QTimer>
#include <QWindow>

namespace platform {

namespace {

constexpr int textWidth = 380; ///< wide enough for a path, in points
constexpr int longestWord = 20; ///< signs that fit on one line of that width in any usual font
constexpr int gap = 20;
constexpr int highestText = 320; ///< longer ones scroll, since the smallest displays hold little more
constexpr int markSize = 32;
constexpr std::chrono::milliseconds settled { 150 }; ///< window managers have passed the keyboard on

/// The text, with places to break in words that are longer than a line: a path's end is what matters most.
QString breakable(const QString& text)
{
    QString broken;
    QTextBoundaryFinder signs(QTextBoundaryFinder::Grapheme, text);
    int run = 0;
    qsizetype from = 0;
    for (qsizetype to = signs.toNextBoundary(); to > 0; from = to, to = signs.toNextBoundary()) {
        run = text[from].isSpace() ? 0 : run + 1;
        broken += QStringView(text).sliced(from, to - from);
        if (run == longestWord) {
            broken += QChar(0x200b);
            run = 0;
        }
    }
    return broken;
}

/// A sign of danger: what is asked can't be undone.
class WarningMark final : public QWidget {
public:
    WarningMark()
    {
        setFixedSize(markSize, markSize);
        setAccessibleName("warning");
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        constexpr double line = 2.5;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF area = QRectF(rect()).adjusted(line, line, -line, -line);
        painter.setPen(QPen(palette().highlight(), line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolygon(
            QPolygonF({ { area.center().x(), area.top() }, area.bottomRight(), area.bottomLeft() }));
        const double middle = area.center().x();
        painter.drawLine(QPointF(middle, area.top() + 10), QPointF(middle, area.bottom() - 10));
        painter.drawPoint(QPointF(middle, area.bottom() - 5));
    }
};

class AlertDialog final : public QDialog {
public:
    explicit AlertDialog(const Alert& alert)
        : QDialog(nullptr, Qt::Dialog | Qt::FramelessWindowHint)
    {
        const QString title = QString::fromStdString(alert.title), text = QString::fromStdString(alert.text);
        setWindowTitle(title);
        setAccessibleName(title);
        setAccessibleDescription(text);

        auto* const words = new QVBoxLayout;
        words->setSpacing(gap / 2);
        QLabel* const heading = addLabel(*words, title);
        QFont bold = heading->font();
        bold.setBold(true);
        heading->setFont(bold);
        if (!text.isEmpty())
            addScrolled(*words, text);
        words->addStretch();

        auto* const upper = new QHBoxLayout;
        upper->setSpacing(gap);
        if (alert.critical)
            upper->addWidget(new WarningMark, 0, Qt::AlignTop);
        upper->addLayout(words);

        auto* const buttons = new QHBoxLayout;
        buttons->addStretch();
        for (std::size_t at = 0; at < alert.buttons.size(); ++at) {
            auto* const button
                = new QPushButton(QString::fromStdString(alert.buttons[at]).replace('&', "&&"));
            button->setAccessibleName(QString::fromStdString(alert.buttons[at]));
            button->setDefault(at == 0);
            connect(button, &QPushButton::clicked, this, [this, at] {
                chosen = at;
                accept();
            });
            buttons->addWidget(button);
            if (at == 0)
                button->setFocus();
        }

        auto* const all = new QVBoxLayout(this);
        all->setContentsMargins(gap, gap, gap, gap);
        all->setSpacing(gap);
        all->setSizeConstraint(QLayout::SetFixedSize);
        all->addLayout(upper);
        all->addLayout(buttons);
    }

    /// Puts it over that window, or on the display where the pointer is.
    void place(QWidget* below)
    {
        const QScreen* const pointed = QGuiApplication::screenAt(QCursor::pos());
        const QScreen* const display = below ? below->screen()
            : pointed                        ? pointed
                                             : QGuiApplication::primaryScreen();
        if (!display)
            return;
        ensurePolished();
        layout()->activate();
        const QRect free = display->availableGeometry();
        QRect frame(QPoint(), sizeHint());
        frame.moveCenter(below ? below->geometry().center() : free.center());
        frame.moveLeft(std::max(free.left(), std::min(frame.left(), free.right() - frame.width())));
        frame.moveTop(std::max(free.top(), std::min(frame.top(), free.bottom() - frame.height())));
        setScreen(const_cast<QScreen*>(display));
        move(frame.topLeft());
        winId();
        // Not as a parent: that one's end would end the question under the feet of who asked it.
        windowHandle()->setTransientParent(below ? below->windowHandle() : nullptr);
        keepOutOfTaskbar(*this);
    }

    std::optional<std::size_t> chosen;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        // It has no title bar to move it by.
        if (event->button() == Qt::LeftButton && windowHandle())
            windowHandle()->startSystemMove();
    }

private:
    /// The text, within reach of the buttons below it however long it is.
    static void addScrolled(QVBoxLayout& column, const QString& text)
    {
        QLabel* const label = addLabel(column, text);
        label->ensurePolished();
        const int height = label->heightForWidth(textWidth);
        if (height <= highestText)
            return;
        column.removeWidget(label);
        label->setFixedHeight(height);
        auto* const scroll = new QScrollArea;
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll->setWidget(label);
        scroll->viewport()->setAutoFillBackground(false);
        label->setAutoFillBackground(false);
        scroll->setFixedSize(textWidth + scroll->verticalScrollBar()->sizeHint().width(), highestText);
        column.addWidget(scroll);
    }

    static QLabel* addLabel(QVBoxLayout& column, const QString& text)
    {
        auto* const label = new QLabel(breakable(text));
        label->setAccessibleName(text);
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setFixedWidth(textWidth);
        column.addWidget(label);
        return label;
    }
};

/// Window managers give the keyboard to no tool window by themselves when a dialog ends, and some pass it on
/// to another program only after we have asked.
void giveBack(QWidget& window)
{
    takeKeyboard(window);
    QTimer::singleShot(settled, &window, [&window] {
        if (window.isVisible() && !QApplication::activeWindow())
            takeKeyboard(window);
    });
}

} // namespace

std::size_t QtAlerts::runModal(const Alert& alert)
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return cancelButton(alert);
    const QPointer<QWidget> below = QApplication::activeWindow();
    AlertDialog dialog(alert);
    dialog.place(below);
    ++up_;
    dialog.exec();
    --up_;
    if (below && below->isVisible())
        giveBack(*below);
    return dialog.chosen.value_or(cancelButton(alert));
}

} // namespace platform
