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

/// The song as assistive tools know it.
struct ToldSong {
    int channel;
    /// In the order in which they sound.
    std::vector<Note> notes;
    ProjectViewModel::Selection selection;

    explicit ToldSong(const ProjectViewModel& model)
        : channel(model.selectedChannelIndex()),
          notes(model.selectedChannel().notes),
          selection(model.selection()) {
        std::ranges::stable_sort(notes, {},
                                 [](const Note& note) { return std::tie(note.start, note.pitch); });
    }
};

std::unordered_map<Uuid, Note> byIdentifier(const std::vector<Note>& notes) {
    std::unordered_map<Uuid, Note> map;
    for (const Note& note : notes)
        map.emplace(note.id, note);
    return map;
}

/// The piano roll: a list of the selected channel's notes. While no assistive tool listens, it
/// looks at the song only when it is asked.
class AccessiblePianoRoll : public QAccessibleWidget {
public:
    explicit AccessiblePianoRoll(PianoRollView& view)
        : QAccessibleWidget(&view, QAccessible::List), m_view(view), m_told(model()) {
        using Model = ProjectViewModel;
        for (const auto signal : {&Model::projectChanged, &Model::selectedChannelIndexChanged,
                                  &Model::selectionChanged})
            QObject::connect(&model(), signal, &m_context, [this] { announceChanges(); });
    }

    ~AccessiblePianoRoll() override { dropChildren(); }

    PianoRollView& view() const { return m_view; }
    ProjectViewModel& model() const { return m_view.viewModel(); }

    const std::vector<Note>& notes() const {
        if (std::exchange(m_isStale, false))
            m_told = ToldSong(model());
        return m_told.notes;
    }

    int childCount() const override { return static_cast<int>(notes().size()); }

    QAccessibleInterface* child(int index) const override {
        return index < 0 || index >= childCount()
                   ? nullptr
                   : interfaceOf(notes()[static_cast<std::size_t>(index)].id);
    }

    int indexOfChild(const QAccessibleInterface* child) const override;

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
    /// Made when an assistive tool asks for it.
    QAccessibleInterface* interfaceOf(const Uuid& note) const;

    void dropChildren() {
        for (const auto& [note, child] : std::exchange(m_children, {}))
            QAccessible::deleteAccessibleInterface(child);
    }

    void announceChanges() {
        m_isStale = m_isStale || !QAccessible::isActive();
        if (m_isStale)
            return;
        ToldSong now(model());
        const bool isOtherChannel = now.channel != m_told.channel;
        const auto notesBefore = byIdentifier(m_told.notes);
        const auto notesNow = byIdentifier(now.notes);
        // Before `m_told` changes, so that tools can still ask for the names of notes that go.
        for (const auto& [id, note] : notesBefore)
            if (!isOtherChannel && !notesNow.contains(id)) {
                send(interfaceOf(id), QAccessible::ObjectDestroyed);
                QAccessible::deleteAccessibleInterface(m_children.extract(id).mapped());
            }
        const ToldSong before = std::exchange(m_told, std::move(now));
        if (isOtherChannel) {
            dropChildren();
            send(this, QAccessible::ObjectReorder);
        }
        for (const Note& note : m_told.notes) {
            const auto known = notesBefore.find(note.id);
            if (known == notesBefore.end() && !isOtherChannel)
                send(interfaceOf(note.id), QAccessible::ObjectCreated);
            else if (known != notesBefore.end() && known->second != note)
                send(interfaceOf(note.id), QAccessible::NameChanged);
            const bool isSelected = m_told.selection.contains(note.id);
            if (isSelected != before.selection.contains(note.id))
                send(interfaceOf(note.id),
                     isSelected ? QAccessible::SelectionAdd : QAccessible::SelectionRemove);
        }
        if (m_told.selection == before.selection || !m_view.hasFocus())
            return;
        if (QAccessibleInterface* const note = focusChild())
            send(note, QAccessible::Focus);
        else if (before.selection.size() == 1)
            send(this, QAccessible::Focus);
    }

    /// Adds a note where the last one ends, so that a melody can be written note by note.
    void addNote() {
        const std::int64_t step = m_view.grid().gridStep;
        Note last{.pitch = m_view.grid().isNoise ? 0 : firstAddedPitch, .start = 0, .length = 0};
        for (const Note& note : notes())
            if (note.start + note.length > last.start + last.length)
                last = note;
        model().addNote(last.pitch, (last.start + last.length + step - 1) / step * step);
    }

    PianoRollView& m_view;
    mutable ToldSong m_told;
    /// `m_told` may be out of date.
    mutable bool m_isStale = false;
    mutable std::unordered_map<Uuid, QAccessible::Id> m_children;
    /// Ends the connections.
    QObject m_context;
};

/// One note.
class AccessibleNote : public QAccessibleObject, public QAccessibleActionInterface {
public:
    AccessibleNote(const AccessiblePianoRoll& roll, const Uuid& id)
        : QAccessibleObject(nullptr), m_roll(roll), m_id(id) {}

    const Uuid& id() const { return m_id; }

    bool isValid() const override { return note() != nullptr; }
    QAccessibleInterface* parent() const override {
        return const_cast<AccessiblePianoRoll*>(&m_roll);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text text) const override {
        const Note* const known = note();
        if (text != QAccessible::Name || !known)
            return {};
        const QStringList words = {pitchName(known->pitch, grid().isNoise), tickName(known->start),
                                   lengthName(known->length)};
        return words.join(QStringLiteral(", "));
    }

    QRect rect() const override {
        const Note* const known = note();
        if (!known)
            return {};
        const QRect rect = m_roll.view().visibleNoteRect(*known).toAlignedRect();
        return {m_roll.view().viewport()->mapToGlobal(rect.topLeft()), rect.size()};
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        const Note* const known = note();
        state.invalid = !known;
        if (!known)
            return state;
        const PianoRollView& view = m_roll.view();
        state.selectable = true;
        state.selected = m_roll.model().selection().contains(m_id);
        state.focusable = true;
        state.focused = m_roll.focusChild() == this;
        state.offscreen = !view.visibleNoteRect(*known).intersects(view.viewport()->rect());
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override {
        QStringList names = {pressAction(), deleteAction};
        for (const NoteStep& step : noteSteps)
            names += QLatin1String(step.name);
        return names;
    }

    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    void doAction(const QString& name) override {
        const Note* const known = note();
        if (!known)
            return;
        if (name == pressAction())
            return m_roll.model().setSelection({m_id});
        // Deleting the note destroys this object, so the identifier is copied first.
        if (name == deleteAction)
            return m_roll.model().deleteNote(Uuid(m_id));
        for (const NoteStep& step : noteSteps)
            if (name == QLatin1String(step.name))
                change(Note(*known), step);
    }

private:
    const PianoRollGeometry& grid() const { return m_roll.view().grid(); }

    const Note* note() const {
        const auto found = std::ranges::find(m_roll.notes(), m_id, &Note::id);
        return found == m_roll.notes().end() ? nullptr : &*found;
    }

    void change(const Note& origin, const NoteStep& step) {
        const double stepWidth = grid().cellWidth * static_cast<double>(grid().gridStep);
        // Clamped like a drag by one step.
        const auto place =
            grid().moved(origin, {step.ticks * stepWidth, step.rows * grid().rowHeight});
        const std::int64_t length =
            grid().resizedLength(origin, grid().noteRect(origin).right() + step.length * stepWidth);
        Note changed = origin;
        if (step.rows != 0)
            changed.pitch = place.pitch;
        if (step.ticks != 0)
            changed.start = place.tick;
        // A note shorter than a step would get longer.
        if (step.length > 0 || (step.length < 0 && length < origin.length))
            changed.length = length;
        if (changed == origin)
            return;
        m_roll.model().pushUndo();
        m_roll.model().updateNote(
            m_id, {.pitch = changed.pitch, .start = changed.start, .length = changed.length});
    }

    const AccessiblePianoRoll& m_roll;
    const Uuid m_id;
};

int AccessiblePianoRoll::indexOfChild(const QAccessibleInterface* child) const {
    const auto* note = dynamic_cast<const AccessibleNote*>(child);
    const auto found = note ? std::ranges::find(notes(), note->id(), &Note::id) : notes().end();
    return found == notes().end() ? -1 : static_cast<int>(found - notes().begin());
}

QAccessibleInterface* AccessiblePianoRoll::interfaceOf(const Uuid& note) const {
    auto [child, isNew] = m_children.try_emplace(note);
    if (isNew)
        child->second = QAccessible::registerAccessibleInterface(new AccessibleNote(*this, note));
    return QAccessible::accessibleInterface(child->second);
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
