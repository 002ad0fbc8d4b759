#include "Views/ChannelCard.h"

#include "UI/PixelIcon.h"
#include "UI/PixelPainter.h"
#include "UI/VolumeBar.h"
#include "ViewModels/ProjectViewModel.h"
#include "Views/DisplayNames.h"

#include <QKeySequence>

namespace mossbit {

namespace {

// Points.
constexpr int sidePadding = 12;
constexpr int endPadding = 9;
constexpr int rowSpacing = 7;
constexpr int headerSpacing = 6;
constexpr int swatchSize = 8;
constexpr int volumeHeight = 10;
constexpr int footerHeight = 11;
constexpr int accentBarHeight = 2;

constexpr int mutePadding = 4;

class MuteButton : public FlatButton {
public:
    explicit MuteButton(QWidget* parent) : FlatButton(Kind::toggle, parent) {}

    QSize sizeHint() const override {
        return PixelIcon{PixelGlyph::speaker}.extent().toSize() +
               QSize(2 * mutePadding, 2 * mutePadding);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        PixelPainter pixels(painter);
        const bool muted = isActive();
        const QColor mutedColor = Palette::accent(ChannelKind::noise);
        pixels.fill(rect(), Palette::well);
        pixels.icon({.glyph = muted ? PixelGlyph::mute : PixelGlyph::speaker,
                     .color = muted ? mutedColor : Palette::textDim},
                    {mutePadding, mutePadding});
        pixels.pixelBorder(rect(), muted ? mutedColor : Palette::line);
        paintFocusMark(pixels);
    }
};

} // namespace

ChannelCard::ChannelCard(ProjectViewModel& vm, int index, QWidget* parent)
    : FlatButton(Kind::choice, parent),
      m_vm(vm),
      m_index(index),
      m_kind(vm.project().channels[static_cast<std::size_t>(index)].kind),
      m_mute(new MuteButton(this)),
      m_volume(new VolumeBar(
          Palette::accent(m_kind), static_cast<int>(highestVolume),
          [&vm, index](int volume) { vm.setVolume(volume, index); }, this)) {
    const QString name = title(m_kind);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setAccessibleName(name);
    const QKeySequence shortcut(QKeyCombination(Qt::CTRL, static_cast<Qt::Key>(Qt::Key_1 + index)));
    setToolTip(tr("Select %1 (%2)").arg(name, shortcut.toString(QKeySequence::NativeText)));
    m_volume->setToolTip(tr("Volume"));
    m_mute->setAccessibleName(name + QStringLiteral(" mute"));
    m_volume->setAccessibleName(name + QStringLiteral(" volume"));
    connect(this, &QAbstractButton::clicked, this,
            [this] { m_vm.setSelectedChannelIndex(m_index); });
    connect(m_mute, &QAbstractButton::clicked, this, [this] { m_vm.toggleMute(m_index); });
    connect(&vm, &ProjectViewModel::projectChanged, this, &ChannelCard::showProject);
    connect(&vm, &ProjectViewModel::selectedChannelIndexChanged, this, &ChannelCard::showProject);
    showProject();
}

void ChannelCard::showProject() {
    setActive(m_index == m_vm.selectedChannelIndex());
    const Channel& channel = m_vm.project().channels[static_cast<std::size_t>(m_index)];
    m_volume->setValue(static_cast<int>(channel.volume));
    m_mute->setActive(channel.muted);
    m_mute->setToolTip(channel.muted ? tr("Unmute") : tr("Mute"));
    if (channel.volume == m_shownVolume && channel.muted == m_isShownMuted)
        return;
    m_shownVolume = channel.volume;
    m_isShownMuted = channel.muted;
    setAccessibleDescription(QStringLiteral("Vol ") + volumeText());
    update();
}

QString ChannelCard::volumeText() const {
    return QStringLiteral("%1 / %2").arg(m_shownVolume).arg(highestVolume);
}

QSize ChannelCard::sizeHint() const {
    const int content = m_mute->sizeHint().height() + volumeHeight + footerHeight + 2 * rowSpacing;
    return {200, content + 2 * endPadding};
}

void ChannelCard::resizeEvent(QResizeEvent*) {
    const QSize mute = m_mute->sizeHint();
    m_mute->setGeometry(QRect(QPoint(width() - sidePadding - mute.width(), endPadding), mute));
    m_volume->setGeometry(sidePadding, endPadding + mute.height() + rowSpacing,
                          width() - 2 * sidePadding, volumeHeight);
}

void ChannelCard::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    const QColor accent = Palette::accent(m_kind);
    const QRectF card = rect();
    pixels.fill(card, isActive() ? Palette::background : Palette::panel);

    const double header = m_mute->geometry().y() + m_mute->height() / 2.0;
    pixels.fill({sidePadding, header - swatchSize / 2.0, swatchSize, swatchSize},
                withOpacity(accent, m_isShownMuted ? 0.3 : 1.0));
    pixels.text(title(m_kind), pixelLabel(11, isActive() ? Palette::text : Palette::textDim),
                {sidePadding + swatchSize + headerSpacing, header});

    const double footer = card.bottom() - endPadding - footerHeight / 2.0;
    const PixelLabel caption = pixelLabel(9, Palette::textDim);
    pixels.text(QStringLiteral("Vol"), caption, {sidePadding, footer});
    pixels.text(volumeText(), caption, {card.right() - sidePadding, footer}, Qt::AlignRight);

    if (isActive())
        pixels.edge(card, Qt::TopEdge, accent, accentBarHeight);
    pixels.pixelBorder(card, isActive() ? withOpacity(accent, 0.6) : Palette::line);
    paintFocusMark(pixels);
}

} // namespace mossbit
