#include "Views/TempoControl.h"

#include "UI/PixelButton.h"
#include "UI/PixelCaption.h"
#include "UI/PixelPainter.h"
#include "UI/PixelRow.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <optional>

namespace mossbit {

namespace {

// Points.
constexpr int spacing = 6;
constexpr int numberWidth = 46;
constexpr int numberHeight = 24;
constexpr int numberSize = 13;
constexpr int fieldPadding = 3;

/// A whole number with an optional sign, spaces around it ignored.
std::optional<std::int64_t> parseTempo(const QString& text) {
    static const QRegularExpression whole(QStringLiteral(R"(^\h*([+-]?[0-9]+)\h*\z)"));
    bool isNumber = false;
    const qlonglong value = whole.match(text).captured(1).toLongLong(&isNumber);
    return isNumber ? std::optional<std::int64_t>(value) : std::nullopt;
}

/// The entry field for a tempo, which leaves the menus their keys.
class TempoField : public QLineEdit {
public:
    explicit TempoField(QWidget* parent) : QLineEdit(parent) {
        setAccessibleName(tr("Tempo in beats per minute"));
        setFrame(false);
        setAlignment(Qt::AlignCenter);
        // A file dropped on the window is to be opened, wherever it lands.
        setAcceptDrops(false);
        setFont(fixedFont(numberSize));
        // Where the number was.
        setTextMargins(0, 1, 0, 0);
        setFixedSize(numberWidth, QFontMetrics(font()).height() + 2 * fieldPadding);
    }

protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::ShortcutOverride) {
            const auto& key = *static_cast<QKeyEvent*>(event);
            static constexpr std::array own = {Qt::Key_A,  Qt::Key_C,    Qt::Key_X,
                                               Qt::Key_V,  Qt::Key_Left, Qt::Key_Right,
                                               Qt::Key_Up, Qt::Key_Down};
            const bool isOwn = std::ranges::find(own, key.key()) != own.end();
            if ((key.modifiers() & Qt::ControlModifier) && !isOwn) {
                event->ignore();
                return false;
            }
        }
        return QLineEdit::event(event);
    }

    void contextMenuEvent(QContextMenuEvent* event) override {
        QMenu* const menu = createStandardContextMenu();
        menu->setAttribute(Qt::WA_DeleteOnClose);
        // Undo and Redo, with the separator after them: their keys undo changes of the song.
        for (int i = 0; i < 3; ++i)
            menu->removeAction(menu->actions().first());
        menu->popup(event->globalPos());
    }

    void paintEvent(QPaintEvent* event) override {
        QLineEdit::paintEvent(event);
        QPainter painter(this);
        PixelPainter pixels(painter);
        pixels.pixelBorder(rect(), Palette::accent(ChannelKind::pulse1));
    }
};

} // namespace

/// The tempo, which a click lets type.
class TempoNumber : public PixelButton {
public:
    using PixelButton::PixelButton;

    std::int64_t tempo() const { return m_tempo; }

    void setTempo(std::int64_t tempo) {
        m_tempo = tempo;
        setAccessibleName(TempoControl::tr("Tempo %1").arg(tempo));
        update();
    }

    QSize sizeHint() const override { return {numberWidth, numberHeight}; }

    void draw(PixelPainter& pixels, const QRectF& face) const override {
        pixels.text(QString::number(m_tempo), pixelLabel(numberSize, Palette::text), face.center(),
                    Qt::AlignHCenter);
    }

private:
    std::int64_t m_tempo = 0;
};

TempoControl::TempoControl(ProjectViewModel& vm, QWidget* parent) : QWidget(parent), m_vm(vm) {
    // In reading order, which Tab and assistive tools follow.
    auto* caption = new PixelCaption(tr("BPM"), pixelLabel(10, Palette::textDim), this);
    auto* slower = new PixelButton({.icon = &PixelGlyph::minus}, tr("Decrease tempo"),
                                   tr("Decrease tempo"), this);
    m_number = new TempoNumber({}, {}, tr("Click to type a tempo (40–300)"), this);
    m_field = new TempoField(this);
    auto* faster = new PixelButton({.icon = &PixelGlyph::plus}, tr("Increase tempo"),
                                   tr("Increase tempo"), this);
    m_number->setCursor(Qt::IBeamCursor);
    m_field->hide();

    setLayout(new PixelRow(spacing, {caption, slower, m_number, m_field, faster}));

    connect(slower, &QAbstractButton::clicked, this,
            [this] { m_vm.setTempo(m_vm.project().tempo - 1); });
    connect(faster, &QAbstractButton::clicked, this,
            [this] { m_vm.setTempo(m_vm.project().tempo + 1); });
    connect(m_number, &QAbstractButton::clicked, this, &TempoControl::beginEditing);
    connect(m_field, &QLineEdit::returnPressed, this, &TempoControl::commitTempo);
    connect(qApp, &QApplication::focusChanged, this, &TempoControl::followFocus);
    connect(&vm, &ProjectViewModel::projectChanged, this, &TempoControl::showProject);
    connect(&vm, &ProjectViewModel::typedTextNeeded, this, &TempoControl::commitTempo);
    // What was typed was meant for the song that is gone.
    connect(&vm, &ProjectViewModel::documentReplaced, this, &TempoControl::close);
    showProject();
}

// The focus changes while the children are destroyed, when this object is no longer whole.
TempoControl::~TempoControl() {
    disconnect(qApp, nullptr, this, nullptr);
}

void TempoControl::showProject() {
    const std::int64_t tempo = m_vm.project().tempo;
    if (tempo == m_number->tempo())
        return;
    m_number->setTempo(tempo);
    // What nobody has typed must not be committed over the new tempo.
    if (editingTempo() && !m_field->isModified())
        fillField();
}

void TempoControl::fillField() {
    m_field->setText(QString::number(m_number->tempo()));
    m_field->selectAll();
}

void TempoControl::beginEditing() {
    if (editingTempo())
        return;
    fillField();
    m_openedByKeyboard = m_number->hasFocus();
    m_field->show();
    m_field->setFocus(Qt::OtherFocusReason);
    m_number->hide();
    m_vm.setEditingText(true);
}

bool TempoControl::editingTempo() const {
    return !m_field->isHidden();
}

void TempoControl::commitTempo() {
    if (!editingTempo())
        return;
    if (const auto tempo = parseTempo(m_field->text()))
        m_vm.setTempo(*tempo);
    close();
}

/// Commits once the focus is elsewhere in the window. An open menu, a dialog or another program has
/// it only for a while.
void TempoControl::followFocus(const QWidget*, const QWidget* widget) {
    if (widget && widget != m_field && widget->window() == window() &&
        !qobject_cast<const QMenuBar*>(widget))
        commitTempo();
}

void TempoControl::keyPressEvent(QKeyEvent* event) {
    // The field passes on what it does not know.
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

void TempoControl::close() {
    if (!editingTempo())
        return;
    // Not `hasFocus`: the window may be inactive, behind a dialog.
    const bool hadFocus = window()->focusWidget() == m_field;
    m_field->clearFocus();
    m_field->hide();
    m_number->show();
    if (hadFocus && m_openedByKeyboard)
        m_number->setFocus(Qt::TabFocusReason);
    m_vm.setEditingText(false);
}

} // namespace mossbit
