#pragma once

#include "UI/PixelSegments.h"
#include "ViewModels/ProjectViewModel.h"

#include <array>

namespace mossbit {

class ChannelCard;
class PixelCaption;

/// The row under the cards with the setting that belongs to the selected channel's kind.
class ChannelInspector : public QWidget {
    Q_OBJECT

public:
    explicit ChannelInspector(ProjectViewModel& vm, QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showProject();

    ProjectViewModel& m_vm;
    PixelCaption* m_title;
    PixelSegments<Duty>* m_duty;
    PixelSegments<WavePreset>* m_preset;
    QWidget* m_kit;
};

/// The song's channels side by side, and the selected one's setting.
class ChannelBarView : public QWidget {
    Q_OBJECT

public:
    explicit ChannelBarView(ProjectViewModel& vm, QWidget* parent = nullptr);

    ChannelCard& card(std::size_t index) const { return *m_cards[index]; }
    ChannelInspector& inspector() const { return *m_inspector; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    std::array<ChannelCard*, 4> m_cards{};
    ChannelInspector* m_inspector;
};

} // namespace mossbit
