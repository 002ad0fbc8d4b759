#include "Views/PianoRollAccessibility.h"

#include "Views/NoteNames.h"
#include "Views/PianoRollView.h"

#include <QAccessibleWidget>

#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace mossbit {

namespace {

class AccessiblePianoRoll;

constexpr std::int64_t firstAddedPitch = 72;

void send(QAccessibleInterface* what, QAccessible::Event type) {
    QAccessibleEvent event(what, type);
    QAccessible::updateAccessibility(&event);
}

/// An action that changes a note, in steps of the grid.
struct NoteStep {
    const char* name;
    int ticks;
    int rows;
    int length;
};

constexpr NoteStep noteSteps[] = {{"Up", 0, -1, 0},   {"Down", 0, 1, 0},   {"Earlier", -1, 0, 0},
                                  {"Later", 1, 0, 0}, {"Longer", 0, 0, 1}, {"Shorter", 0, 0, -1}};
constexpr QLatin1String deleteAction("Delete");
constexpr QLatin1String addAction("Add note");

/// One note, made when an assistive tool asks for it.
class AccessibleNote : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    AccessibleNote(AccessiblePianoRoll& roll, PianoRollView& view, const Uuid& id)
        : m_roll(roll), m_view(view), m_id(id) {}

    const Uuid& id() const { return m_id; }

    bool isValid() const override { return note() != nullptr; }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    void setText(QAccessible::Text, const QString&) override {}
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QString text(QAccessible::Text text) const override;
    QRect rect() const override;
    QAccessible::State state() const override;

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override;
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& name) override;

private:
    const Note* note() const;
    void change(const Note& origin, const NoteStep& step);

    AccessiblePianoRoll& m_roll;
    PianoRollView& m_view;
    const Uuid m_id;
};

/// The piano roll: a list of the selected channel's notes in the order in which they sound. While
/// no assistive tool listens, it looks at the song only when it is asked.
class AccessiblePianoRoll : public QAccessibleWidget {
public:
    explicit AccessiblePianoRoll(PianoRollView& view)
        : QAccessibleWidget(&view, QAccessible::List),
          m_view(view),
          m_channel(model().selectedChannelIndex()),
          m_notes(soundingNotes()),
          m_selection(model().selection()) {
        QObject::connect(&model(), &ProjectViewModel::projectChanged, &m_context,
                         [this] { followProject(); });
        QObject::connect(&model(), &ProjectViewModel::selectedChannelIndexChanged, &m_context,
                         [this] { followProject(); });
        QObject::connect(&model(), &ProjectViewModel::selectionChanged, &m_context,
                         [this] { followSelection(); });
    }

    ~AccessiblePianoRoll() override { dropChildren(); }

    ProjectViewModel& model() const { return m_view.viewModel(); }
    const std::vector<Note>& notes() const {
        if (std::exchange(m_isStale, false)) {
            m_channel = model().selectedChannelIndex();
            m_notes = soundingNotes();
            m_selection = model().selection();
        }
        return m_notes;
    }

    int childCount() const override { return static_cast<int>(notes().size()); }

    QAccessibleInterface* child(int index) const override {
        return index < 0 || index >= childCount()
                   ? nullptr
                   : interfaceOf(notes()[static_cast<std::size_t>(index)].id);
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* note = dynamic_cast<const AccessibleNote*>(child);
        const auto found = std::find_if(notes().begin(), notes().end(),
                                        [&](const Note& n) { return note && n.id == note->id(); });
        return found == notes().end() ? -1 : static_cast<int>(found - notes().begin());
    }

    /// The only note that is selected: what a screen reader follows and speaks of.
    QAccessibleInterface* focusChild() const override {
        const ProjectViewModel::Selection& selection = model().selection();
        return m_view.hasFocus() && selection.size() == 1 ? interfaceOf(*selection.begin())
                                                          : nullptr;
    }

    QAccessibleInterface* childAt(int x, int y) const override {
        const QPointF point = m_view.viewport()->mapFromGlobal(QPointF(x, y));
        const Note* note =
            m_view.viewport()->rect().contains(point.toPoint())
                ? m_view.grid().noteAt(m_view.toGrid(point), model().selectedChannel().notes)
                : nullptr;
        return note ? interfaceOf(note->id) : nullptr;
    }

    QStringList actionNames() const override {
        return QAccessibleWidget::actionNames() << addAction;
    }

    void doAction(const QString& name) override {
        if (name == addAction)
            addNote();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    std::vector<Note> soundingNotes() const {
        std::vector<Note> notes = model().selectedChannel().notes;
        std::stable_sort(notes.begin(), notes.end(), [](const Note& a, const Note& b) {
            return std::tie(a.start, a.pitch) < std::tie(b.start, b.pitch);
        });
        return notes;
    }

    QAccessibleInterface* interfaceOf(const Uuid& note) const {
        auto [child, isNew] = m_children.try_emplace(note);
        if (isNew)
            child->second = QAccessible::registerAccessibleInterface(
                new AccessibleNote(const_cast<AccessiblePianoRoll&>(*this), m_view, note));
        return QAccessible::accessibleInterface(child->second);
    }

    void dropChildren() {
        for (const auto& [note, child] : std::exchange(m_children, {}))
            QAccessible::deleteAccessibleInterface(child);
    }

    void followProject() {
        m_isStale = m_isStale || !QAccessible::isActive();
        if (m_isStale)
            return;
        std::vector<Note> now = soundingNotes();
        if (std::exchange(m_channel, model().selectedChannelIndex()) !=
            model().selectedChannelIndex()) {
            m_notes = std::move(now);
            dropChildren();
            send(this, QAccessible::ObjectReorder);
            return;
        }
        std::unordered_map<Uuid, Note> gone;
        for (const Note& note : m_notes)
            gone.emplace(note.id, note);
        std::vector<std::pair<Uuid, QAccessible::Event>> news;
        for (const Note& note : now) {
            const auto before = gone.extract(note.id);
            if (!before)
                news.emplace_back(note.id, QAccessible::ObjectCreated);
            else if (before.mapped() != note)
                news.emplace_back(note.id, QAccessible::NameChanged);
        }
        // While they still can be asked what they are.
        for (const auto& [id, note] : gone) {
            send(interfaceOf(id), QAccessible::ObjectDestroyed);
            QAccessible::deleteAccessibleInterface(m_children.extract(id).mapped());
        }
        m_notes = std::move(now);
        for (const auto& [id, event] : news)
            send(interfaceOf(id), event);
    }

    void followSelection() {
        if (!QAccessible::isActive() || m_isStale) {
            m_isStale = true;
            return;
        }
        const auto before = std::exchange(m_selection, model().selection());
        for (const Note& note : m_notes) {
            const bool isSelected = m_selection.contains(note.id);
            if (isSelected != before.contains(note.id))
                send(interfaceOf(note.id),
                     isSelected ? QAccessible::SelectionAdd : QAccessible::SelectionRemove);
        }
        QAccessibleInterface* const note = focusChild();
        if (note || (before.size() == 1 && m_view.hasFocus()))
            send(note ? note : this, QAccessible::Focus);
    }

    /// Where the last one ends, so that a melody can be written note by note.
    void addNote() {
        const std::int64_t step = m_view.grid().gridStep;
        Note last{.pitch = m_view.grid().isNoise ? 0 : firstAddedPitch, .start = 0, .length = 0};
        for (const Note& note : notes())
            if (note.start + note.length > last.start + last.length)
                last = note;
        model().addNote(last.pitch, (last.start + last.length + step - 1) / step * step);
    }

    PianoRollView& m_view;
    mutable int m_channel;
    /// As assistive tools know them.
    mutable std::vector<Note> m_notes;
    mutable ProjectViewModel::Selection m_selection;
    /// Notes and selection may have changed since.
    mutable bool m_isStale = false;
    mutable std::unordered_map<Uuid, QAccessible::Id> m_children;
    /// Ends the connections.
    QObject m_context;
};

const Note* AccessibleNote::note() const {
    const std::vector<Note>& notes = m_roll.notes();
    const auto found =
        std::find_if(notes.begin(), notes.end(), [this](const Note& n) { return n.id == m_id; });
    return found == notes.end() ? nullptr : &*found;
}

QAccessibleInterface* AccessibleNote::parent() const {
    return &m_roll;
}

QString AccessibleNote::text(QAccessible::Text text) const {
    const Note* const known = note();
    if (text != QAccessible::Name || !known)
        return {};
    const QStringList words = {pitchName(known->pitch, m_view.grid().isNoise),
                               tickName(known->start), lengthName(known->length)};
    return words.join(QStringLiteral(", "));
}

QRect AccessibleNote::rect() const {
    const Note* const known = note();
    if (!known)
        return {};
    const QRect rect = m_view.visibleNoteRect(*known).toAlignedRect();
    return {m_view.viewport()->mapToGlobal(rect.topLeft()), rect.size()};
}

QAccessible::State AccessibleNote::state() const {
    QAccessible::State state;
    const Note* const known = note();
    state.invalid = !known;
    if (!known)
        return state;
    state.selectable = true;
    state.selected = m_roll.model().selection().contains(m_id);
    state.focusable = true;
    state.focused = m_roll.focusChild() == this;
    state.offscreen = !m_view.visibleNoteRect(*known).intersects(m_view.viewport()->rect());
    return state;
}

QStringList AccessibleNote::actionNames() const {
    QStringList names = {pressAction(), deleteAction};
    for (const NoteStep& step : noteSteps)
        names += QLatin1String(step.name);
    return names;
}

void AccessibleNote::doAction(const QString& name) {
    const Note* const known = note();
    if (!known)
        return;
    if (name == pressAction())
        return m_roll.model().setSelection({m_id});
    // With the note goes this object, and its identifier.
    if (name == deleteAction)
        return m_roll.model().deleteNote(Uuid(m_id));
    for (const NoteStep& step : noteSteps)
        if (name == QLatin1String(step.name))
            change(Note(*known), step);
}

void AccessibleNote::change(const Note& origin, const NoteStep& step) {
    const PianoRollGeometry& grid = m_view.grid();
    const double stepWidth = grid.cellWidth * static_cast<double>(grid.gridStep);
    Note changed = origin;
    // As far as a drag by that much goes.
    const auto place = grid.moved(origin, {step.ticks * stepWidth, step.rows * grid.rowHeight});
    if (step.rows != 0)
        changed.pitch = place.pitch;
    if (step.ticks != 0)
        changed.start = place.tick;
    const double end = grid.noteRect(origin).right() + step.length * stepWidth;
    if (step.length > 0)
        changed.length = grid.resizedLength(origin, end);
    if (step.length < 0)
        changed.length = std::min(grid.resizedLength(origin, end), origin.length);
    if (changed == origin)
        return;
    m_roll.model().pushUndo();
    m_roll.model().updateNote(
        m_id, {.pitch = changed.pitch, .start = changed.start, .length = changed.length});
}

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    auto* view = qobject_cast<PianoRollView*>(object);
    return view ? new AccessiblePianoRoll(*view) : nullptr;
}

} // namespace

void installPianoRollAccessibility() {
    QAccessible::installFactory(makeInterface);
}

} // namespace mossbit
