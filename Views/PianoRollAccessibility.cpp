#include "Views/PianoRollAccessibility.h"

#include "Views/DisplayNames.h"
#include "Views/PianoRollView.h"

#include <QAccessibleWidget>
#include <QScrollBar>

#include <algorithm>
#include <unordered_map>

namespace mossbit {

namespace {

class AccessiblePianoRoll;

/// One note, made when an assistive tool asks for it. It outlives the note and then is invalid.
class AccessibleNote : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    AccessibleNote(const AccessiblePianoRoll& roll, PianoRollView& view, const Uuid& id)
        : m_roll(roll), m_view(view), m_id(id) {}

    const Uuid& noteId() const { return m_id; }

    bool isValid() const override { return m_view.viewModel().note(m_id).has_value(); }
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
    QStringList actionNames() const override { return {pressAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }
    void doAction(const QString& name) override {
        if (name == pressAction() && isValid())
            m_view.viewModel().setSelection({m_id});
    }

private:
    const AccessiblePianoRoll& m_roll;
    PianoRollView& m_view;
    const Uuid m_id;
};

/// The piano roll: a list of the selected channel's notes, and after them its scroll bars.
class AccessiblePianoRoll : public QAccessibleWidget {
public:
    static constexpr int scrollBarCount = 2;

    explicit AccessiblePianoRoll(PianoRollView& view)
        : QAccessibleWidget(&view, QAccessible::List), m_view(view) {}

    ~AccessiblePianoRoll() override {
        for (const auto& [note, interfaceId] : m_children)
            QAccessible::deleteAccessibleInterface(interfaceId);
    }

    int childCount() const override { return noteCount() + scrollBarCount; }

    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        const int bar = index - noteCount();
        if (bar >= 0)
            return QAccessible::queryAccessibleInterface(scrollBarHolder(bar));
        return interfaceOf(notes()[static_cast<std::size_t>(index)].id);
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        if (const auto* note = dynamic_cast<const AccessibleNote*>(child)) {
            const auto found = std::find_if(notes().begin(), notes().end(),
                                            [&](const Note& n) { return n.id == note->noteId(); });
            return found == notes().end() ? -1 : static_cast<int>(found - notes().begin());
        }
        for (int bar = 0; bar < scrollBarCount; ++bar)
            if (child && child->object() == scrollBarHolder(bar))
                return noteCount() + bar;
        return -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override {
        const QPointF point = m_view.viewport()->mapFromGlobal(QPointF(x, y));
        const Note* note = m_view.viewport()->rect().contains(point.toPoint())
                               ? m_view.grid().noteAt(m_view.toGrid(point), notes())
                               : nullptr;
        return note ? interfaceOf(note->id) : nullptr;
    }

private:
    const std::vector<Note>& notes() const { return m_view.viewModel().selectedChannel().notes; }
    /// The view's own children that hold its scroll bars.
    QObject* scrollBarHolder(int index) const {
        const QScrollBar* bar =
            index == 0 ? m_view.horizontalScrollBar() : m_view.verticalScrollBar();
        return bar->parent();
    }

    int noteCount() const { return static_cast<int>(notes().size()); }

    QAccessibleInterface* interfaceOf(const Uuid& note) const {
        const auto known = m_children.find(note);
        if (known != m_children.end())
            return QAccessible::accessibleInterface(known->second);
        dropStaleChildren();
        auto* made = new AccessibleNote(*this, m_view, note);
        m_children.emplace(note, QAccessible::registerAccessibleInterface(made));
        return made;
    }

    void dropStaleChildren() const {
        // Not at every new child: each look costs as much as there are notes.
        if (m_children.size() < 2 * notes().size() + 16)
            return;
        std::erase_if(m_children, [&](const auto& child) {
            if (m_view.viewModel().note(child.first))
                return false;
            QAccessible::deleteAccessibleInterface(child.second);
            return true;
        });
    }

    PianoRollView& m_view;
    mutable std::unordered_map<Uuid, QAccessible::Id> m_children;
};

QAccessibleInterface* AccessibleNote::parent() const {
    return const_cast<AccessiblePianoRoll*>(&m_roll);
}

QString AccessibleNote::text(QAccessible::Text text) const {
    const auto note = m_view.viewModel().note(m_id);
    if (text != QAccessible::Name || !note)
        return {};
    const bool isNoise = m_view.viewModel().selectedChannel().kind == ChannelKind::noise;
    const QString pitch = isNoise ? title(static_cast<NoiseVoiceKind>(note->pitch)).toLower()
                                  : QString::fromStdString(PitchRange::name(note->pitch));
    return QStringLiteral("%1, bar %2, beat %3, %4 %5")
        .arg(pitch)
        .arg(note->start / ticksPerBar + 1)
        .arg(note->start % ticksPerBar / ticksPerBeat + 1)
        .arg(note->length)
        .arg(note->length == 1 ? QStringLiteral("tick") : QStringLiteral("ticks"));
}

QRect AccessibleNote::rect() const {
    const auto note = m_view.viewModel().note(m_id);
    if (!note)
        return {};
    const QRect rect = m_view.visibleNoteRect(*note).toAlignedRect();
    return {m_view.viewport()->mapToGlobal(rect.topLeft()), rect.size()};
}

QAccessible::State AccessibleNote::state() const {
    QAccessible::State state;
    const auto note = m_view.viewModel().note(m_id);
    if (!note) {
        state.invalid = true;
        return state;
    }
    state.selectable = true;
    state.selected = m_view.viewModel().selection().contains(m_id);
    state.offscreen = !m_view.visibleNoteRect(*note).intersects(QRectF(m_view.viewport()->rect()));
    return state;
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
