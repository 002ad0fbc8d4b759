#include "Views/ChannelCard.h"

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

class MuteButton : public PixelButton {
public:
    using PixelButton::PixelButton;

    QSize sizeHint() const override {
        return PixelIcon{PixelGlyph::speaker}.extent().toSize() +
               QSize(2 * mutePadding, 2 * mutePadding);
    }

    void draw(PixelPainter& pixels, const QRectF& face) const override {
        const bool muted = isChecked();
        const QColor mutedColor = Palette::accent(ChannelKind::noise);
        pixels.fill(face, Palette::well);
        pixels.icon({.glyph = muted ? PixelGlyph::mute : PixelGlyph::speaker,
                     .color = muted ? mutedColor : Palette::textDim},
                    {mutePadding, mutePadding});
        pixels.pixelBorder(face, muted ? mutedColor : Palette::line);
    }
};

} // namespace

ChannelCard::ChannelCard(ProjectViewModel& vm, int index, QWidget* parent)
    : PixelButton({.kind = Kind::choice}, title(allChannelKinds[static_cast<std::size_t>(index)]),
                  {}, parent),
      m_vm(vm),
      m_index(index),
      m_kind(channel().kind),
      m_mute(new MuteButton({.kind = Kind::toggle}, accessibleName() + QStringLiteral(" mute"),
                            tr("Mute"), this)),
      m_volume(new VolumeBar(Palette::accent(m_kind), static_cast<int>(highestVolume), this)) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    const QKeySequence shortcut(QKeyCombination(Qt::CTRL, static_cast<Qt::Key>(Qt::Key_1 + index)));
    m_toolTip =
        tr("Select %1 (%2)").arg(accessibleName(), shortcut.toString(QKeySequence::NativeText));
    setToolTip(m_toolTip);
    m_volume->setToolTip(tr("Volume"));
    m_volume->setAccessibleName(accessibleName() + QStringLiteral(" volume"));
    connect(this, &QAbstractButton::toggled, this, [this](bool on) {
        setToolTip(on ? QString() : m_toolTip);
        if (on)
            m_vm.setSelectedChannelIndex(m_index);
    });
    connect(m_mute, &QAbstractButton::toggled, this, [this](bool on) {
        if (on != channel().muted)
            m_vm.toggleMute(m_index);
        m_mute->setToolTip(on ? tr("Unmute") : tr("Mute"));
        update();
    });
    connect(m_volume, &QAbstractSlider::valueChanged, this, [this](int volume) {
        m_vm.setVolume(volume, m_index);
        showVolume();
    });
    connect(&vm, &ProjectViewModel::projectChanged, this, &ChannelCard::showProject);
    connect(&vm, &ProjectViewModel::selectedChannelIndexChanged, this, &ChannelCard::showProject);
    showVolume();
    showProject();
}

const Channel& ChannelCard::channel() const {
    return m_vm.project().channels[static_cast<std::size_t>(m_index)];
}

void ChannelCard::showProject() {
    setChecked(m_index == m_vm.selectedChannelIndex());
    m_volume->setValue(static_cast<int>(channel().volume));
    m_mute->setChecked(channel().muted);
}

void ChannelCard::showVolume() {
    setAccessibleDescription(QStringLiteral("Vol ") + volumeText());
    update();
}

QString ChannelCard::volumeText() const {
    return QStringLiteral("%1 / %2").arg(m_volume->value()).arg(highestVolume);
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

void ChannelCard::draw(PixelPainter& pixels, const QRectF& face) const {
    const QColor accent = Palette::accent(m_kind);
    pixels.fill(face, isChecked() ? Palette::background : Palette::panel);

    const double header = m_mute->geometry().y() + m_mute->height() / 2.0;
    pixels.fill({sidePadding, header - swatchSize / 2.0, swatchSize, swatchSize},
                withOpacity(accent, m_mute->isChecked() ? 0.3 : 1.0));
    pixels.text(title(m_kind), pixelLabel(11, isChecked() ? Palette::text : Palette::textDim),
                {sidePadding + swatchSize + headerSpacing, header});

    const double footer = face.bottom() - endPadding - footerHeight / 2.0;
    const PixelLabel caption = pixelLabel(9, Palette::textDim);
    pixels.text(QStringLiteral("Vol"), caption, {sidePadding, footer});
    pixels.text(volumeText(), caption, {face.right() - sidePadding, footer}, Qt::AlignRight);

    if (isChecked())
        pixels.edge(face, Qt::TopEdge, accent, accentBarHeight);
    pixels.pixelBorder(face, isChecked() ? withOpacity(accent, 0.6) : Palette::line);
}

} // namespace mossbit
