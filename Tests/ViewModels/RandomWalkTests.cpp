#include "Tests/Support/ViewModelHarness.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <random>

namespace mossbit {
namespace {

/// Does to a view model what a restless user does, and keeps its own plain account of the history.
class Walk {
public:
    explicit Walk(unsigned seed) : m_random(seed), m_model(m_harness.start(Project())) {}

    void step() {
        const std::function<void()> others[] = {
            [this] { move(-1); }, [this] { move(1); },
            [this] { m_model->setSelectedChannelIndex(static_cast<int>(roll(0, 3))); },
            [this] { m_model->selectAll(); }, [this] { saveOrReopen(); }};
        const auto choice = static_cast<std::size_t>(roll(0, 24));
        if (choice < std::size(others))
            others[choice]();
        else if (edit())
            record();
    }

    void check() {
        for (const Channel& channel : project().channels)
            for (const Note& note : channel.notes)
                ASSERT_TRUE(note.start >= 0 && note.length >= 1 &&
                            note.start + note.length <= project().totalTicks());
        for (const Uuid& id : m_model->selection())
            ASSERT_TRUE(m_model->note(id));
        ASSERT_EQ(project(), m_history[m_place]);
        ASSERT_EQ(m_model->canUndo(), m_place > 0);
        ASSERT_EQ(m_model->canRedo(), m_place + 1 < m_history.size());
    }

    /// All the way back and forth again, comparing every state.
    void checkHistory() {
        for (const int direction : {-1, 1})
            for (std::size_t steps = m_history.size(); steps > 0; --steps) {
                move(direction);
                check();
            }
    }

private:
    const Project& project() const { return m_model->project(); }

    std::int64_t roll(std::int64_t low, std::int64_t high) {
        return std::uniform_int_distribution<std::int64_t>(low, high)(m_random);
    }

    template <typename Options>
    auto oneOf(const Options& options) {
        return options[static_cast<std::size_t>(roll(0, std::ssize(options) - 1))];
    }

    Uuid someNote() {
        const auto& notes = m_model->selectedChannel().notes;
        return notes.empty() || roll(0, 9) == 0 ? Uuid::random() : oneOf(notes).id;
    }

    std::int64_t somePitch() {
        return m_model->selectedChannelIndex() == 3 ? roll(0, 3) : roll(36, 96);
    }

    /// Returns whether it left an undo step.
    bool edit() {
        const Project before = project();
        const int channel = static_cast<int>(roll(0, 3));
        bool alwaysLeavesStep = false;
        const std::function<void()> edits[] = {
            [&] { m_model->setTempo(roll(0, 400)); },
            [&] { m_model->setBars(roll(0, 17)); },
            [&] { m_model->setGrid(oneOf(allGridDivisions)); },
            [&] { m_model->setVolume(roll(-3, 20), channel); },
            [&] { m_model->setDuty(oneOf(allDuties), channel); },
            [&] { m_model->setWavePreset(oneOf(allWavePresets), channel); },
            [&] { roll(0, 1) == 0 ? m_model->toggleLoop() : m_model->toggleMute(channel); },
            [&] {
                if (roll(0, 4) == 0)
                    m_model->deleteSelection();
            },
            [&] {
                alwaysLeavesStep = true;
                roll(0, 1) == 0 ? m_model->deleteNote(someNote()) : drag(someNote());
            },
            [&] { m_model->addNote(somePitch(), roll(-5, 300)); }};
        // Adding is the likeliest, or there would soon be nothing left.
        edits[std::min(static_cast<std::size_t>(roll(0, 11)), std::size(edits) - 1)]();
        return alwaysLeavesStep || project() != before;
    }

    void drag(const Uuid& id) {
        m_model->pushUndo();
        for (int movement = 0; movement < 5; ++movement) {
            const std::int64_t start = roll(0, project().totalTicks() - 1);
            m_model->updateNote(id, {.pitch = somePitch(),
                                     .start = start,
                                     .length = roll(1, project().totalTicks() - start)});
        }
    }

    void saveOrReopen() {
        const auto file = m_harness.folder / "walk.mossbit";
        if (roll(0, 4) == 0) {
            m_harness.dialogs.saveAnswers = {file};
            m_model->saveAs();
            ASSERT_EQ(ProjectStore::read(file), project());
        } else if (roll(0, 9) == 0 && m_model->fileURL()) {
            m_harness.pass(1);
            const Project saved = project();
            m_model->open(file);
            ASSERT_EQ(project(), saved);
            m_history = {saved};
            m_place = 0;
        }
    }

    void move(int direction) {
        direction < 0 ? m_model->undo() : m_model->redo();
        if (direction < 0 ? m_place > 0 : m_place + 1 < m_history.size())
            m_place = m_place + static_cast<std::size_t>(direction);
    }

    void record() {
        m_history.resize(m_place + 1);
        m_history.push_back(project());
        if (m_history.size() > UndoHistory::undoLimit + 1)
            m_history.pop_front();
        m_place = m_history.size() - 1;
    }

    std::mt19937 m_random;
    ViewModelHarness m_harness;
    std::unique_ptr<ProjectViewModel> m_model;
    /// Every state that can be reached, and which of them is shown.
    std::deque<Project> m_history = {project()};
    std::size_t m_place = 0;
};

TEST(RandomWalk, KeepsItsPromises) {
    for (const unsigned seed : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE(seed);
        Walk walk(seed);
        for (int step = 1; step <= 4000 && !testing::Test::HasFatalFailure(); ++step) {
            walk.step();
            walk.check();
            if (step % 500 == 0)
                walk.checkHistory();
        }
    }
}

} // namespace
} // namespace mossbit
