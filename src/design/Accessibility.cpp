// SPDX-License-Identifier: Apache-2.0
#include "design/Accessibility.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QVariant>

namespace ostrel {

namespace {

constexpr const char* roleProperty = "zolRole";
constexpr const char* selectedProperty = "zolSelected";

class DescribedView final : public QAccessibleWidget {
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

    [[nodiscard]] QStringList actionNames() const override
    {
        QStringList names = QAccessibleWidget::actionNames();
        if (button() && button()->isEnabled())
            names.prepend(pressAction());
        return names;
    }

    void doAction(const QString& name) override
    {
        if (name == pressAction() && button())
            button()->click();
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
