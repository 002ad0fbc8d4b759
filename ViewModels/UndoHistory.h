#pragma once

#include "Models/Project.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace mossbit {

/// Whole projects to go back and forth between: 200 of a full song take 10 MB.
class UndoHistory {
public:
    static constexpr std::size_t undoLimit = 200;

    bool canUndo() const { return !m_undoStack.empty(); }
    bool canRedo() const { return !m_redoStack.empty(); }

    /// Records `project` as the state to come back to. Past the limit the oldest one goes.
    void push(const Project& project) {
        m_undoStack.push_back(project);
        if (m_undoStack.size() > undoLimit)
            m_undoStack.erase(m_undoStack.begin());
        m_redoStack.clear();
    }

    /// Exchanges `project` for the state before it. Call only if there is one.
    void undo(Project& project) { travel(project, m_undoStack, m_redoStack); }
    /// Exchanges `project` for the state that was undone last. Call only if there is one.
    void redo(Project& project) { travel(project, m_redoStack, m_undoStack); }

private:
    static void travel(Project& project, std::vector<Project>& from, std::vector<Project>& to) {
        to.push_back(std::exchange(project, std::move(from.back())));
        from.pop_back();
    }

    /// The latest state last.
    std::vector<Project> m_undoStack;
    std::vector<Project> m_redoStack;
};

} // namespace mossbit
