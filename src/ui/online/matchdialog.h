// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/ufreedb.h"

#include <QDialog>

#include <optional>
#include <vector>

class QLabel;
class QPushButton;
class QTreeWidget;

namespace ravlin {

class Captions;

/// Lets the user choose one of the discs that match, with the tracks of each and how much the files' lengths differ
/// from them. It reads the first discs by itself and any other when it becomes the current one; one that has been read
/// can be chosen.
class MatchDialog : public QDialog
{
    Q_OBJECT

public:
    /// database: it has just offered the choice, and does nothing else while the window is open. contents: that of the
    /// files, if they make a disc.
    MatchDialog(const Captions &captions, uFREEDB &database, std::optional<DiscContents> contents, QWidget *parent);

    /// The disc that was chosen. Only once the window has been accepted.
    const DiscRecord &chosen() const;

    void done(int result) override;

private:
    struct Candidate
    {
        std::optional<DiscRecord> record;
        std::optional<LookupFailure> failure;

        bool isSettled() const { return record || failure; }
    };

    void createControls(const Captions &captions);
    void listMatches();
    int current() const;
    void currentChanged();
    void readNext();
    void take(int match);
    void recordRead();
    void failed(const LookupFailure &failure);
    void showFit(int match);
    void showTracks();
    std::vector<std::optional<qint64>> differences(const DiscRecord &record) const;

    const Captions &m_captions;
    uFREEDB &m_database;
    std::optional<DiscContents> m_contents;
    std::vector<Candidate> m_candidates;
    int m_reading = -1;
    bool m_readsAhead = true; ///< until the server fails altogether
    QTreeWidget *m_matches = nullptr;
    QTreeWidget *m_tracks = nullptr;
    QLabel *m_status = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace ravlin
