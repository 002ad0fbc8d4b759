#include "UI/PixelSegments.h"

#include "UI/PixelAccessibility.h"

#include <QEvent>

namespace mossbit {

namespace {

constexpr double padding = 7;
/// Neighbours share their outline.
constexpr int overlap = 1;

} // namespace

PixelSegmentRow::PixelSegmentRow(const QString& name, const std::vector<QString>& labels,
                                 const QColor& accent, QWidget* parent)
    : QWidget(parent) {
    installPixelAccessibility();
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    for (std::size_t index = 0; index < labels.size(); ++index) {
        auto* segment = new PixelButton({.kind = FlatButton::Kind::choice,
                                         .accent = accent,
                                         .padding = padding,
                                         .text = labels[index],
                                         .idleColor = Palette::textDim},
                                        this);
        segment->setAccessibleName(name + QLatin1Char(' ') + labels[index]);
        connect(segment, &QAbstractButton::clicked, this, [this, index] { Q_EMIT clicked(index); });
        segment->installEventFilter(this);
        m_segments.push_back(segment);
    }
}

void PixelSegmentRow::setAccent(const QColor& accent) {
    for (PixelButton* segment : m_segments)
        segment->setAccent(accent);
}

QSize PixelSegmentRow::sizeHint() const {
    QSize size(0, 0);
    for (const PixelButton* segment : m_segments) {
        const QSize hint = segment->sizeHint();
        size = {size.width() + hint.width() - overlap, std::max(size.height(), hint.height())};
    }
    return size + QSize(overlap, 0);
}

void PixelSegmentRow::showSelected(std::size_t index) {
    for (std::size_t i = 0; i < m_segments.size(); ++i)
        m_segments[i]->setActive(i == index);
    stack();
}

void PixelSegmentRow::stack() {
    // The chosen segment's outline lies over its neighbours', the keyboard's mark over that.
    for (PixelButton* segment : m_segments)
        if (segment->isActive())
            segment->raise();
    for (PixelButton* segment : m_segments)
        if (segment->hasFocus())
            segment->raise();
}

bool PixelSegmentRow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        stack();
    return QWidget::eventFilter(watched, event);
}

void PixelSegmentRow::resizeEvent(QResizeEvent*) {
    int x = 0;
    for (PixelButton* segment : m_segments) {
        segment->setGeometry(QRect(QPoint(x, 0), segment->sizeHint()));
        x += segment->width() - overlap;
    }
}

} // namespace mossbit
