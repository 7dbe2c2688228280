// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/folderscan.h"

#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace ravlin {

class Busy;
class FileList;
class StatusPanels;
struct Program;

/// Keeps the file list, the current folder and the status panels in step: lists folders, with the wait window if that
/// takes long, and shows the current row's file. The user can stop a listing; the rows read by then stay.
class ListController : public QObject
{
    Q_OBJECT

public:
    ListController(Program &program, FileList &list, StatusPanels &panels, Busy &busy, QObject *parent);

    /// Makes a folder the current one and lists it.
    void openFolder(const QString &path);
    /// Lists the current folder again, without the folders below it unless the option says to keep them. The current
    /// row stays the one of the same file. All rows are selected afterwards or, if the option says so, the same files.
    void RefreshList();
    /// The same after files were renamed: the row with that text becomes current, if there is one. selected: the
    /// present texts of the rows that were selected.
    void RefreshListAt(const QString &rowText, const QStringList &selected);
    /// Lists the current folder with all folders below it.
    void ListFolderTree();
    /// Lists again what a stopped listing left out. Does nothing after a complete one.
    void completeListing();
    /// Reads the tags of all rows again; the rows and their order stay.
    void RefreshListTags();

    /// Ends in the separator.
    const QString &currentFolder() const;
    /// The file of a row: current folder and row text; empty for no row.
    QString pathOfRow(int row) const;
    /// Shows the current row's file in the status panels.
    void showCurrentRow();

Q_SIGNALS:
    /// The list was filled anew.
    void listed();

private:
    using Scan = Listing (*)(const QString &currentFolder, const ScanOptions &options);

    void list(const QString &folder, Scan scan);
    void fillAgain(std::vector<ListRow> rows);
    void selectRows(bool isSameFolder, bool isComplete, const QStringList &selected);
    /// Runs work that the user can stop. Returns whether it ran to its end.
    bool runReading(int steps, const std::function<void(const ScanOptions &)> &work);

    Program &m_program;
    FileList &m_list;
    StatusPanels &m_panels;
    Busy &m_busy;
    Scan m_scan = nullptr;    ///< the scan of the present rows
    Scan m_stopped = nullptr; ///< the same, if it was stopped
    QString m_nextCurrent;    ///< the row to become current with the next filling; empty: the present one
    std::optional<QStringList> m_nextSelected; ///< likewise the rows to be selected
};

} // namespace ravlin
