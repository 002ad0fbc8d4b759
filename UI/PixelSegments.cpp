#include "UI/PixelSegments.h"

#include "UI/PixelPainter.h"

namespace mossbit {

namespace {

constexpr double padding = 7;
/// Neighbours share their outline.
constexpr int overlap = 1;

/// Paints nothing: the row draws its segments, in the order in which they overlap.
class Segment : public PixelButton {
public:
    using PixelButton::PixelButton;

protected:
    void paintEvent(QPaintEvent*) override {}
};

} // namespace

PixelSegments::PixelSegments(const QString& name, const QColor& accent, QWidget* parent)
    : QWidget(parent), m_accent(accent) {
    setAccessibleName(name);
    setFixedSize(0, 0);
}

void PixelSegments::add(const QString& label, const std::function<void()>& onChange) {
    auto* segment = new Segment({.kind = PixelButton::Kind::choice,
                                 .accent = m_accent,
                                 .padding = padding,
                                 .idleColor = Palette::textDim},
                                accessibleName() + QLatin1Char(' ') + label, {}, this);
    segment->setText(label);
    segment->setGeometry(
        QRect(QPoint(m_segments.empty() ? 0 : width() - overlap, 0), segment->sizeHint()));
    setFixedSize(segment->geometry().bottomRight().x() + 1, segment->height());
    m_segments.push_back(segment);
    connect(segment, &QAbstractButton::toggled, this, [onChange](bool on) {
        if (on)
            onChange();
    });
}

void PixelSegments::setAccent(const QColor& accent) {
    for (PixelButton* segment : m_segments)
        segment->setAccent(accent);
}

void PixelSegments::setSelection(std::ptrdiff_t index) {
    for (PixelButton* segment : m_segments) {
        // Otherwise Qt would keep one checked in any case.
        segment->setAutoExclusive(false);
        segment->setChecked(index-- == 0);
        segment->setAutoExclusive(true);
    }
}

void PixelSegments::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    // The chosen segment's outline lies over its neighbours', the focus mark over that.
    for (const bool checked : {false, true})
        for (const PixelButton* segment : m_segments)
            if (segment->isChecked() == checked)
                segment->draw(pixels, segment->geometry());
    for (const PixelButton* segment : m_segments)
        if (segment->hasFocus()) {
            segment->draw(pixels, segment->geometry());
            paintFocusMark(pixels, segment->geometry());
        }
}

} // namespace mossbit
