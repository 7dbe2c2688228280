// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/app/frmabout.h"
#include "ui/app/program.h"

#include <QObject>
#include <QPointer>

#include <set>

namespace ravlin {

class historial;
class opciones;

/// Opens the windows over the main window, each once: options, about box, saved patterns, the history and the lookup of
/// discs.
class ProgramDialogs : public QObject
{
    Q_OBJECT

public:
    explicit ProgramDialogs(const WindowParts &parts);

    /// Opens the options if no tag-save mode was ever chosen, and returns once they are closed. Meant for the start.
    void chooseAtFirstRun();
    /// Opens a window, or brings it to the front, and returns at once.
    void openOptions();
    /// The same with the protections ticked, if the settings say nothing about them.
    void offerProtection();
    void openAbout();
    void openPatterns();
    void openHistory();
    /// Opens the lookup of discs for the selected files; does nothing while none is selected.
    void openLookup();

    /// Opens the about box's addresses; the system at first.
    /// Makes the window of the history show what has changed meanwhile, if it is open; and tell what an undo came to.
    void refreshHistory();
    void tellTakenBack(const history::Summary &summary);

    void setOpenAddress(frmAbout::OpenAddress open) { m_openAddress = std::move(open); }

Q_SIGNALS:
    /// The options were closed: language, columns and the like may have changed.
    void optionsClosed();
    /// The saved patterns were edited: boxes that offer them have to show them anew.
    void patternsEdited();
    /// historial::undoRequested
    void undoRequested(qint64 entry, const std::set<qint64> &files, bool withLater);

private:
    opciones *createOptions();

    WindowParts m_parts;
    frmAbout::OpenAddress m_openAddress = &frmAbout::openBySystem;
    QPointer<QDialog> m_options;
    QPointer<QDialog> m_about;
    QPointer<QDialog> m_patterns;
    QPointer<historial> m_history;
    QPointer<QWidget> m_lookup;
};

} // namespace ravlin
