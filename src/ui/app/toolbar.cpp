// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/toolbar.h"

#include "core/app/idiomas.h"
#include "ui/controls/icons.h"

#include <QAction>
#include <QEvent>
#include <QMenu>
#include <QToolButton>

#include <algorithm>

namespace ravlin {

namespace {

constexpr QSize IconSize(24, 24);

QString captionOf(const ToolbarCommand &command, const Captions &captions)
{
    return std::visit([&captions](auto caption) { return captions.text(caption); }, command.caption);
}

} // namespace

QString tooltipOf(const QString &caption, const QKeySequence &shortcut)
{
    if (shortcut.isEmpty())
        return caption;
    return QStringLiteral("%1 (%2)").arg(caption, shortcut.toString(QKeySequence::NativeText));
}

Toolbar::Toolbar(QWidget *window, QWidget *parent) : QToolBar(parent), m_window(window)
{
    setIconSize(IconSize);
    auto *spacer = new QWidget(this);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_spacer = addWidget(spacer);
}

QAction *Toolbar::makeAction(const QString &objectName, const ToolbarCommand &command)
{
    auto *action = new QAction(this);
    action->setObjectName(objectName);
    action->setShortcut(command.shortcut);
    action->setShortcutContext(command.shortcutContext);
    action->setIcon(themedIcon(command.icon, palette()));
    m_window->addAction(action);
    m_commands.push_back({command, action, nullptr});
    return action;
}

QToolButton *Toolbar::makeButton(const QString &objectName, QAction *action)
{
    auto *button = new QToolButton(this);
    button->setObjectName(objectName);
    button->setDefaultAction(action);
    button->setFocusPolicy(Qt::TabFocus);
    m_commands.back().button = button;
    return button;
}

QAction *Toolbar::addButton(int position, const ToolbarCommand &command)
{
    QAction *action = makeAction(QString(), command);
    QToolButton *made = makeButton(QStringLiteral("tb_%1").arg(position), action);
    const auto next = std::find_if(
        m_places.begin(), m_places.end(), [position](const Place &place) { return place.position > position; });
    QAction *before = next == m_places.end() ? m_spacer : next->inBar;
    m_places.insert(next, {position, made, insertWidget(before, made)});
    return action;
}

QAction *Toolbar::addMenuEntry(int position, const QString &key, const ToolbarCommand &command)
{
    QToolButton *owner = button(position);
    Q_ASSERT(owner != nullptr);
    QAction *action = makeAction(QStringLiteral("tb_") + key, command);
    if (owner->menu() == nullptr) {
        owner->setMenu(new QMenu(owner));
        owner->setPopupMode(QToolButton::MenuButtonPopup);
        connect(owner, &QToolButton::clicked, owner, [owner] {
            if (!owner->defaultAction()->isEnabled())
                owner->menu()->popup(owner->mapToGlobal(owner->rect().bottomLeft()));
        });
        connect(owner->defaultAction(), &QAction::changed, owner, [owner] { keepMenuInReach(owner); });
    }
    owner->menu()->addAction(action);
    connect(action, &QAction::changed, owner, [owner] { keepMenuInReach(owner); });
    return action;
}

/// Qt disables a button together with its own command, and the menu with it.
void Toolbar::keepMenuInReach(QToolButton *button)
{
    const QList<QAction *> entries = button->menu()->actions();
    const bool hasEntry =
        std::any_of(entries.begin(), entries.end(), [](const QAction *entry) { return entry->isEnabled(); });
    button->setEnabled(button->defaultAction()->isEnabled() || hasEntry);
}

QAction *Toolbar::addEndButton(const QString &key, const ToolbarCommand &command)
{
    QAction *action = makeAction(QString(), command);
    QToolButton *made = makeButton(QStringLiteral("tb_") + key, action);
    addWidget(made);
    m_endButtons.push_back(made);
    return action;
}

QToolButton *Toolbar::button(int position) const
{
    const auto place = std::find_if(m_places.begin(), m_places.end(),
        [position](const Place &candidate) { return candidate.position == position; });
    return place == m_places.end() ? nullptr : place->button;
}

std::vector<QToolButton *> Toolbar::buttons() const
{
    std::vector<QToolButton *> buttons;
    for (const Place &place : m_places)
        buttons.push_back(place.button);
    buttons.insert(buttons.end(), m_endButtons.begin(), m_endButtons.end());
    return buttons;
}

void Toolbar::applyCaptions(const Captions &captions)
{
    setAccessibleName(captions.text(Text::NameToolbar));
    for (const Command &command : m_commands) {
        const QString caption = captionOf(command.command, captions);
        command.action->setText(caption);
        command.action->setToolTip(tooltipOf(caption, command.action->shortcut()));
        if (command.button != nullptr)
            command.button->setAccessibleName(caption);
    }
}

void Toolbar::applyIcons()
{
    for (const Command &command : m_commands)
        command.action->setIcon(themedIcon(command.command.icon, palette()));
}

void Toolbar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        applyIcons();
    QToolBar::changeEvent(event);
}

} // namespace ravlin
