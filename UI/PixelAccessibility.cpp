#include "UI/PixelAccessibility.h"

#include "UI/FlatButton.h"
#include "UI/PixelCaption.h"
#include "UI/PixelSegments.h"
#include "UI/VolumeBar.h"

#include <QAccessibleWidget>

namespace mossbit {

namespace {

QAccessible::Role roleOf(FlatButton::Kind kind) {
    switch (kind) {
    case FlatButton::Kind::action:
        return QAccessible::Button;
    case FlatButton::Kind::toggle:
        return QAccessible::CheckBox;
    case FlatButton::Kind::choice:
        return QAccessible::RadioButton;
    }
    return QAccessible::Button;
}

class AccessibleButton : public QAccessibleWidget {
public:
    explicit AccessibleButton(FlatButton& button)
        : QAccessibleWidget(&button, roleOf(button.kind())), m_button(button) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = m_button.kind() != FlatButton::Kind::action;
        state.checked = state.checkable && m_button.isActive();
        state.pressed = m_button.isDown() || (!state.checkable && m_button.isActive());
        return state;
    }

    QStringList actionNames() const override {
        return {m_button.kind() == FlatButton::Kind::toggle ? toggleAction() : pressAction(),
                setFocusAction()};
    }

    void doAction(const QString& name) override {
        if (name == pressAction() || name == toggleAction())
            m_button.click();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    FlatButton& m_button;
};

class AccessibleVolumeBar : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleVolumeBar(VolumeBar& bar)
        : QAccessibleWidget(&bar, QAccessible::Slider), m_bar(bar) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text text) const override {
        return text == QAccessible::Value ? QString::number(m_bar.value())
                                          : QAccessibleWidget::text(text);
    }

    QVariant currentValue() const override { return m_bar.value(); }
    void setCurrentValue(const QVariant& value) override {
        m_bar.request(qRound(value.toDouble()));
    }
    QVariant minimumValue() const override { return 0; }
    QVariant maximumValue() const override { return m_bar.steps(); }
    QVariant minimumStepSize() const override { return 1; }

private:
    VolumeBar& m_bar;
};

/// The segments from the left: the widgets' own order changes with the one that is raised.
class AccessibleSegments : public QAccessibleWidget {
public:
    explicit AccessibleSegments(PixelSegmentRow& row)
        : QAccessibleWidget(&row, QAccessible::Grouping), m_row(row) {}

    int childCount() const override { return static_cast<int>(m_row.segmentCount()); }

    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        return QAccessible::queryAccessibleInterface(
            &m_row.segment(static_cast<std::size_t>(index)));
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        for (int index = 0; child && index < childCount(); ++index)
            if (child->object() == &m_row.segment(static_cast<std::size_t>(index)))
                return index;
        return -1;
    }

private:
    PixelSegmentRow& m_row;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    if (auto* button = qobject_cast<FlatButton*>(object))
        return new AccessibleButton(*button);
    if (auto* bar = qobject_cast<VolumeBar*>(object))
        return new AccessibleVolumeBar(*bar);
    if (auto* segments = qobject_cast<PixelSegmentRow*>(object))
        return new AccessibleSegments(*segments);
    if (auto* caption = dynamic_cast<PixelCaption*>(object))
        return new QAccessibleWidget(caption, QAccessible::StaticText);
    return nullptr;
}

} // namespace

void installPixelAccessibility() {
    QAccessible::installFactory(makeInterface);
}

} // namespace mossbit
