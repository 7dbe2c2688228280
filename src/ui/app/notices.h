// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/record/unsavededits.h"
#include "ui/app/program.h"

#include <QObject>

#include <functional>
#include <vector>

namespace ravlin {

class aviso;
class ProgramDialogs;
class SingleFilePage;

/// Decides what the notice bar tells, and does what its buttons promise for typed texts: nothing that was typed is
/// dropped in silence. Texts that were not saved when the window closed are offered again at the next start.
class Notices : public QObject
{
    Q_OBJECT

public:
    /// Makes a file's row the current one and shows it on the page for one file. Returns false if it is not there.
    using ShowFile = std::function<bool(const QString &path)>;

    Notices(const WindowParts &parts, aviso &bar, SingleFilePage &page, ProgramDialogs &dialogs, ShowFile showFile);

    /// Offers what was typed last time, and the protections to users who have settings from before there were any.
    void offerAtStart();
    /// Keeps what is typed for the next start. Reaches the file with Settings::save().
    void store() const;

private:
    void keep(const UnsavedEdits &edits);
    void putBack();
    void showDetails();
    void showNewest();

    WindowParts m_parts;
    aviso &m_bar;
    SingleFilePage &m_page;
    ShowFile m_showFile;
    std::vector<UnsavedEdits> m_unsaved; ///< one of each file, the newest last
};

} // namespace ravlin
