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

/// Makes the pages of the tab strip that work on all selected files, and keeps them in step with the list's selection
/// and the choices in the settings.
class BatchPages : public QObject
{
    Q_OBJECT

public:
    BatchPages(Program &program, PageOwner &owner, ModeTabs &tabs, const FileList &list, QObject *parent);

    /// Copies the program's choices to the pages, and back.
    void showChoices();
    void storeChoices() const;
    /// Shows the saved patterns anew.
    void refreshPatterns();

Q_SIGNALS:
    /// A run has ended and the list was filled again: the current row has to be shown again.
    void finished();

private:
    Program &m_program;
    MultiFilePage *m_multiFilePage;
    ExtractPage *m_extractPage;
    RenamePage *m_renamePage;
};

} // namespace ravlin
