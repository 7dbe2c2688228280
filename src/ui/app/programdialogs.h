// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/app/frmabout.h"

#include <QObject>
#include <QPointer>

class QWidget;

namespace ravlin {

class opciones;
struct Program;

/// Opens the dialogs that belong to the program as a whole, over the main window: options and about box.
class ProgramDialogs : public QObject
{
    Q_OBJECT

public:
    /// program outlives this.
    ProgramDialogs(Program &program, QWidget *window);

    /// Opens the options, if no tag-save mode was ever chosen, and returns once they are closed. Made for the start.
    void chooseAtFirstRun();
    /// Opens a dialog, or brings it to the front, and returns at once.
    void openOptions();
    void openAbout();

    /// Who opens the about box's addresses; the system at first.
    void setOpenAddress(frmAbout::OpenAddress open) { m_openAddress = std::move(open); }

Q_SIGNALS:
    /// The options were closed: language, columns and the like may be others now.
    void optionsClosed();

private:
    opciones *createOptions();

    Program &m_program;
    QWidget *m_window;
    frmAbout::OpenAddress m_openAddress = &frmAbout::openBySystem;
    QPointer<QDialog> m_options;
    QPointer<QDialog> m_about;
};

} // namespace ravlin
