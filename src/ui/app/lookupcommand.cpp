// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/lookupcommand.h"

#include "core/app/pageowner.h"
#include "ui/app/program.h"
#include "ui/files/filelist.h"
#include "ui/online/freedb.h"

namespace ravlin {

LookupCommand::LookupCommand(Program &program, PageOwner &owner, const FileList &list, QWidget *window)
    : QObject(window), m_program(program), m_owner(owner), m_list(list), m_window(window)
{
}

void LookupCommand::openForm()
{
    if (m_form != nullptr) {
        m_form->raise();
        m_form->activateWindow();
        return;
    }
    if (m_owner.selectedCount() == 0)
        return;
    const auto firstArtist = [this] {
        return m_list.rowCount() == 0 ? QString() : columnText(m_list.rows().rowAt(0), ListColumn::Artist);
    };
    auto *form = new freedb(
        {m_owner, m_program.state, m_program.tagStore, m_program.captions, m_program.settings, m_program.fileSystem},
        firstArtist, m_window);
    form->setAttribute(Qt::WA_DeleteOnClose);
    m_form = form;
    form->show();
}

} // namespace ravlin
