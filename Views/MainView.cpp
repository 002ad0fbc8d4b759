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

namespace mossbit {

namespace {

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

MainView::MainView(ProjectViewModel& vm, QWidget* parent)
    : QWidget(parent),
      m_vm(vm),
      m_transport(new TransportView(vm, m_zoom, this)),
      m_pianoRoll(new PianoRollView(vm, this)),
      m_hint(new Hint(this)) {
    setMinimumSize(minimumExtent);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_transport);
    column->addWidget(new PixelRule(0, 1, this));
    column->addWidget(m_pianoRoll, 1);
    auto* lowerRule = new PixelRule(0, 1, this);
    lowerRule->setBackgroundRole(QPalette::Base);
    column->addWidget(lowerRule);
    column->addWidget(new ChannelBarView(vm, this));
    m_hint->raise();
    m_pianoRoll->setFocus();

    connect(m_transport, &TransportView::zoomRequested, this, &MainView::setZoom);
    connect(m_transport, &TransportView::keyboardReleased, this,
            [this] { m_pianoRoll->setFocus(Qt::OtherFocusReason); });
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
    m_transport->setZoom(zoom);
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

void MainView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    pixels.fill(rect(), Palette::background);
}

} // namespace mossbit
