// SPDX-License-Identifier: Apache-2.0
#include "design/Accessibility.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QString>
#include <QVariant>

namespace ostrel {

namespace {

constexpr const char* roleProperty = "zolRole";
constexpr const char* selectedProperty = "zolSelected";
constexpr const char* valueProperty = "zolValue";
constexpr const char* levelProperty = "zolLevel";
constexpr const char* menuProperty = "zolMenu";

class DescribedView final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    DescribedView(QWidget& view, QAccessible::Role role)
        : QAccessibleWidget(&view, role)
    {
    }

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        const QVariant selected = widget()->property(selectedProperty);
        state.selectable = selected.isValid();
        state.selected = selected.toBool();
        return state;
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        const QVariant value = widget()->property(valueProperty);
        return kind == QAccessible::Value && value.isValid() ? value.toString()
                                                             : QAccessibleWidget::text(kind);
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface && widget()->property(levelProperty).isValid())
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    [[nodiscard]] QVariant currentValue() const override { return widget()->property(levelProperty); }
    [[nodiscard]] QVariant minimumValue() const override { return 0.0; }
    [[nodiscard]] QVariant maximumValue() const override { return 100.0; }
    [[nodiscard]] QVariant minimumStepSize() const override { return 0.0; }
    void setCurrentValue(const QVariant&) override
    {
        // A reading can't be set.
    }

    [[nodiscard]] QStringList actionNames() const override
    {
        QStringList names = QAccessibleWidget::actionNames();
        if (button() && button()->isEnabled())
            names.prepend(pressAction());
        if (widget()->property(menuProperty).toBool())
            names.append(showMenuAction());
        return names;
    }

    void doAction(const QString& name) override
    {
        if (name == pressAction() && button())
            button()->click();
        else if (name == showMenuAction())
            // In a turn of its own: who asks waits for the answer, and the menu takes its time.
            QCoreApplication::postEvent(widget(),
                new QContextMenuEvent(QContextMenuEvent::Other, {}, widget()->mapToGlobal(QPoint())));
        else
            QAccessibleWidget::doAction(name);
    }

private:
    [[nodiscard]] QAbstractButton* button() const { return qobject_cast<QAbstractButton*>(widget()); }
};

QAccessibleInterface* describe(const QString&, QObject* object)
{
    auto* view = qobject_cast<QWidget*>(object);
    const QVariant role = view ? view->property(roleProperty) : QVariant();
    return role.isValid() ? new DescribedView(*view, static_cast<QAccessible::Role>(role.toInt())) : nullptr;
}

} // namespace

void setAccessibleRole(QWidget& view, QAccessible::Role role)
{
    // The toolkit passes over a factory that it has already.
    QAccessible::installFactory(describe);
    view.setProperty(roleProperty, int { role });
}

void setAccessibleValue(QWidget& view, const QString& words)
{
    view.setProperty(valueProperty, words);
    // The bus has no place for a value in words; a description it has.
    view.setAccessibleDescription(words);
}

void setAccessibleLevel(QWidget& view, double level, const QString& words)
{
    setAccessibleValue(view, words);
    if (view.property(levelProperty) == QVariant(level))
        return;
    view.setProperty(levelProperty, level);
    QAccessibleValueChangeEvent event(&view, level);
    QAccessible::updateAccessibility(&event);
}

void setAccessibleMenu(QWidget& view) { view.setProperty(menuProperty, true); }

void setAccessibleSelected(QWidget& view, bool selected)
{
    if (view.property(selectedProperty) == QVariant(selected))
        return;
    view.setProperty(selectedProperty, selected);
    QAccessible::State changed;
    changed.selected = true;
    QAccessibleStateChangeEvent event(&view, changed);
    QAccessible::updateAccessibility(&event);
    // The toolkit's bridge to the bus hands this one on as the change of that state, and not the one before.
    QAccessibleEvent selection(&view, QAccessible::Selection);
    QAccessible::updateAccessibility(&selection);
}

} // namespace ostrel
