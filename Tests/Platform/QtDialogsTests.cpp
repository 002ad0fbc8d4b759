#include "Platform/QtDialogs.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProxyStyle>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <string>

namespace mossbit {
namespace {

/// Runs `action` on the dialog that comes up next.
template <typename Dialog>
void whenShown(std::function<void(Dialog&)> action) {
    QTimer::singleShot(0, qApp, [action = std::move(action)] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr)
            return whenShown<Dialog>(action);
        action(*dialog);
    });
}

const Dialogs::Alert discardPrompt = {.message = "Save changes to <b>Song</b> & more?",
                                      .informativeText = "Your <i>changes</i> will be lost.",
                                      .buttons = {"Save", "Discard", "Cancel"}};

/// A desktop that arranges the buttons of dialogs in its own way.
class Desktop : public QProxyStyle {
public:
    explicit Desktop(QDialogButtonBox::ButtonLayout layout) : m_layout(layout) {}

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        return hint == SH_DialogButtonLayout ? m_layout
                                             : QProxyStyle::styleHint(hint, option, widget, data);
    }

private:
    const int m_layout;
};

TEST(QtDialogs, AlertShowsItsWordsAsTheyAre) {
    QtDialogs dialogs;
    QWidget window;
    dialogs.setParentWindow(&window);
    whenShown<QMessageBox>([&](QMessageBox& box) {
        EXPECT_EQ(box.parentWidget(), &window);
        for (QLabel* label : box.findChildren<QLabel*>())
            EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText);
        box.reject();
    });
    dialogs.runAlert(discardPrompt);
}

/// The buttons from the left to the right.
QList<QAbstractButton*> buttonsOf(const QMessageBox& box) {
    QList<QAbstractButton*> buttons = box.buttons();
    std::ranges::sort(buttons, {}, [](const auto* button) { return button->x(); });
    return buttons;
}

TEST(QtDialogs, AlertKeepsTheOrderOfItsButtonsOnEveryDesktop) {
    for (const auto layout : {QDialogButtonBox::WinLayout, QDialogButtonBox::MacLayout,
                              QDialogButtonBox::KdeLayout, QDialogButtonBox::GnomeLayout}) {
        QApplication::setStyle(new Desktop(layout));
        QtDialogs dialogs;
        whenShown<QMessageBox>([](QMessageBox& box) {
            QStringList titles;
            for (const QAbstractButton* button : buttonsOf(box))
                titles += button->text();
            EXPECT_EQ(titles, (QStringList{"Save", "Discard", "Cancel"}));
            box.reject();
        });
        dialogs.runAlert(discardPrompt);
    }
    QApplication::setStyle("fusion");
}

TEST(QtDialogs, AlertTellsWhichButtonWasPressed) {
    const struct {
        std::function<void(QMessageBox&)> answer;
        std::size_t expected;
    } cases[] = {
        {[](QMessageBox& box) { buttonsOf(box)[1]->click(); }, 1},
        {[](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); }, 0},
        {[](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }, 2},
        {[](QMessageBox& box) { box.close(); }, 2},
    };
    for (const auto& [answer, expected] : cases) {
        QtDialogs dialogs;
        whenShown<QMessageBox>(answer);
        EXPECT_EQ(dialogs.runAlert(discardPrompt), expected);
    }
}

/// The file panel with `typed` as its file name, accepted.
void typeAndAccept(const QString& folder, const QString& typed) {
    whenShown<QFileDialog>([=](QFileDialog& panel) {
        auto* name = panel.findChild<QLineEdit*>("fileNameEdit");
        name->setText(QDir(folder).filePath(typed));
        QTest::keyClick(name, Qt::Key_Return);
    });
}

TEST(QtDialogs, SavePanelCompletesTheName) {
    const QTemporaryDir folder;
    const struct {
        FileKind kind;
        const char *typed, *expected;
    } cases[] = {
        {FileKind::project, "new", "new.mossbit"},
        {FileKind::project, "ä song.mossbit", "ä song.mossbit"},
        {FileKind::wav, "new", "new.wav"},
    };
    for (const auto& [kind, typed, expected] : cases) {
        typeAndAccept(folder.path(), QString::fromUtf8(typed));
        EXPECT_EQ(QtDialogs().runSavePanel(kind, "Untitled.mossbit"),
                  folder.filePath(QString::fromUtf8(expected)).toStdString());
    }
}

} // namespace
} // namespace mossbit
