// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/programdialogs.h"

#include "core/app/notice.h"
#include "core/app/pageowner.h"
#include "ui/app/opciones.h"
#include "ui/files/filelist.h"
#include "ui/files/historial.h"
#include "ui/naming/patterneditor.h"
#include "ui/online/freedb.h"

namespace ravlin {

namespace {

bool raise(QWidget *window)
{
    if (window == nullptr)
        return false;
    window->raise();
    window->activateWindow();
    return true;
}

} // namespace

ProgramDialogs::ProgramDialogs(const WindowParts &parts) : QObject(parts.window), m_parts(parts) {}

opciones *ProgramDialogs::createOptions()
{
    auto *dialog = new opciones(m_parts.program, m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::finished, this, &ProgramDialogs::optionsClosed);
    m_options = dialog;
    return dialog;
}

void ProgramDialogs::chooseAtFirstRun()
{
    if (!m_parts.program.settings.read(settingskey::Tags).isEmpty())
        return;
    opciones *dialog = createOptions();
    dialog->offerToRemember();
    dialog->offerProtection();
    dialog->exec();
}

void ProgramDialogs::openOptions()
{
    if (!raise(m_options))
        createOptions()->open();
}

void ProgramDialogs::offerProtection()
{
    if (raise(m_options))
        return;
    opciones *dialog = createOptions();
    dialog->offerProtection();
    dialog->open();
}

void ProgramDialogs::openAbout()
{
    if (raise(m_about))
        return;
    m_about = new frmAbout(m_parts.program.captions, m_parts.window, m_openAddress);
    m_about->setAttribute(Qt::WA_DeleteOnClose);
    m_about->open();
}

void ProgramDialogs::openPatterns()
{
    if (raise(m_patterns))
        return;
    m_patterns = new PatternEditor(m_parts.program.settings, m_parts.program.captions, m_parts.window);
    m_patterns->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_patterns, &QDialog::accepted, this, &ProgramDialogs::patternsEdited);
    m_patterns->open();
}

void ProgramDialogs::openHistory()
{
    if (raise(m_history))
        return;
    m_history = new historial(
        m_parts.program.captions, m_parts.program.fileSystem, history::History::defaultPath(), m_parts.window);
    m_history->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_history, &historial::undoRequested, this, &ProgramDialogs::undoRequested);
    connect(this, &ProgramDialogs::optionsClosed, m_history, &historial::applyCaptions);
    m_history->show();
}

void ProgramDialogs::refreshHistory()
{
    if (m_history)
        m_history->refresh();
}

void ProgramDialogs::tellTakenBack(const history::Summary &summary)
{
    if (m_history)
        m_history->showOutcome(noticeText(m_parts.program.captions, summary, SummaryOf::Undo));
}

void ProgramDialogs::openLookup()
{
    if (raise(m_lookup) || m_parts.owner.selectedCount() == 0)
        return;
    const auto firstArtist = [&list = m_parts.list] {
        return list.rowCount() == 0 ? QString() : columnText(list.rows().rowAt(0), ListColumn::Artist);
    };
    m_lookup = new freedb(m_parts.program.pageContext(m_parts.owner), firstArtist, m_parts.window);
    m_lookup->setAttribute(Qt::WA_DeleteOnClose);
    m_lookup->show();
}

} // namespace ravlin
