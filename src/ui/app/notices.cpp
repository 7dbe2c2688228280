// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/notices.h"

#include "ui/app/aviso.h"
#include "ui/app/programdialogs.h"
#include "ui/app/statuspanels.h"
#include "ui/files/detalles.h"
#include "ui/tags/singlefilepage.h"

#include <algorithm>

namespace ravlin {

namespace {

constexpr qsizetype MostStored = 20; ///< files whose texts are kept for the next start

void putInto(std::vector<UnsavedEdits> &list, const UnsavedEdits &edits)
{
    std::erase_if(list, [&edits](const UnsavedEdits &other) { return other.path == edits.path; });
    list.push_back(edits);
}

} // namespace

Notices::Notices(const WindowParts &parts, aviso &bar, SingleFilePage &page, ProgramDialogs &dialogs, ShowFile showFile)
    : QObject(parts.window), m_parts(parts), m_bar(bar), m_page(page), m_showFile(std::move(showFile))
{
    Settings &settings = parts.program.settings;
    connect(&page, &SingleFilePage::editsLeft, this, &Notices::keep);
    connect(&bar, &aviso::putBackRequested, this, &Notices::putBack);
    connect(&bar, &aviso::detailsRequested, this, &Notices::showDetails);
    connect(&bar, &aviso::dismissed, this, [this, &settings] {
        m_unsaved.clear();
        settings.write(settingskey::ProtectionOffered, QStringLiteral("si"));
    });
    connect(&bar, &aviso::chooseRequested, this, [&bar, &dialogs, &settings] {
        bar.showOffer(false);
        settings.write(settingskey::ProtectionOffered, QStringLiteral("si"));
        dialogs.offerProtection();
    });
}

void Notices::offerAtStart()
{
    const Settings &settings = m_parts.program.settings;
    for (const QString &text : settings.read(settingskey::Unsaved).split(u' ').mid(0, MostStored)) {
        if (const std::optional<UnsavedEdits> edits = UnsavedEdits::fromText(text))
            putInto(m_unsaved, *edits);
    }
    showNewest();
    m_bar.showOffer(!settings.read(settingskey::Tags).isEmpty() && !FurtherOptions::hasProtections(settings) &&
                    settings.read(settingskey::ProtectionOffered).isEmpty());
}

void Notices::store() const
{
    std::vector<UnsavedEdits> unsaved = m_unsaved;
    if (const std::optional<UnsavedEdits> typed = m_page.unsavedEdits())
        putInto(unsaved, *typed);
    QStringList texts;
    for (const UnsavedEdits &edits : unsaved)
        texts << edits.toText();
    const QString text = texts.mid(std::max<qsizetype>(0, texts.size() - MostStored)).join(u' ');
    Settings &settings = m_parts.program.settings;
    if (text != settings.read(settingskey::Unsaved))
        settings.write(settingskey::Unsaved, text);
}

void Notices::keep(const UnsavedEdits &edits)
{
    putInto(m_unsaved, edits);
    showNewest();
}

void Notices::putBack()
{
    if (m_unsaved.empty())
        return;
    const UnsavedEdits edits = m_unsaved.back();
    m_unsaved.pop_back();
    if (m_showFile(edits.path)) { // what is on the page now is kept in turn
        m_page.putBack(edits.record);
        m_page.startEditing();
    } else {
        m_unsaved.push_back(edits);
        m_parts.status.showPassing(m_parts.program.captions.errorText(ErrorCode::NotFound));
    }
    showNewest();
}

void Notices::showDetails()
{
    if (!m_bar.summary())
        return;
    auto *window = new detalles(m_parts.program.captions, m_bar.text(), *m_bar.summary(), m_parts.window);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->show();
}

void Notices::showNewest()
{
    m_bar.showUnsaved(m_unsaved.empty() ? QString() : m_unsaved.back().path);
}

} // namespace ravlin
