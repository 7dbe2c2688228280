// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/history/historyreader.h"

#include <QDialog>

#include <set>
#include <vector>

class QComboBox;
class QLineEdit;
class QPushButton;
class QTimer;
class QTreeView;

namespace ravlin {

class Captions;
class ChangeModel;
class EntryModel;
class PlainLabel;

/// The window of the history: the entries above, the files of the current one below with what each value was and is.
/// It only reads, in the background; who connects undoRequested takes back. It is not modal and can stay open.
class historial : public QDialog
{
    Q_OBJECT

public:
    /// captions outlives it. path: of the database.
    historial(const Captions &captions, platform::FileSystem &fileSystem,
        const QString &path = history::History::defaultPath(), QWidget *parent = nullptr);
    ~historial() override;

    /// Reads the history again. What was current stays so, if it is still there.
    void refresh();
    /// Tells below the lists what came of an undo.
    void showOutcome(const QString &text);
    void applyCaptions();

Q_SIGNALS:
    /// files: only these of the entry; empty: all. withLater: what was done later to these files is to be undone first.
    void undoRequested(qint64 entry, const std::set<qint64> &files, bool withLater);

protected:
    void changeEvent(QEvent *event) override;

private:
    void createControls();
    void createLayout();
    void connectControls();
    void readEntries();
    void showEntries(Result<std::vector<history::Entry>> entries);
    void fillFolders();
    void showFiles();
    void takeFiles(qint64 entry, const QString &folder, Result<std::vector<history::FileRecord>> files);
    void updateButtons();
    std::set<qint64> chosenFiles() const;
    void undo(const std::set<qint64> &files);
    QString nameOf(const history::Entry &entry) const;
    void askForLater(qint64 entry, const std::set<qint64> &files, const std::vector<history::Entry> &later);

    const Captions &m_captions;
    history::HistoryReader m_reader;
    EntryModel *m_entryModel;
    ChangeModel *m_changeModel;
    PlainLabel *m_textLabel = nullptr;
    QLineEdit *m_text = nullptr;
    PlainLabel *m_folderLabel = nullptr;
    QComboBox *m_folder = nullptr;
    QTreeView *m_entries = nullptr;
    QTreeView *m_files = nullptr;
    PlainLabel *m_state = nullptr;
    QPushButton *m_undo = nullptr;
    QPushButton *m_undoChosen = nullptr;
    QPushButton *m_close = nullptr;
    QTimer *m_typing; ///< runs while the user may still be typing
    qint64 m_shownEntry = 0;
    QString m_outcome; ///< of the last undo
    bool m_isFilling = false;
};

} // namespace ravlin
