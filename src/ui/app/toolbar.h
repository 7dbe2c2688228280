// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/texttable.h"

#include <QKeySequence>
#include <QString>
#include <QToolBar>

#include <variant>
#include <vector>

class QAction;
class QToolButton;

namespace ravlin {

class Captions;

/// One command of the toolbar: what it is called, drawn and reached by.
struct ToolbarCommand
{
    std::variant<Caption, Text> caption;
    QString icon;          ///< a drawing's name (themedIcon())
    QKeySequence shortcut; ///< shown in the tooltip
    /// Where the shortcut works: in the whole window, or, with WidgetShortcut, only where somebody else sees to it.
    Qt::ShortcutContext shortcutContext = Qt::WindowShortcut;
};

/// What a command's tooltip says: its caption and its shortcut.
QString tooltipOf(const QString &caption, const QKeySequence &shortcut);

/// The main window's toolbar. A button has a position, 1 to 16, which stays its own whatever other buttons are there;
/// its object name is "tb_" and the position. A button's drop-down menu has entries, each with a key; the object name
/// of its action is "tb_" and the key. What a command does is the business of whoever connects to its action. A button
/// whose own command is disabled opens its menu, as long as something in that can be chosen.
///
/// The actions are the window's as well, so that their shortcuts work while the toolbar has no focus, and can be put
/// into other menus. The tool bar can be reached by the keyboard.
class Toolbar : public QToolBar
{
    Q_OBJECT

public:
    /// window: whose commands these are.
    Toolbar(QWidget *window, QWidget *parent);

    /// Adds the button of that position; its click triggers the action given back. Each position once.
    QAction *addButton(int position, const ToolbarCommand &command);
    /// Adds an entry to the drop-down menu of a button that is there.
    QAction *addMenuEntry(int position, const QString &key, const ToolbarCommand &command);
    /// Adds a button without a position, at the bar's far end; its object name is "tb_" and the key.
    QAction *addEndButton(const QString &key, const ToolbarCommand &command);

    /// The button of a position; nullptr where there is none.
    QToolButton *button(int position) const;
    /// The buttons in the order of the bar.
    std::vector<QToolButton *> buttons() const;

    /// Puts the current language's texts on everything.
    void applyCaptions(const Captions &captions);

protected:
    void changeEvent(QEvent *event) override;

private:
    struct Command
    {
        ToolbarCommand command;
        QAction *action = nullptr;
        QToolButton *button = nullptr; ///< nullptr: an entry of a menu
    };
    struct Place
    {
        int position = 0;
        QToolButton *button = nullptr;
        QAction *inBar = nullptr;
    };

    QAction *makeAction(const QString &objectName, const ToolbarCommand &command);
    QToolButton *makeButton(const QString &objectName, QAction *action);
    void applyIcons();
    static void keepMenuInReach(QToolButton *button);

    QWidget *m_window;
    QAction *m_spacer = nullptr; ///< stands before the buttons of the far end
    std::vector<Command> m_commands;
    std::vector<Place> m_places; ///< in the order of their positions
    std::vector<QToolButton *> m_endButtons;
};

} // namespace ravlin
