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

/// A command of the toolbar: its text, drawing and shortcut.
struct ToolbarCommand
{
    std::variant<Caption, Text> caption;
    QString icon;          ///< a drawing's name (themedIcon())
    QKeySequence shortcut; ///< shown in the tooltip
    /// Where the shortcut works: in the whole window or, with WidgetShortcut, only where another part handles the key.
    Qt::ShortcutContext shortcutContext = Qt::WindowShortcut;
};

/// A command's tooltip: its caption and its shortcut.
QString tooltipOf(const QString &caption, const QKeySequence &shortcut);

/// The main window's toolbar. A button has a position of its own, 1 to 16, whatever other buttons there are; its object
/// name is "tb_" and the position. The entries of a button's drop-down menu have keys; the object name of an entry's
/// action is "tb_" and its key. Connect to the actions to carry the commands out. A button whose own command is
/// disabled opens its menu if that has an enabled entry.
///
/// The actions belong to the window as well, so that their shortcuts work without the focus on the toolbar, and can be
/// put into other menus. The keyboard reaches the toolbar.
class Toolbar : public QToolBar
{
    Q_OBJECT

public:
    /// window: gets the actions.
    Toolbar(QWidget *window, QWidget *parent);

    /// Adds the button of that position, once for each; a click triggers the returned action.
    QAction *addButton(int position, const ToolbarCommand &command);
    /// Adds an entry to the drop-down menu of an existing button.
    QAction *addMenuEntry(int position, const QString &key, const ToolbarCommand &command);
    /// Adds a button without a position at the bar's far end; its object name is "tb_" and the key.
    QAction *addEndButton(const QString &key, const ToolbarCommand &command);

    /// The button of a position, or nullptr.
    QToolButton *button(int position) const;
    /// All buttons, in the order of the bar.
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
        QToolButton *button = nullptr; ///< nullptr: a menu's entry
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
