// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/ufreedb.h"

#include <QDialog>

#include <optional>
#include <vector>

class QPushButton;
class QTreeWidget;

namespace ravlin {

class Captions;
class PlainLabel;

/// Lets the user choose one of several matching discs. Shows the tracks of each and how much the files' lengths differ.
/// Reads the first discs ahead, and any other when it becomes the current one; a disc can be chosen once it has been
/// read.
class MatchDialog : public QDialog
{
    Q_OBJECT

public:
    /// database: has just offered the choice, and does nothing else while the dialog is open. contents: those of the
    /// files, if they make a disc.
    MatchDialog(const Captions &captions, uFREEDB &database, std::optional<DiscContents> contents, QWidget *parent);

    /// The chosen disc. Only once the dialog was accepted.
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
    bool m_readsAhead = true; ///< until the server fails for all
    QTreeWidget *m_matches = nullptr;
    QTreeWidget *m_tracks = nullptr;
    PlainLabel *m_status = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace ravlin
