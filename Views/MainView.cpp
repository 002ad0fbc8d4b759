#include "Views/MainView.h"

#include "UI/PixelCaption.h"
#include "UI/PixelPainter.h"
#include "UI/PixelRule.h"
#include "Views/ChannelBarView.h"
#include "Views/PianoRollView.h"
#include "Views/TransportView.h"

#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace mossbit {

namespace {

constexpr double lowestZoom = 0.6;
constexpr double highestZoom = 4.0;
constexpr double zoomStep = 0.25;

/// Lies over the piano roll and lets every press through.
class Hint : public QWidget {
public:
    explicit Hint(QWidget* parent) : QWidget(parent) {
        constexpr int padding = 22;
        constexpr int spacing = 8;
        setAttribute(Qt::WA_TransparentForMouseEvents);
        auto* lines = new QVBoxLayout(this);
        lines->setContentsMargins(padding, padding, padding, padding);
        lines->setSpacing(spacing);
        const PixelLabel label = pixelLabel(13, Palette::textDim);
        for (const QString& line :
             {MainView::tr("Click grid to add a note"), MainView::tr("Space to play")})
            lines->addWidget(new PixelCaption(line, label, this), 0, Qt::AlignHCenter);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        PixelPainter pixels(painter);
        pixels.fill(rect(), withOpacity(Palette::well, 0.92));
        pixels.pixelBorder(rect(), Palette::line);
    }
};

} // namespace

MainView::MainView(ProjectViewModel& vm, QWidget* parent) : QWidget(parent), m_vm(vm) {
    setMinimumSize(minimumExtent);
    // In reading order, which Tab and assistive tools follow.
    auto* transport = new TransportView(vm, this);
    m_pianoRoll = new PianoRollView(vm, this);
    m_hint = new Hint(this);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(transport);
    column->addWidget(new PixelRule(0, 1, this));
    column->addWidget(m_pianoRoll, 1);
    auto* lowerRule = new PixelRule(0, 1, this);
    lowerRule->setBackgroundRole(QPalette::Base);
    column->addWidget(lowerRule);
    column->addWidget(new ChannelBarView(vm, this));
    m_hint->raise();
    m_pianoRoll->setFocus();

    connect(transport, &TransportView::zoomOutRequested, this,
            [this] { setZoom(std::max(m_zoom - zoomStep, lowestZoom)); });
    connect(transport, &TransportView::zoomInRequested, this,
            [this] { setZoom(std::min(m_zoom + zoomStep, highestZoom)); });
    // A text field that closes gives the keyboard away.
    connect(&vm, &ProjectViewModel::isEditingTextChanged, this, [this] {
        if (!window()->focusWidget())
            m_pianoRoll->setFocus(Qt::OtherFocusReason);
    });
    connect(&vm, &ProjectViewModel::projectChanged, this, &MainView::showHint);
    // Queued: the command that failed has to end before a dialog takes over.
    connect(&vm, &ProjectViewModel::alertMessageChanged, this, &MainView::presentAlert,
            Qt::QueuedConnection);
    showHint();
    if (vm.alertMessage())
        QMetaObject::invokeMethod(this, &MainView::presentAlert, Qt::QueuedConnection);
}

void MainView::setZoom(double zoom) {
    m_zoom = zoom;
    m_pianoRoll->setZoom(zoom);
}

void MainView::showHint() {
    m_hint->setVisible(!m_vm.project().hasNotes());
}

void MainView::presentAlert() {
    const auto& message = m_vm.alertMessage();
    if (!message) {
        if (m_alert)
            m_alert->close();
        return;
    }
    if (!m_alert) {
        m_alert = new QMessageBox(this);
        m_alert->setAttribute(Qt::WA_DeleteOnClose);
        m_alert->setWindowTitle(QStringLiteral("Mossbit"));
        m_alert->setIcon(QMessageBox::Warning);
        // A file name must not be taken for markup.
        m_alert->setTextFormat(Qt::PlainText);
        m_alert->setStandardButtons(QMessageBox::Ok);
        m_alert->button(QMessageBox::Ok)->setText(tr("OK"));
        connect(m_alert, &QDialog::finished, this, [this] {
            m_alert.clear();
            m_vm.clearAlertMessage();
        });
    }
    m_alert->setText(QString::fromStdString(*message));
    m_alert->open();
}

void MainView::resizeEvent(QResizeEvent*) {
    layout()->activate();
    QRect hint(QPoint(), m_hint->sizeHint());
    hint.moveCenter(m_pianoRoll->geometry().center());
    m_hint->setGeometry(hint);
}

} // namespace mossbit
