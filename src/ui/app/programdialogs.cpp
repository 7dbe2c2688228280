// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/programdialogs.h"

#include "ui/app/opciones.h"
#include "ui/app/program.h"

namespace ravlin {

namespace {

bool raise(QDialog *dialog)
{
    if (dialog == nullptr)
        return false;
    dialog->raise();
    dialog->activateWindow();
    return true;
}

} // namespace

ProgramDialogs::ProgramDialogs(Program &program, QWidget *window)
    : QObject(window), m_program(program), m_window(window)
{
}

opciones *ProgramDialogs::createOptions()
{
    auto *dialog = new opciones(m_program, m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::finished, this, &ProgramDialogs::optionsClosed);
    m_options = dialog;
    return dialog;
}

void ProgramDialogs::chooseAtFirstRun()
{
    if (m_program.settings.read(settingskey::Tags).isEmpty())
        createOptions()->exec();
}

void ProgramDialogs::openOptions()
{
    if (!raise(m_options))
        createOptions()->open();
}

void ProgramDialogs::openAbout()
{
    if (raise(m_about))
        return;
    m_about = new frmAbout(m_program.captions, m_window, m_openAddress);
    m_about->setAttribute(Qt::WA_DeleteOnClose);
    m_about->open();
}

} // namespace ravlin
