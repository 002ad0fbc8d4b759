#include "App/AppDelegate.h"

#include "App/FilePaths.h"
#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileOpenEvent>

namespace mossbit {
namespace {

/// A delegate beside a document that starts empty.
struct Launch {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> vm = harness.start();
    int activations = 0;
    AppDelegate delegate{[this] { ++activations; }};
    std::filesystem::path one = harness.store("one.mossbit", song().note(60, 0, 4));
    std::filesystem::path two = harness.store("two.mossbit", song().note(61, 0, 4));
};

TEST(AppDelegate, OpensTheFirstFileOfARequest) {
    Launch launch;
    launch.delegate.setViewModel(*launch.vm);
    launch.delegate.open({});
    EXPECT_EQ(launch.vm->fileURL(), std::nullopt);
    EXPECT_EQ(launch.activations, 0);
    launch.delegate.open({launch.one, launch.two});
    EXPECT_EQ(launch.vm->fileURL(), launch.one);
    EXPECT_EQ(launch.activations, 1);
}

TEST(AppDelegate, HoldsFilesUntilTheWindowHasAppeared) {
    Launch launch;
    launch.delegate.open({launch.one});
    launch.delegate.open({launch.two});
    EXPECT_EQ(launch.vm->fileURL(), std::nullopt);
    launch.delegate.setViewModel(*launch.vm);
    EXPECT_EQ(launch.vm->fileURL(), launch.two);
}

TEST(AppDelegate, ReplacesNoUnsavedWorkUnasked) {
    Launch launch;
    launch.delegate.setViewModel(*launch.vm);
    launch.vm->addNote(70, 0);
    launch.delegate.open({launch.one});
    EXPECT_EQ(launch.harness.dialogs.takeShown(),
              std::vector<std::string>{"alert Save changes to Untitled?"});
    EXPECT_EQ(launch.vm->fileURL(), std::nullopt);
    launch.harness.dialogs.alertAnswers = {1};
    launch.delegate.open({launch.one});
    EXPECT_EQ(launch.vm->fileURL(), launch.one);
}

TEST(AppDelegate, OpensFilesThatComeAsEvents) {
    Launch launch;
    launch.delegate.setViewModel(*launch.vm);
    qApp->installEventFilter(&launch.delegate);
    QFileOpenEvent event(QUrl::fromLocalFile(toQString(launch.two)));
    QCoreApplication::sendEvent(qApp, &event);
    EXPECT_EQ(launch.vm->fileURL(), launch.two);
}

TEST(AppDelegate, SavesWhatIsPendingOnceAtTheEnd) {
    Launch launch;
    launch.delegate.applicationWillTerminate();
    launch.delegate.setViewModel(*launch.vm);
    launch.vm->addNote(70, 0);
    launch.delegate.applicationWillTerminate();
    const std::size_t writes = launch.harness.files.written.size();
    EXPECT_EQ(ProjectStore::read(launch.harness.autosave), launch.vm->project());
    launch.delegate.applicationWillTerminate();
    EXPECT_EQ(launch.harness.files.written.size(), writes);
}

TEST(AppDelegate, OffersTheFileThatIsMeant) {
    const ScratchFolder folder;
    const QString scratch = toQString(folder.path());
    const QString before = QDir::currentPath();
    QDir::setCurrent(scratch);
    putBytes(folder / "file:odd", "");
    const struct {
        QString text;
        std::string expected;
    } cases[] = {
        {"a b.mossbit", (folder / "a b.mossbit").string()},
        {scratch + "/ä#%20?.mossbit", (folder / "ä#%20?.mossbit").string()},
        {"file://" + scratch + "/a%20%C3%A4.mossbit", (folder / "a ä.mossbit").string()},
        {"file:odd", (folder / "file:odd").string()},
        {"-x", (folder / "-x").string()},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(handedOverPath(text), expected) << text.toStdString();
    QDir::setCurrent(before);
}

} // namespace
} // namespace mossbit
