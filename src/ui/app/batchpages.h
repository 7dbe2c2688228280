// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace ravlin {

class ExtractPage;
class FileList;
class ModeTabs;
class MultiFilePage;
class PageOwner;
class RenamePage;
struct Program;

/// The pages of the tab strip that work on all selected files at once: made, put behind their tabs, and kept in step
/// with the list's selection and with the choices that the settings remember.
class BatchPages : public QObject
{
    Q_OBJECT

public:
    BatchPages(Program &program, PageOwner &owner, ModeTabs &tabs, const FileList &list, QObject *parent);

    /// Puts the program's choices on the pages, and back.
    void showChoices();
    void storeChoices() const;
    /// The saved patterns have been edited.
    void refreshPatterns();

Q_SIGNALS:
    /// A run has ended and the list was filled again: the current row is to be shown again.
    void finished();

private:
    Program &m_program;
    MultiFilePage *m_multiFilePage;
    ExtractPage *m_extractPage;
    RenamePage *m_renamePage;
};

} // namespace ravlin
