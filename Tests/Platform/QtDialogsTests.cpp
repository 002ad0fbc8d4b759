#include "Platform/QtDialogs.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
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

QAbstractButton* buttonTitled(const QMessageBox& box, const QString& title) {
    const auto buttons = box.buttons();
    const auto found = std::find_if(buttons.begin(), buttons.end(),
                                    [&](const auto* button) { return button->text() == title; });
    return found == buttons.end() ? nullptr : *found;
}

TEST(QtDialogs, AlertShowsItsWordsAsTheyAre) {
    QtDialogs dialogs;
    QWidget window;
    dialogs.setParentWindow(&window);
    whenShown<QMessageBox>([&](QMessageBox& box) {
        EXPECT_EQ(box.parentWidget(), &window);
        for (QLabel* label : box.findChildren<QLabel*>()) {
            EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText)
                << label->text().toStdString();
        }
        EXPECT_EQ(box.text().toStdString(), discardPrompt.message);
        EXPECT_EQ(box.informativeText().toStdString(), discardPrompt.informativeText);
        box.reject();
    });
    dialogs.runAlert(discardPrompt);
}

TEST(QtDialogs, AlertKeepsTheOrderOfItsButtonsOnEveryDesktop) {
    for (const auto layout : {QDialogButtonBox::WinLayout, QDialogButtonBox::MacLayout,
                              QDialogButtonBox::KdeLayout, QDialogButtonBox::GnomeLayout}) {
        QApplication::setStyle(new Desktop(layout));
        QtDialogs dialogs;
        whenShown<QMessageBox>([](QMessageBox& box) {
            QList<QAbstractButton*> buttons = box.buttons();
            std::sort(buttons.begin(), buttons.end(),
                      [](const auto* one, const auto* other) { return one->x() < other->x(); });
            ASSERT_EQ(buttons.size(), 3);
            for (int index = 0; index < 3; ++index)
                EXPECT_EQ(buttons[index]->text().toStdString(),
                          discardPrompt.buttons[static_cast<std::size_t>(index)]);
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
        {[](QMessageBox& box) { buttonTitled(box, "Save")->click(); }, 0},
        {[](QMessageBox& box) { buttonTitled(box, "Discard")->click(); }, 1},
        {[](QMessageBox& box) { buttonTitled(box, "Cancel")->click(); }, 2},
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
        const char* typed;
        const char* expected;
    } cases[] = {
        {FileKind::project, "new", "new.mossbit"},
        {FileKind::project, "ä song.mossbit", "ä song.mossbit"},
        {FileKind::wav, "new", "new.wav"},
    };
    for (const auto& [kind, typed, expected] : cases) {
        QtDialogs dialogs;
        typeAndAccept(folder.path(), QString::fromUtf8(typed));
        const auto chosen = dialogs.runSavePanel(kind, "Untitled.mossbit");
        ASSERT_TRUE(chosen);
        EXPECT_EQ(chosen->filename().string(), expected);
        EXPECT_EQ(chosen->parent_path().string(), folder.path().toStdString());
    }
}

TEST(QtDialogs, SavePanelProposesTheName) {
    QtDialogs dialogs;
    whenShown<QFileDialog>([](QFileDialog& panel) {
        EXPECT_EQ(panel.findChild<QLineEdit*>("fileNameEdit")->text(), "my.song.mossbit");
        panel.reject();
    });
    EXPECT_EQ(dialogs.runSavePanel(FileKind::project, "my.song.mossbit"), std::nullopt);
}

TEST(QtDialogs, OpenPanelTakesFilesOfAnyKindButNoFolders) {
    const QTemporaryDir folder;
    QFile file(folder.filePath("notes.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    QtDialogs dialogs;
    typeAndAccept(folder.path(), "notes.txt");
    EXPECT_EQ(dialogs.runOpenPanel(), file.fileName().toStdString());

    whenShown<QFileDialog>([&](QFileDialog& panel) {
        auto* name = panel.findChild<QLineEdit*>("fileNameEdit");
        name->setText(folder.path());
        QTest::keyClick(name, Qt::Key_Return);
        EXPECT_TRUE(panel.isVisible());
        panel.reject();
    });
    EXPECT_EQ(dialogs.runOpenPanel(), std::nullopt);
}

} // namespace
} // namespace mossbit
