#include "controls/AccessibleControls.h"

#include "controls/OverlayScroller.h"
#include "controls/StripedProgressBar.h"

#include <QAccessibleWidget>
#include <QScrollBar>
#include <cmath>
#include <mutex>

namespace {

// A value, read-only unless `set` says how to change it.
class ValueWidget : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    using QAccessibleWidget::QAccessibleWidget;

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QVariant minimumStepSize() const override { return 1; }
};

class ProgressBarInterface : public ValueWidget {
public:
    explicit ProgressBarInterface(StripedProgressBar* bar)
        : ValueWidget(bar, QAccessible::ProgressBar) { }

    QString text(QAccessible::Text t) const override {
        if (t == QAccessible::Value)
            return bar()->isIndeterminate() ? QString() : QStringLiteral("%1%").arg(percent());
        if (t == QAccessible::Name && widget()->accessibleName().isEmpty())
            return QStringLiteral("Progress");
        return ValueWidget::text(t);
    }
    // Percent, as a plain progress bar reports it; an indeterminate bar has no range (0 to 0).
    QVariant currentValue() const override { return percent(); }
    void setCurrentValue(const QVariant&) override { }
    QVariant maximumValue() const override { return bar()->isIndeterminate() ? 0 : 100; }
    QVariant minimumValue() const override { return 0; }

private:
    StripedProgressBar* bar() const { return static_cast<StripedProgressBar*>(widget()); }
    int percent() const { return bar()->isIndeterminate() ? 0 : static_cast<int>(std::lround(bar()->value() * 100)); }
};

// The overlay stands for its area's own vertical bar, which is turned off: the value is that bar's,
// and setting it scrolls the area.
class ScrollerInterface : public ValueWidget {
public:
    explicit ScrollerInterface(OverlayScroller* scroller)
        : ValueWidget(scroller, QAccessible::ScrollBar) { }

    QString text(QAccessible::Text t) const override {
        if (t == QAccessible::Name && widget()->accessibleName().isEmpty())
            return QStringLiteral("Vertical");
        return ValueWidget::text(t);
    }
    QVariant currentValue() const override { return bar()->value(); }
    void setCurrentValue(const QVariant& value) override { bar()->setValue(value.toInt()); }
    QVariant maximumValue() const override { return bar()->maximum(); }
    QVariant minimumValue() const override { return bar()->minimum(); }
    QVariant minimumStepSize() const override { return bar()->singleStep(); }

private:
    QScrollBar* bar() const { return static_cast<OverlayScroller*>(widget())->scrollBar(); }
};

// A token field's chip: a button named after its token; pressing it removes the token, as its
// remove mark does.
class ChipInterface : public QAccessibleWidget {
public:
    explicit ChipInterface(QWidget* chip)
        : QAccessibleWidget(chip, QAccessible::Button) { }

    QString text(QAccessible::Text t) const override {
        if (t == QAccessible::Description && widget()->accessibleDescription().isEmpty())
            return QStringLiteral("Press to remove it");
        return QAccessibleWidget::text(t);
    }
    QStringList actionNames() const override { return { pressAction() }; }
    void doAction(const QString& actionName) override {
        if (actionName == pressAction())
            QMetaObject::invokeMethod(widget(), "remove");
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
};

QAccessibleInterface* factory(const QString& className, QObject* object) {
    if (className == QLatin1String("StripedProgressBar"))
        return new ProgressBarInterface(static_cast<StripedProgressBar*>(object));
    if (className == QLatin1String("OverlayScroller"))
        return new ScrollerInterface(static_cast<OverlayScroller*>(object));
    if (className == QLatin1String("TokenChip"))
        return new ChipInterface(static_cast<QWidget*>(object));
    return nullptr;
}

} // namespace

namespace AccessibleControls {

void install() {
    static std::once_flag once;
    std::call_once(once, [] { QAccessible::installFactory(factory); });
}

} // namespace AccessibleControls
